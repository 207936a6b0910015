// Argument introspection of a program, in the layouts callers read:
// type 0 one 32-bit count; types 1, 3, 4 one 32-bit value per argument
// (index, no-alloc flag, size) in the machine's byte order; type 2 the names
// joined by ';' and ended by a NUL. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_RUNTIME_ARG_INFO_H_
#define KESH_EMULATOR_RUNTIME_ARG_INFO_H_

#include <cstdint>

#include "format/program.h"

namespace kesh::runtime {

/// Bytes that `type` needs; false for an unknown type.
bool argInfoSize(const format::Program& program, uint32_t type, uint32_t* size);

/// Writes `type` into `data` of `size` bytes; false for an unknown type or a
/// buffer smaller than argInfoSize. Type 0 always writes the full 32-bit
/// count when size >= 1: callers pass a 32-bit variable with a size of 1.
bool argInfo(const format::Program& program, uint32_t type, void* data, uint32_t size);

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_ARG_INFO_H_
