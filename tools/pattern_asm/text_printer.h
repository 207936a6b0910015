// Program -> text: the disassembler and the argument listing. Stateless;
// safe from any thread.
#ifndef KESH_TOOLS_PATTERN_ASM_TEXT_PRINTER_H_
#define KESH_TOOLS_PATTERN_ASM_TEXT_PRINTER_H_

#include <string>

#include "format/program.h"

namespace kesh::pattern_text {

/// The canonical text of a valid `program`: parsing it gives back an equal
/// Program. Arguments come first, then internal buffers, operations and
/// constant data (hex bytes, zero runs); labels of the original text are not kept.
std::string formatPatternText(const format::Program& program);

/// The argument listing, which says what the data files of the arguments must
/// be called: one header line and one line per argument, in table order, with
/// columns POS INDEX NAME SIZE NOALLOC left-aligned and separated by two or
/// more blanks; NOALLOC is "yes" or "no".
std::string formatArgTable(const format::Program& program);

}  // namespace kesh::pattern_text

#endif  // KESH_TOOLS_PATTERN_ASM_TEXT_PRINTER_H_
