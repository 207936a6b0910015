// Text names of opcodes, functions and element types, shared by validation
// messages and the pattern text form. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_FORMAT_NAMES_H_
#define KESH_EMULATOR_FORMAT_NAMES_H_

#include <cstdint>

namespace kesh::format {

/// Returns the lower-case name of opcode `value` ("conv2d"), or nullptr if unknown.
const char* opcodeName(uint32_t value);
/// Returns the name of unary function `value` ("addi"), or nullptr if unknown.
const char* unaryFuncName(uint32_t value);
/// Returns the name of binary function `value` ("absdiff"), or nullptr if unknown.
const char* binaryFuncName(uint32_t value);
/// Returns the name of element type `value` ("i16"), or nullptr if unknown.
const char* dtypeName(uint32_t value);

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_NAMES_H_
