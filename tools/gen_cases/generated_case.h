// One built-in case as the generator produces it: the pattern binary and the
// named inputs and goldens, in catalogue order. Plain value; not shared.
#ifndef KESH_TOOLS_GEN_CASES_GENERATED_CASE_H_
#define KESH_TOOLS_GEN_CASES_GENERATED_CASE_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kesh::gencases {

/// Bytes bound to a pattern argument by its name.
using NamedData = std::pair<std::string, std::vector<uint8_t>>;

/// A complete case: pattern, inputs and goldens.
struct GeneratedCase {
  std::vector<uint8_t> pattern;
  std::vector<NamedData> inputs;
  std::vector<NamedData> goldens;
};

}  // namespace kesh::gencases

#endif  // KESH_TOOLS_GEN_CASES_GENERATED_CASE_H_
