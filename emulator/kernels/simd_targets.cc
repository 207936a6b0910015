// The run-time target choice behind the kernels' per-target tables, defined
// here instead of taken from Highway's shared library: loading that library
// runs a start-up timer calibration that costs every process several
// milliseconds, although the kernels need nothing from it but this choice.
// A target counts as supported when the CPU (and the system's saved vector
// state) offers every feature its code is compiled for; the baseline targets
// always are. The chosen target is kept by Highway's own inline class, so
// dispatch, and the tests that restrict the targets, behave as before.
#include <cpuid.h>
#include <hwy/targets.h>

#include <atomic>
#include <cstdint>

namespace hwy {
namespace {

// The target set a test forced, or 0 for the CPU's own.
std::atomic<int64_t> targetsForTest{0};

// Bit `bit` of ECX of CPUID leaf `leaf` (subleaf 0): for the features that not
// every compiler's check names (F16C, VAES).
bool cpuidEcxBit(unsigned leaf, unsigned bit) {
  unsigned a = 0, b = 0, c = 0, d = 0;
  return __get_cpuid_count(leaf, 0, &a, &b, &c, &d) != 0 && ((c >> bit) & 1U) != 0;
}

bool cpuHasSse4() {
  return __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("sse4.2") &&
         __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("aes");
}

bool cpuHasAvx2() {
  return cpuHasSse4() && __builtin_cpu_supports("avx") && __builtin_cpu_supports("avx2") &&
         __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma") &&
         cpuidEcxBit(1, 29);
}

bool cpuHasAvx3() {
  return cpuHasAvx2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw");
}

// The dot-product kernels of this target also use the AVX-512 VNNI forms.
bool cpuHasAvx3Dl() {
  return cpuHasAvx3() && __builtin_cpu_supports("vpclmulqdq") && __builtin_cpu_supports("avx512vbmi") &&
         __builtin_cpu_supports("avx512vbmi2") && cpuidEcxBit(7, 9) &&
         __builtin_cpu_supports("gfni") && __builtin_cpu_supports("avx512vnni") &&
         __builtin_cpu_supports("avx512bitalg") && __builtin_cpu_supports("avx512vpopcntdq");
}

int64_t cpuTargets() {
  __builtin_cpu_init();  // the library may be asked before the runtime's own constructors ran
  int64_t targets = HWY_EMU128 | HWY_SCALAR;
  if (__builtin_cpu_supports("ssse3")) targets |= HWY_SSSE3;
  if (cpuHasSse4()) targets |= HWY_SSE4;
  if (cpuHasAvx2()) targets |= HWY_AVX2;
  if (cpuHasAvx3()) targets |= HWY_AVX3;
  if (cpuHasAvx3Dl()) targets |= HWY_AVX3_DL;
  return targets;
}

}  // namespace

ChosenTarget& GetChosenTarget() {
  static ChosenTarget chosen;
  return chosen;
}

int64_t SupportedTargets() {
  const int64_t forced = targetsForTest.load();
  const int64_t targets = forced != 0 ? forced : cpuTargets();
  GetChosenTarget().Update(targets);
  return targets;
}

void SetSupportedTargetsForTest(int64_t targets) {
  targetsForTest.store(targets);
  GetChosenTarget().DeInit();
}

}  // namespace hwy
