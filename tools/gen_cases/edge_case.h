// Case 5: an edge map of a 1920 x 1080 grey picture: a 5x5 Gaussian blur,
// horizontal and vertical Sobel gradients, their absolute sum and a contrast
// curve. Stateless; safe from any thread.
#ifndef KESH_TOOLS_GEN_CASES_EDGE_CASE_H_
#define KESH_TOOLS_GEN_CASES_EDGE_CASE_H_

#include "generated_case.h"

namespace kesh::gencases {

/// Returns case 5.
GeneratedCase makeEdgeCase();

}  // namespace kesh::gencases

#endif  // KESH_TOOLS_GEN_CASES_EDGE_CASE_H_
