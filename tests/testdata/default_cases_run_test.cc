// Every built-in case played through the host library's C API, the way the
// tool plays one: outputs must equal the goldens, and a single corrupted
// input byte must show as a mismatch of the computed output.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "case_files.h"
#include "kesh/kesh_pattern.h"

namespace kesh::testdata {
namespace {

/// The 32-bit entry `i` of the argument table of `type`.
uint32_t argInfo(_pattern* pattern, pattern_arg_info_type type, size_t i) {
  uint32_t size = 0, value = 0;
  keshGetPatternArgInfoSize(pattern, type, &size);
  std::vector<uint8_t> bytes(size);
  keshGetPatternArgInfo(pattern, type, bytes.data(), size);
  std::memcpy(&value, bytes.data() + 4 * i, 4);
  return value;
}

/// Plays one case on a fresh player and returns the names of the arguments
/// that differ from their goldens. The built-in patterns have no no-alloc argument.
std::vector<std::string> playCase(const CaseFiles& files) {
  _kesh_player* player = keshCreatePlayer("KESH pattern tester");
  _pattern* pattern = keshCreatePattern(player, files.pattern.data(), static_cast<uint32_t>(files.pattern.size()),
                                        "tester_pattern");
  _pattern_graph* graph = keshCreatePatternGraph(player, "tester_graph");
  _pattern_node_handle* node = nullptr;
  EXPECT_EQ(keshAddPattern(graph, pattern, 0, 0, &node, "tester_pattern"), 0);
  EXPECT_EQ(keshBuildPatternGraph(graph), 0);
  uint32_t namesSize = 0;
  keshGetPatternArgInfoSize(pattern, PATTERN_ARG_INFO_NAME, &namesSize);
  std::string text(namesSize, '\0');
  keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NAME, text.data(), namesSize);
  std::istringstream names(text.c_str());
  std::map<std::string, _kesh_mem*> mems;
  std::string name;
  for (size_t i = 0; std::getline(names, name, ';'); ++i) {
    const uint32_t size = argInfo(pattern, PATTERN_ARG_INFO_SIZE, i);
    _kesh_mem* mem = mems[name] = keshCreateMem(player, size, name.c_str());
    void* host = keshMapMem(mem);  // the tool maps every argument, and reads back through the mapping
    const auto input = files.inputs.find(name);
    if (input != files.inputs.end()) {
      EXPECT_EQ(input->second.size(), size) << name;
      std::memcpy(host, input->second.data(), std::min<size_t>(size, input->second.size()));
      EXPECT_EQ(keshFlushMem(mem), 0);
    }
    EXPECT_EQ(keshSetPatternNodeArg(node, argInfo(pattern, PATTERN_ARG_INFO_INDEX, i), mem, size), 0) << name;
  }
  _pattern_job* job = nullptr;
  EXPECT_EQ(keshUpdatePatternNode(node), 0);
  EXPECT_EQ(keshPlayPatternGraph(player, graph, 0, &job), 0);
  EXPECT_EQ(keshWaitPatternJob(job), 0);
  std::vector<std::string> differing;
  for (const auto& [output, golden] : files.goldens) {
    EXPECT_EQ(keshInvalidateMem(mems.at(output)), 0);
    if (std::memcmp(keshMapMem(mems.at(output)), golden.data(), golden.size()) != 0) differing.push_back(output);
  }
  EXPECT_EQ(keshDestroyPatternJob(job), 0);
  return differing;
}

// The last golden of every case is one its pattern computes.
TEST(DefaultCasesRunTest, EveryCaseProducesItsGoldensUnlessAnInputByteIsCorrupted) {
  for (int number = 0; number <= 5; ++number) {
    CaseFiles files(number);
    EXPECT_THAT(playCase(files), testing::IsEmpty()) << "case " << number;
    std::vector<uint8_t>& source = files.inputs.begin()->second;
    source[source.size() / 2] ^= 0xFF;
    EXPECT_THAT(playCase(files), testing::Contains(files.goldens.rbegin()->first)) << "case " << number;
  }
}

}  // namespace
}  // namespace kesh::testdata
