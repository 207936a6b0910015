#include "pattern_asm/text_printer.h"

#include <array>
#include <vector>

namespace kesh::pattern_text {
namespace {

constexpr size_t kColumns = 5;
using Row = std::array<std::string, kColumns>;
using Widths = std::array<size_t, kColumns>;

std::string joinAligned(const Row& row, const Widths& widths) {
  std::string line;
  for (size_t column = 0; column < kColumns; ++column) {
    line += row[column];
    if (column + 1 < kColumns) line += std::string(widths[column] - row[column].size() + 2, ' ');
  }
  return line + "\n";
}

}  // namespace

std::string formatArgTable(const format::Program& program) {
  std::vector<Row> rows = {{"POS", "INDEX", "NAME", "SIZE", "NOALLOC"}};
  for (size_t i = 0; i < program.args.size(); ++i) {
    const format::ArgSpec& arg = program.args[i];
    rows.push_back({std::to_string(i), std::to_string(arg.index), arg.name, std::to_string(arg.size),
                    arg.noAlloc ? "yes" : "no"});
  }
  Widths widths{};
  for (const Row& row : rows) {
    for (size_t column = 0; column < kColumns; ++column) {
      if (row[column].size() > widths[column]) widths[column] = row[column].size();
    }
  }
  std::string text;
  for (const Row& row : rows) text += joinAligned(row, widths);
  return text;
}

}  // namespace kesh::pattern_text
