// Fixture of the checker's tests: the end-to-end scratch folder with a small
// copy pattern and its data in it, and runs of the built kesh_check there.
// One fixture per test; not shared between threads.
#ifndef KESH_TESTS_TOOLS_CHECK_CHECK_FIXTURE_H_
#define KESH_TESTS_TOOLS_CHECK_CHECK_FIXTURE_H_

#include <string>
#include <vector>

#include "player_test.h"

namespace kesh::testing {

/// What one run of the checker printed and returned.
struct CheckRun {
  int status = -1;  ///< exit status
  std::string out;  ///< the findings
  std::string err;  ///< reasons it could not check
};

/// A scratch folder holding copy.bin ("in" and "out", 16 bytes each), in.bin,
/// out.bin, and the mistaken variants the tests name.
class CheckTest : public PlayerTest {
 protected:
  void SetUp() override;
  /// Runs kesh_check with `args` in the scratch folder (on a 4-core device);
  /// `failing` is the library's KESH_EMU_FAIL value, "" for none.
  CheckRun check(const std::vector<std::string>& args, const std::string& failing = "");
};

}  // namespace kesh::testing

#endif  // KESH_TESTS_TOOLS_CHECK_CHECK_FIXTURE_H_
