#include "pattern_asm/text_lexer.h"

#include <cctype>

namespace kesh::pattern_text {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

bool isBareNameChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '-';
}

int digitValue(char c, int base) {
  int value = 36;
  if (c >= '0' && c <= '9') value = c - '0';
  if (c >= 'a' && c <= 'z') value = c - 'a' + 10;
  if (c >= 'A' && c <= 'Z') value = c - 'A' + 10;
  return value < base ? value : -1;
}

}  // namespace

bool readQuoted(const std::string& text, size_t* pos, std::string* out) {
  out->clear();
  for (size_t i = *pos + 1; i < text.size(); ++i) {
    char c = text[i];
    if (c == '"') {
      *pos = i + 1;
      return true;
    }
    if (c == '\\' && i + 1 < text.size()) c = text[++i];
    out->push_back(c);
  }
  return false;
}

bool splitLine(const std::string& line, std::vector<std::string>* tokens, std::string* error) {
  tokens->clear();
  size_t i = 0;
  while (i < line.size()) {
    if (isBlank(line[i])) {
      ++i;
      continue;
    }
    if (line[i] == '#') break;
    const size_t start = i;
    while (i < line.size() && !isBlank(line[i]) && line[i] != '#') {
      if (line[i] != '"') {
        ++i;
        continue;
      }
      std::string ignored;
      if (!readQuoted(line, &i, &ignored)) {
        *error = "unterminated quote";
        return false;
      }
    }
    tokens->push_back(line.substr(start, i - start));
  }
  return true;
}

std::string quoteIfNeeded(const std::string& name) {
  bool bare = !name.empty();
  for (char c : name) bare = bare && isBareNameChar(c);
  if (bare) return name;
  std::string quoted = "\"";
  for (char c : name) {
    if (c == '"' || c == '\\') quoted.push_back('\\');
    quoted.push_back(c);
  }
  return quoted + "\"";
}

bool parseInteger(const std::string& text, int64_t min, int64_t max, int64_t* value) {
  size_t i = 0;
  const bool negative = !text.empty() && text[0] == '-';
  if (negative || (!text.empty() && text[0] == '+')) i = 1;
  int base = 10;
  if (text.size() > i + 2 && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X')) {
    base = 16;
    i += 2;
  }
  if (i >= text.size()) return false;
  // Magnitudes beyond 2^33 are out of every range used here; stop before overflow.
  uint64_t magnitude = 0;
  for (; i < text.size(); ++i) {
    const int digit = digitValue(text[i], base);
    if (digit < 0) return false;
    magnitude = magnitude * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
    if (magnitude > (uint64_t{1} << 33)) return false;
  }
  const int64_t result = negative ? -static_cast<int64_t>(magnitude) : static_cast<int64_t>(magnitude);
  if (result < min || result > max) return false;
  *value = result;
  return true;
}

bool isIdentifier(const std::string& text) {
  if (text.empty() || std::isdigit(static_cast<unsigned char>(text[0]))) return false;
  for (char c : text) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
  }
  return true;
}

}  // namespace kesh::pattern_text
