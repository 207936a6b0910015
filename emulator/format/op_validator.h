// Validation of one operation against the buffers of its pattern: the rules
// that let the executor run a loaded program without any bounds check.
// Stateless; safe from any thread.
#ifndef KESH_EMULATOR_FORMAT_OP_VALIDATOR_H_
#define KESH_EMULATOR_FORMAT_OP_VALIDATOR_H_

#include <string>

#include "format/program.h"

namespace kesh::format {

/// True if `op` is valid in `program` (whose args, internalSizes and constData
/// give the buffer sizes): known opcode, function and element type, unused
/// parameters zero, every buffer present, nothing written to constant data,
/// every range inside its buffer, no forbidden overlap, parameters in range.
/// Otherwise sets *error (when not null) to the reason.
bool validateOp(const Op& op, const Program& program, std::string* error);

}  // namespace kesh::format

#endif  // KESH_EMULATOR_FORMAT_OP_VALIDATOR_H_
