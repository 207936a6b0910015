#include "settings/word_split.h"

namespace kesh::settings {

std::vector<std::string> splitCommandWords(const char* programName, const std::string& line) {
  std::vector<std::string> words;
  words.emplace_back(programName);
  // Blanks are the only separators: no quoting, and tabs or carriage returns
  // belong to words, so the words of a line are predictable byte for byte.
  std::string::size_type start = 0;
  while (start < line.size()) {
    std::string::size_type blank = line.find(' ', start);
    if (blank == std::string::npos) {
      words.emplace_back(line, start);
      break;
    }
    words.emplace_back(line, start, blank - start);
    start = blank + 1;
  }
  return words;
}

}  // namespace kesh::settings
