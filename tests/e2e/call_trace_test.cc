// The library calls the tool makes, with their arguments and handles, read
// from the host library's call trace.
#include <string>
#include <vector>

#include "player_test.h"
#include "testing/read_file.h"
#include "testing/sample_patterns.h"

namespace kesh::testing {
namespace {

class CallTraceTest : public PlayerTest {};

// Memory goes in name order, before its node; patterns go last, in order.
TEST_F(CallTraceTest, SetUpWaitCompareAndReleaseFollowTheContract) {
  // Arguments declared out of name order, so name order and creation order differ.
  writeFile("two.bin", patternBinary({{"zeta", 0, 8}, {"alpha", 1, 8}}, {copyOp(1, 0, 8)}));
  writeFile("zeta.bin", std::vector<uint8_t>(8, 1));
  writeFile("alpha.bin", std::vector<uint8_t>(8, 1));
  writeText("sets.txt",
            "-f two.bin -i zeta.bin -o alpha.bin -c 0 -b 5 -f two.bin -i zeta.bin -o alpha.bin "
            "-s 50000000 -a 100000000 --pack\n");
  const PlayerRun result = run({"--command", "sets.txt"});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.trace, readFile(KESH_E2E_SOURCE_DIR "/call_trace.txt"));
}

}  // namespace
}  // namespace kesh::testing
