// Helpers of the kernel tests: random bytes, and a fixture that runs a test once
// per SIMD target built and supported here. Not thread-safe: the target is process-wide.
#ifndef KESH_TESTS_EMULATOR_KERNELS_TEST_SUPPORT_H_
#define KESH_TESTS_EMULATOR_KERNELS_TEST_SUPPORT_H_

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <cstdint>
#include <random>
#include <vector>

namespace kesh::kernels::testing {

inline std::vector<uint8_t> randomBytes(std::mt19937& rng, size_t count) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t& b : bytes) b = static_cast<uint8_t>(rng());
  return bytes;
}

// The kernels dispatch to the parameter's target for the test's duration.
class EveryTarget : public ::testing::TestWithParam<int64_t> {
#ifdef KESH_SIMD_DYNAMIC_DISPATCH
 protected:
  void SetUp() override { hwy::SetSupportedTargetsForTest(GetParam()); }
  void TearDown() override { hwy::SetSupportedTargetsForTest(0); }
};
#define KESH_TARGETS_TO_TEST hwy::SupportedAndGeneratedTargets()
#else
};
#define KESH_TARGETS_TO_TEST std::vector<int64_t>{HWY_STATIC_TARGET}
#endif

}  // namespace kesh::kernels::testing

#define KESH_INSTANTIATE_FOR_EVERY_TARGET(Suite)                                  \
  INSTANTIATE_TEST_SUITE_P(Targets, Suite, ::testing::ValuesIn(KESH_TARGETS_TO_TEST), \
                           [](const ::testing::TestParamInfo<int64_t>& target) { return hwy::TargetName(target.param); })

#endif  // KESH_TESTS_EMULATOR_KERNELS_TEST_SUPPORT_H_
