// Reading the committed case files in tests. Stateless helpers.
#ifndef KESH_TESTS_TESTDATA_CASE_FILES_H_
#define KESH_TESTS_TESTDATA_CASE_FILES_H_

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace kesh::testdata {

using Data = std::map<std::string, std::vector<uint8_t>>;

/// The whole content of `path` (empty if it cannot be read).
inline std::vector<uint8_t> readFileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// One case as its files hold it: caseN_pattern, caseN_in_* and caseN_golden_*.
struct CaseFiles {
  explicit CaseFiles(int caseNumber) {
    const std::string prefix = "case" + std::to_string(caseNumber) + "_";
    for (const auto& entry : std::filesystem::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
      const std::string stem = entry.path().stem().string();
      if (stem == prefix + "pattern") pattern = readFileBytes(entry.path());
      if (stem.rfind(prefix + "in_", 0) == 0) inputs[stem.substr(prefix.size() + 3)] = readFileBytes(entry.path());
      if (stem.rfind(prefix + "golden_", 0) == 0) goldens[stem.substr(prefix.size() + 7)] = readFileBytes(entry.path());
    }
  }
  std::vector<uint8_t> pattern;
  Data inputs, goldens;
};

}  // namespace kesh::testdata

#endif  // KESH_TESTS_TESTDATA_CASE_FILES_H_
