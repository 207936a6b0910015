// Encodes a Program into a pattern binary. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_FORMAT_WRITER_H_
#define KESH_EMULATOR_FORMAT_WRITER_H_

#include <cstdint>
#include <vector>

#include "format/program.h"

namespace kesh::format {

/// Returns the binary of `program`, zero-padded to exactly `padTo` bytes when
/// padTo is nonzero; returns an empty vector when padTo is smaller than the
/// encoded size. Encodes as given without validating (names are cut to 35
/// bytes), so it can also build malformed binaries for tests.
std::vector<uint8_t> encodePattern(const Program& program, uint32_t padTo = 0);

/// Returns the size in bytes of `program` encoded without padding.
uint64_t encodedSize(const Program& program);

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_WRITER_H_
