// kesh_gen_cases OUTDIR: writes the data files of the six built-in cases,
// one file per datum, named like the symbol it is embedded as.
#include <cstdio>
#include <string>
#include <vector>

#include "edge_case.h"
#include "generated_case.h"
#include "mlp_cases.h"
#include "tone_case.h"

namespace {

using kesh::gencases::GeneratedCase;
using kesh::gencases::NamedData;

bool writeFile(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && written;
}

bool writeCase(const std::string& dir, size_t number, const GeneratedCase& made) {
  const std::string prefix = dir + "/case" + std::to_string(number) + "_";
  std::vector<std::pair<std::string, const std::vector<uint8_t>*>> files = {{prefix + "pattern.bin", &made.pattern}};
  for (const NamedData& input : made.inputs) files.push_back({prefix + "in_" + input.first + ".bin", &input.second});
  for (const NamedData& golden : made.goldens) {
    files.push_back({prefix + "golden_" + golden.first + ".bin", &golden.second});
  }
  for (const auto& file : files) {
    if (!writeFile(file.first, *file.second)) {
      std::fprintf(stderr, "Failed to write %s\n", file.first.c_str());
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s OUTDIR\n", argc > 0 ? argv[0] : "kesh_gen_cases");
    return 1;
  }
  std::vector<GeneratedCase> cases = kesh::gencases::makeMlpCases();
  cases.push_back(kesh::gencases::makeToneCase());
  cases.push_back(kesh::gencases::makeEdgeCase());
  for (size_t number = 0; number < cases.size(); ++number) {
    if (!writeCase(argv[1], number, cases[number])) return 1;
  }
  return 0;
}
