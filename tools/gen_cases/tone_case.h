// Case 4: a colour grade of 3745 RGB pixels (a 107 x 35 picture): per-channel
// tone curves, a partial desaturation towards luma and a clamp of the range.
// Stateless; safe from any thread.
#ifndef KESH_TOOLS_GEN_CASES_TONE_CASE_H_
#define KESH_TOOLS_GEN_CASES_TONE_CASE_H_

#include "generated_case.h"

namespace kesh::gencases {

/// Returns case 4.
GeneratedCase makeToneCase();

}  // namespace kesh::gencases

#endif  // KESH_TOOLS_GEN_CASES_TONE_CASE_H_
