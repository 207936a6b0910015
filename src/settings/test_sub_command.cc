#include <utility>

#include "settings/tester_setting.h"

TesterSetting::TestSubCommand::TestSubCommand(std::vector<uint8_t> binary)
    : patternBinary(std::move(binary)) {}
