// The argument listing of a pattern: what the data files of its arguments
// must be called. Stateless; safe from any thread.
#ifndef KESH_TOOLS_PATTERN_ASM_ARG_TABLE_H_
#define KESH_TOOLS_PATTERN_ASM_ARG_TABLE_H_

#include <string>

#include "format/program.h"

namespace kesh::pattern_text {

/// One header line and one line per argument, in table order, with columns
/// POS INDEX NAME SIZE NOALLOC left-aligned and separated by two or more
/// blanks; NOALLOC is "yes" or "no".
std::string formatArgTable(const format::Program& program);

}  // namespace kesh::pattern_text

#endif  // KESH_TOOLS_PATTERN_ASM_ARG_TABLE_H_
