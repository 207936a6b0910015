// The catalogue of the six built-in cases and TestCommand::setupDefaultTest.
#include <cstdlib>
#include <cstdint>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "settings/tester_setting.h"
#include "testdata/embedded_data.h"

namespace {

/// One embedded datum bound to the argument name it is matched by.
struct NamedDatum {
  const char* argName;
  const uint8_t* bytes;
  const uint32_t* length;
};

/// A built-in case: its pattern and its inputs and goldens in catalogue order.
struct DefaultCase {
  const uint8_t* pattern;
  const uint32_t* patternLength;
  std::vector<NamedDatum> inputs;
  std::vector<NamedDatum> goldens;
};

#define KESH_DATUM(arg, symbol) NamedDatum{arg, symbol, &symbol##_len}

// Cases 0 to 3 differ only in their symbol prefix.
#define KESH_MATMUL_CASE(n)                                            \
  DefaultCase{case##n##_pattern,                                       \
              &case##n##_pattern_len,                                  \
              {KESH_DATUM("auto_buf_name_0", case##n##_in_auto_buf_name_0), \
               KESH_DATUM("auto_buf_name_1", case##n##_in_auto_buf_name_1), \
               KESH_DATUM("auto_buf_name_2", case##n##_in_auto_buf_name_2)}, \
              {KESH_DATUM("auto_buf_name_0", case##n##_golden_auto_buf_name_0), \
               KESH_DATUM("auto_buf_name_1", case##n##_golden_auto_buf_name_1), \
               KESH_DATUM("auto_buf_name_2", case##n##_golden_auto_buf_name_2)}}

const DefaultCase& defaultCase(unsigned caseNumber) {
  static const DefaultCase kCases[] = {
      KESH_MATMUL_CASE(0),
      KESH_MATMUL_CASE(1),
      KESH_MATMUL_CASE(2),
      KESH_MATMUL_CASE(3),
      DefaultCase{case4_pattern,
                  &case4_pattern_len,
                  {KESH_DATUM("GI_65540", case4_in_GI_65540)},
                  {KESH_DATUM("GO_65544", case4_golden_GO_65544)}},
      DefaultCase{case5_pattern,
                  &case5_pattern_len,
                  {KESH_DATUM("GI_65542", case5_in_GI_65542), KESH_DATUM("GO_65548", case5_in_GO_65548)},
                  {KESH_DATUM("GI_65542", case5_golden_GI_65542), KESH_DATUM("GO_65548", case5_golden_GO_65548)}},
  };
  return kCases[caseNumber];
}

#undef KESH_MATMUL_CASE
#undef KESH_DATUM

std::vector<uint8_t> copyOf(const uint8_t* bytes, const uint32_t* length) {
  return std::vector<uint8_t>(bytes, bytes + *length);
}

// Same rule as data given by file: a name already present keeps its data.
void insertAll(const std::vector<NamedDatum>& data, std::map<std::string, std::vector<uint8_t>>& into) {
  for (const NamedDatum& datum : data) into.emplace(datum.argName, copyOf(datum.bytes, datum.length));
}

}  // namespace

void TesterSetting::TestCommand::setupDefaultTest(int caseNumber) {
  std::cout << "Test default case: " << caseNumber << std::endl;
  // Taken as unsigned, so a negative number is refused as well.
  if (static_cast<unsigned>(caseNumber) > 5u) {
    std::cerr << "Invalid mode: " << caseNumber << std::endl;
    std::exit(1);
  }
  const DefaultCase& selected = defaultCase(static_cast<unsigned>(caseNumber));
  subCommands.emplace_back(copyOf(selected.pattern, selected.patternLength));
  TestSubCommand& added = subCommands.back();
  insertAll(selected.inputs, added.inputs);
  insertAll(selected.goldens, added.goldens);
}
