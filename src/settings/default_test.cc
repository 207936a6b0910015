#include <cstdint>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "common/fatal.h"
#include "settings/tester_setting.h"
#include "testdata/default_cases.h"

namespace {

std::vector<uint8_t> copyOf(const kesh::testdata::NamedDatum& datum) {
  return std::vector<uint8_t>(datum.bytes, datum.bytes + *datum.length);
}

// Same rule as data given by file: a name already present keeps its data.
void insertAll(const std::vector<kesh::testdata::NamedDatum>& data,
               std::map<std::string, std::vector<uint8_t>>& into) {
  for (const kesh::testdata::NamedDatum& datum : data) into.emplace(datum.argName, copyOf(datum));
}

}  // namespace

void TesterSetting::TestCommand::setupDefaultTest(int caseNumber) {
  std::cout << "Test default case: " << caseNumber << std::endl;
  // Taken as unsigned, so a negative number is refused as well.
  if (static_cast<unsigned>(caseNumber) >= kesh::testdata::kDefaultCaseCount) {
    kesh::fatalError("Invalid mode: " + std::to_string(caseNumber));
  }
  const kesh::testdata::DefaultCase& selected = kesh::testdata::defaultCase(static_cast<unsigned>(caseNumber));
  subCommands.emplace_back(copyOf(selected.pattern));
  TestSubCommand& added = subCommands.back();
  insertAll(selected.inputs, added.inputs);
  insertAll(selected.goldens, added.goldens);
}
