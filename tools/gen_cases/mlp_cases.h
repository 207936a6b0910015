// Cases 0 to 3: one quantised two-layer perceptron (16 feature rows of 256
// values, a ReLU hidden layer of 204, 192 outputs) computed by four different
// programs. Stateless; safe from any thread.
#ifndef KESH_TOOLS_GEN_CASES_MLP_CASES_H_
#define KESH_TOOLS_GEN_CASES_MLP_CASES_H_

#include <vector>

#include "generated_case.h"

namespace kesh::gencases {

/// Returns cases 0, 1, 2 and 3 (0 and 1 share their pattern bytes).
std::vector<GeneratedCase> makeMlpCases();

}  // namespace kesh::gencases

#endif  // KESH_TOOLS_GEN_CASES_MLP_CASES_H_
