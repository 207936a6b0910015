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

/// The whole content of `path` (empty if it cannot be read).
inline std::vector<uint8_t> readFileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// The data file of the datum named `symbol` ("case4_in_GI_65540").
inline std::vector<uint8_t> readDatum(const std::string& symbol) {
  return readFileBytes(std::filesystem::path(KESH_DEFAULT_CASES_DIR) / (symbol + ".bin"));
}

/// One case as its files hold it.
struct CaseFiles {
  std::vector<uint8_t> pattern;
  std::map<std::string, std::vector<uint8_t>> inputs;
  std::map<std::string, std::vector<uint8_t>> goldens;
};

/// Collects caseN_pattern, caseN_in_* and caseN_golden_* from the data folder.
inline CaseFiles readCaseFiles(int caseNumber) {
  const std::string prefix = "case" + std::to_string(caseNumber) + "_";
  CaseFiles files;
  files.pattern = readDatum(prefix + "pattern");
  for (const auto& entry : std::filesystem::directory_iterator(KESH_DEFAULT_CASES_DIR)) {
    const std::string stem = entry.path().stem().string();
    if (stem.rfind(prefix + "in_", 0) == 0) files.inputs[stem.substr(prefix.size() + 3)] = readFileBytes(entry.path());
    if (stem.rfind(prefix + "golden_", 0) == 0) {
      files.goldens[stem.substr(prefix.size() + 7)] = readFileBytes(entry.path());
    }
  }
  return files;
}

}  // namespace kesh::testdata

#endif  // KESH_TESTS_TESTDATA_CASE_FILES_H_
