// Pattern text -> Program: the assembler's front end. Stateless; safe from
// any thread.
#ifndef KESH_TOOLS_PATTERN_ASM_TEXT_PARSER_H_
#define KESH_TOOLS_PATTERN_ASM_TEXT_PARSER_H_

#include <string>

#include "format/program.h"

namespace kesh::pattern_text {

/// Where and why a text was refused.
struct TextError {
  int line = 0;         ///< 1-based line number
  std::string message;  ///< one line, no trailing newline
};

/// Parses the whole text of a pattern into *out. Returns false with *error
/// set for the first faulty line; a Program that is returned passes every
/// rule of the binary reader.
bool parsePatternText(const std::string& text, format::Program* out, TextError* error);

}  // namespace kesh::pattern_text

#endif  // KESH_TOOLS_PATTERN_ASM_TEXT_PARSER_H_
