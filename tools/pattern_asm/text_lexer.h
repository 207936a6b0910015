// Splitting and reading the tokens of one line of pattern text. Stateless;
// safe from any thread.
#ifndef KESH_TOOLS_PATTERN_ASM_TEXT_LEXER_H_
#define KESH_TOOLS_PATTERN_ASM_TEXT_LEXER_H_

#include <cstdint>
#include <string>
#include <vector>

namespace kesh::pattern_text {

/// Splits `line` at blanks into tokens, dropping a `#` comment; a double-quoted
/// part (with \" and \\ escapes) stays inside its token, quotes included.
/// Returns false with *error set on an unterminated quote.
bool splitLine(const std::string& line, std::vector<std::string>* tokens, std::string* error);

/// Reads a double-quoted string at text[*pos] (which must be '"'), advancing
/// *pos past the closing quote. Returns false on a missing closing quote.
bool readQuoted(const std::string& text, size_t* pos, std::string* out);

/// Quotes `name` unless it is made only of letters, digits, '_', '.' and '-'.
std::string quoteIfNeeded(const std::string& name);

/// True if `text` is a decimal or 0x-hexadecimal integer, optionally signed,
/// within [min, max]; stores it in *value.
bool parseInteger(const std::string& text, int64_t min, int64_t max, int64_t* value);

/// True if `text` starts with a letter or '_' and goes on with letters, digits or '_'.
bool isIdentifier(const std::string& text);

}  // namespace kesh::pattern_text

#endif  // KESH_TOOLS_PATTERN_ASM_TEXT_LEXER_H_
