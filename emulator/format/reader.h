// Decodes and fully validates a pattern binary. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_FORMAT_READER_H_
#define KESH_EMULATOR_FORMAT_READER_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "format/program.h"

namespace kesh::format {

/// Decodes the `size` bytes at `data` into *out. Returns false, leaving *out
/// unchanged and setting *error (when not null) to a one-line reason, for any
/// binary that breaks a rule of the format; never reads outside the input.
bool decodePattern(const uint8_t* data, size_t size, Program* out, std::string* error);

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_READER_H_
