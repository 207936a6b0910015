#include <string>

#include "settings/tester_setting.h"

std::string TesterSetting::TestCommand::readArgName(const char* path) {
  std::string name(path);
  std::string::size_type slash = name.rfind('/');
  if (slash != std::string::npos) name.erase(0, slash + 1);
  std::string::size_type dot = name.rfind('.');
  if (dot != std::string::npos) name.erase(dot);
  return name;
}
