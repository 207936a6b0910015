// How a kernel compiled once per SIMD target is called: through Highway's
// run-time choice where several targets are built (x86), straight into the
// one target where the baseline is the only one (32-bit ARM with NEON, which
// then needs Highway's headers but not its library). Include after
// hwy/highway.h. Stateless.
#ifndef KESH_EMULATOR_KERNELS_SIMD_DISPATCH_H_
#define KESH_EMULATOR_KERNELS_SIMD_DISPATCH_H_

#ifdef KESH_SIMD_DYNAMIC_DISPATCH
/// Declares the per-target table of FUNC (at namespace scope, once).
#define KESH_SIMD_EXPORT(FUNC) HWY_EXPORT(FUNC)
/// FUNC of the best target this CPU runs.
#define KESH_SIMD_CALL(FUNC) HWY_DYNAMIC_DISPATCH(FUNC)
#else
#define KESH_SIMD_EXPORT(FUNC) static_assert(true, "one target: no table")
#define KESH_SIMD_CALL(FUNC) HWY_STATIC_DISPATCH(FUNC)
#endif

#endif  // KESH_EMULATOR_KERNELS_SIMD_DISPATCH_H_
