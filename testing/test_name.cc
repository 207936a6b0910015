#include "testing/test_name.h"

#include <cctype>

namespace kesh::testing {

std::string testName(const std::string& label) {
  std::string name = label.empty() ? "_" : label;
  for (char& c : name) {
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  }
  return name;
}

}  // namespace kesh::testing
