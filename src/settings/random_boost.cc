#include <iostream>
#include <random>

#include "settings/tester_setting.h"

namespace {

// One stream of boost values for the whole process, so that the draws of a
// run are independent of how many command sets and patterns there are.
struct BoostSource {
  std::random_device device{"/dev/urandom"};
  std::mt19937 engine{device()};
};

BoostSource& boostSource() {
  static BoostSource source;  // created on first use; initialisation is guarded
  return source;
}

}  // namespace

void TesterSetting::TestSubCommand::updateRandom() {
  std::uniform_int_distribution<int32_t> percent(0, 100);
  const int32_t boost = percent(boostSource().engine);
  nodeOptions[PATTERN_NODE_OPTION_BOOST] = boost;
  std::cout << "Random boost value: " << boost << std::endl;
}

void TesterSetting::TestCommand::updateRandom() {
  // The flag belongs to the whole set: every pattern is redrawn, including
  // those whose boost was given as a number.
  if (!randomBoost) return;
  for (TestSubCommand& subCommand : subCommands) subCommand.updateRandom();
}
