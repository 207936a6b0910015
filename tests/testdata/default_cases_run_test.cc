// Every built-in case played through the host library's C API, the way the
// tool plays one: outputs must equal the goldens, and a single corrupted
// input byte must show as a mismatch of the computed output.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "case_files.h"
#include "driver/kesh_pattern.h"

namespace kesh::testdata {
namespace {

using testing::Contains;
using testing::IsEmpty;

struct ArgInfo {
  std::string name;
  uint32_t index;
  uint32_t size;
};

std::vector<uint8_t> queryInfo(_pattern* pattern, pattern_arg_info_type type) {
  uint32_t size = 0;
  EXPECT_EQ(keshGetPatternArgInfoSize(pattern, type, &size), 0);
  std::vector<uint8_t> bytes(size);
  EXPECT_EQ(keshGetPatternArgInfo(pattern, type, bytes.data(), size), 0);
  return bytes;
}

// The built-in patterns have no library-provided (no-alloc) argument.
std::vector<ArgInfo> queryArgs(_pattern* pattern) {
  const std::vector<uint8_t> indices = queryInfo(pattern, PATTERN_ARG_INFO_INDEX);
  const std::vector<uint8_t> sizes = queryInfo(pattern, PATTERN_ARG_INFO_SIZE);
  std::istringstream names(reinterpret_cast<const char*>(queryInfo(pattern, PATTERN_ARG_INFO_NAME).data()));
  std::vector<ArgInfo> args(indices.size() / 4);
  for (size_t i = 0; i < args.size(); ++i) {
    std::getline(names, args[i].name, ';');
    std::memcpy(&args[i].index, indices.data() + 4 * i, 4);
    std::memcpy(&args[i].size, sizes.data() + 4 * i, 4);
  }
  return args;
}

/// One case loaded onto a player: pattern, graph, node and bound memory.
class CasePlay {
 public:
  CasePlay(_kesh_player* player, const CaseFiles& files) : files_(files) {
    pattern_ = keshCreatePattern(player, files.pattern.data(), static_cast<uint32_t>(files.pattern.size()),
                                 "tester_pattern");
    graph_ = keshCreatePatternGraph(player, "tester_graph");
    EXPECT_TRUE(pattern_ != nullptr && graph_ != nullptr);
    EXPECT_EQ(keshAddPattern(graph_, pattern_, 0, 0, &node_, "tester_pattern"), 0);
    EXPECT_EQ(keshBuildPatternGraph(graph_), 0);
    for (const ArgInfo& arg : queryArgs(pattern_)) bind(player, arg);
    EXPECT_EQ(keshUpdatePatternNode(node_), 0);
    EXPECT_EQ(keshPlayPatternGraph(player, graph_, 0, &job_), 0);
  }

  ~CasePlay() {
    for (const auto& entry : mems_) {
      keshUnmapMem(entry.second);
      keshDestroyMem(entry.second);
    }
    keshDestroyPatternNode(node_);
    keshDestroyPatternJob(job_);
    keshDestroyPatternGraph(graph_);
    keshDestroyPattern(pattern_);
  }

  /// Waits for the job and returns the names of arguments that differ from their goldens.
  std::vector<std::string> waitAndCompare() {
    EXPECT_EQ(keshWaitPatternJob(job_), 0);
    std::vector<std::string> differing;
    for (const auto& [name, golden] : files_.goldens) {
      _kesh_mem* mem = mems_.at(name);
      EXPECT_EQ(keshInvalidateMem(mem), 0);
      if (std::memcmp(addrs_.at(name), golden.data(), golden.size()) != 0) differing.push_back(name);
    }
    return differing;
  }

 private:
  void bind(_kesh_player* player, const ArgInfo& arg) {
    _kesh_mem* mem = keshCreateMem(player, arg.size, arg.name.c_str());
    void* addr = mem != nullptr ? keshMapMem(mem) : nullptr;
    ASSERT_NE(addr, nullptr) << arg.name;
    mems_[arg.name] = mem;
    addrs_[arg.name] = addr;
    const auto input = files_.inputs.find(arg.name);
    if (input != files_.inputs.end()) {
      ASSERT_EQ(input->second.size(), arg.size) << arg.name;
      std::memcpy(addr, input->second.data(), arg.size);
      EXPECT_EQ(keshFlushMem(mem), 0);
    }
    EXPECT_EQ(keshSetPatternNodeArg(node_, arg.index, mem, arg.size), 0) << arg.name;
  }

  const CaseFiles& files_;
  _pattern* pattern_ = nullptr;
  _pattern_graph* graph_ = nullptr;
  _pattern_node_handle* node_ = nullptr;
  _pattern_job* job_ = nullptr;
  std::map<std::string, _kesh_mem*> mems_;
  std::map<std::string, void*> addrs_;
};

class DefaultCasesRunTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(player_ = keshCreatePlayer("KESH pattern tester"), nullptr); }
  void TearDown() override { keshDestroyPlayer(player_); }

  std::vector<std::string> playOnce(const CaseFiles& files) { return CasePlay(player_, files).waitAndCompare(); }

  _kesh_player* player_ = nullptr;
};

TEST_F(DefaultCasesRunTest, EveryCaseProducesItsGoldens) {
  for (int number = 0; number <= 5; ++number) {
    EXPECT_THAT(playOnce(readCaseFiles(number)), IsEmpty()) << "case " << number;
  }
}

// The computed output is the golden that differs from its input, or has none.
std::string computedOutput(const CaseFiles& files) {
  for (const auto& [name, golden] : files.goldens) {
    const auto input = files.inputs.find(name);
    if (input == files.inputs.end() || input->second != golden) return name;
  }
  return "";
}

TEST_F(DefaultCasesRunTest, CorruptedInputByteMakesTheOutputDiffer) {
  for (int number = 0; number <= 5; ++number) {
    CaseFiles files = readCaseFiles(number);
    const std::string output = computedOutput(files);
    std::vector<uint8_t>& source = files.inputs.begin()->second;
    source[source.size() / 2] ^= 0xFF;
    EXPECT_THAT(playOnce(files), Contains(output)) << "case " << number;
  }
}

}  // namespace
}  // namespace kesh::testdata
