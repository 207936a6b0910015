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

// The feature bits the targets need, read with two CPUID leaves and the saved
// vector state. The compilers' own checks would run their CPU probe as a
// constructor in every process, and each CPUID it issues is a trap under a
// hypervisor: that probe cost a short run a fifth of its start-up.
struct CpuFeatures {
  uint32_t leaf1Ecx = 0;   // SSSE3, SSE4, PCLMUL, AES, AVX, FMA, F16C, OSXSAVE
  uint32_t leaf7Ebx = 0;   // AVX2, BMI, AVX-512 F/DQ/BW/VL
  uint32_t leaf7Ecx = 0;   // VBMI, VBMI2, GFNI, VAES, VPCLMULQDQ, VNNI, BITALG, VPOPCNTDQ
  uint64_t savedState = 0; // XCR0: which register files the system saves
};

CpuFeatures readCpuFeatures() {
  CpuFeatures cpu;
  unsigned a = 0, b = 0, c = 0, d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) != 0) cpu.leaf1Ecx = c;
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d) != 0) {
    cpu.leaf7Ebx = b;
    cpu.leaf7Ecx = c;
  }
  if ((cpu.leaf1Ecx >> 27) & 1U) {
    uint32_t low = 0, high = 0;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    cpu.savedState = (uint64_t{high} << 32) | low;
  }
  return cpu;
}

// True when every bit of `mask` is set in `bits`.
constexpr bool hasAll(uint64_t bits, uint64_t mask) { return (bits & mask) == mask; }

constexpr uint32_t bit(unsigned n) { return uint32_t{1} << n; }

bool cpuHasSsse3(const CpuFeatures& cpu) { return hasAll(cpu.leaf1Ecx, bit(9)); }

bool cpuHasSse4(const CpuFeatures& cpu) {
  return hasAll(cpu.leaf1Ecx, bit(1) | bit(9) | bit(19) | bit(20) | bit(25));  // PCLMUL SSSE3 SSE4.1/2 AES
}

bool cpuHasAvx2(const CpuFeatures& cpu) {
  return cpuHasSse4(cpu) && hasAll(cpu.savedState, 0x6) &&  // XMM and YMM state
         hasAll(cpu.leaf1Ecx, bit(12) | bit(28) | bit(29)) &&  // FMA AVX F16C
         hasAll(cpu.leaf7Ebx, bit(3) | bit(5) | bit(8));        // BMI AVX2 BMI2
}

bool cpuHasAvx3(const CpuFeatures& cpu) {
  return cpuHasAvx2(cpu) && hasAll(cpu.savedState, 0xE6) &&          // opmask and ZMM state
         hasAll(cpu.leaf7Ebx, bit(16) | bit(17) | bit(30) | bit(31));  // F DQ BW VL
}

// The dot-product kernels of this target also use the AVX-512 VNNI forms.
bool cpuHasAvx3Dl(const CpuFeatures& cpu) {
  // VBMI VBMI2 GFNI VAES VPCLMULQDQ VNNI BITALG VPOPCNTDQ
  return cpuHasAvx3(cpu) &&
         hasAll(cpu.leaf7Ecx, bit(1) | bit(6) | bit(8) | bit(9) | bit(10) | bit(11) | bit(12) | bit(14));
}

int64_t cpuTargets() {
  const CpuFeatures cpu = readCpuFeatures();
  int64_t targets = HWY_EMU128 | HWY_SCALAR;
  if (cpuHasSsse3(cpu)) targets |= HWY_SSSE3;
  if (cpuHasSse4(cpu)) targets |= HWY_SSE4;
  if (cpuHasAvx2(cpu)) targets |= HWY_AVX2;
  if (cpuHasAvx3(cpu)) targets |= HWY_AVX3;
  if (cpuHasAvx3Dl(cpu)) targets |= HWY_AVX3_DL;
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
