#include "report/diff_text.h"

#include <cstdio>
#include <fstream>

namespace kesh::report {

std::string describeDiff(const DiffSummary& diff, const std::string& goldenPath) {
  std::string text = std::to_string(diff.differing) + " of " + std::to_string(diff.listedBytes) + " bytes differ";
  if (diff.differing == 0) return text;
  text += " (offsets " + std::to_string(diff.firstOffset) + ".." + std::to_string(diff.lastOffset) + ")";
  std::ifstream golden;
  if (!goldenPath.empty()) golden.open(goldenPath, std::ios::binary);
  const char* separator = ": ";
  for (const auto& [offset, value] : diff.firstValues) {
    char item[96];
    char byte = 0;
    if (golden.is_open() && golden.seekg(static_cast<std::streamoff>(offset)) && golden.get(byte)) {
      const unsigned expected = static_cast<unsigned char>(byte);
      std::snprintf(item, sizeof item, "at %llu expected 0x%02x actual 0x%02x", static_cast<unsigned long long>(offset),
                    expected, expected ^ value);
    } else {
      golden.clear();
      std::snprintf(item, sizeof item, "at %llu xor 0x%02x", static_cast<unsigned long long>(offset), value);
    }
    text += separator;
    text += item;
    separator = ", ";
  }
  if (diff.differing > diff.firstValues.size()) text += ", ...";
  return text;
}

}  // namespace kesh::report
