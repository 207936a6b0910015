// Runs a validated Program over caller-provided argument buffers.
#ifndef KESH_EMULATOR_KERNELS_EXECUTOR_H_
#define KESH_EMULATOR_KERNELS_EXECUTOR_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "format/program.h"

namespace kesh::kernels {

/// A writable byte range that an argument of a program is bound to.
struct BufferView {
  uint8_t* data = nullptr;
  size_t size = 0;
};

/// Executes every operation of `program` in order. `args` has one view per
/// entry of program.args (same order), each at least that argument's size.
/// Internal buffers are allocated zero-filled for this call. The program must
/// have passed the reader's validation. Thread-safe for distinct buffers.
void executeProgram(const format::Program& program, const std::vector<BufferView>& args);

}  // namespace kesh::kernels

#endif  // KESH_EMULATOR_KERNELS_EXECUTOR_H_
