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
#include "driver/kesh_pattern.h"

namespace kesh::testdata {
namespace {

using testing::Contains;
using testing::IsEmpty;

std::vector<uint8_t> queryInfo(_pattern* pattern, pattern_arg_info_type type) {
  uint32_t size = 0;
  EXPECT_EQ(keshGetPatternArgInfoSize(pattern, type, &size), 0);
  std::vector<uint8_t> bytes(size);
  EXPECT_EQ(keshGetPatternArgInfo(pattern, type, bytes.data(), size), 0);
  return bytes;
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
  const std::vector<uint8_t> indices = queryInfo(pattern, PATTERN_ARG_INFO_INDEX);
  const std::vector<uint8_t> sizes = queryInfo(pattern, PATTERN_ARG_INFO_SIZE);
  std::istringstream names(reinterpret_cast<const char*>(queryInfo(pattern, PATTERN_ARG_INFO_NAME).data()));
  std::map<std::string, _kesh_mem*> mems;
  for (size_t i = 0; i < indices.size() / 4; ++i) {
    std::string name;
    uint32_t index = 0, size = 0;
    std::getline(names, name, ';');
    std::memcpy(&index, indices.data() + 4 * i, 4);
    std::memcpy(&size, sizes.data() + 4 * i, 4);
    _kesh_mem* mem = mems[name] = keshCreateMem(player, size, name.c_str());
    void* host = keshMapMem(mem);
    const auto input = files.inputs.find(name);
    if (host != nullptr && input != files.inputs.end()) {
      EXPECT_EQ(input->second.size(), size) << name;
      std::memcpy(host, input->second.data(), std::min<size_t>(size, input->second.size()));
      EXPECT_EQ(keshFlushMem(mem), 0);
    }
    EXPECT_EQ(keshSetPatternNodeArg(node, index, mem, size), 0) << name;
  }
  _pattern_job* job = nullptr;
  EXPECT_EQ(keshUpdatePatternNode(node), 0);
  EXPECT_EQ(keshPlayPatternGraph(player, graph, 0, &job), 0);
  EXPECT_EQ(keshWaitPatternJob(job), 0);
  std::vector<std::string> differing;
  for (const auto& [name, golden] : files.goldens) {
    EXPECT_EQ(keshInvalidateMem(mems.at(name)), 0);
    if (std::memcmp(keshMapMem(mems.at(name)), golden.data(), golden.size()) != 0) differing.push_back(name);
  }
  EXPECT_EQ(keshDestroyPatternJob(job), 0);
  return differing;
}

TEST(DefaultCasesRunTest, EveryCaseProducesItsGoldens) {
  for (int number = 0; number <= 5; ++number) EXPECT_THAT(playCase(readCaseFiles(number)), IsEmpty()) << number;
}

TEST(DefaultCasesRunTest, CorruptedInputByteMakesTheComputedOutputDiffer) {
  for (int number = 0; number <= 5; ++number) {
    CaseFiles files = readCaseFiles(number);
    std::string output;  // the golden that differs from its input, or has none
    for (const auto& [name, golden] : files.goldens) {
      const auto input = files.inputs.find(name);
      if (output.empty() && (input == files.inputs.end() || input->second != golden)) output = name;
    }
    std::vector<uint8_t>& source = files.inputs.begin()->second;
    source[source.size() / 2] ^= 0xFF;
    EXPECT_THAT(playCase(files), Contains(output)) << "case " << number;
  }
}

}  // namespace
}  // namespace kesh::testdata
