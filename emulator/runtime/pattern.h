// A loaded pattern: its validated program, shared (immutable) with every node
// and job that runs it, so destroying the pattern never disturbs them.
// Immutable after creation; safe from any thread.
#ifndef KESH_EMULATOR_RUNTIME_PATTERN_H_
#define KESH_EMULATOR_RUNTIME_PATTERN_H_

#include <memory>
#include <string>

#include "format/program.h"
#include "runtime/handles.h"

namespace kesh::runtime {

struct Pattern {
  HandleId id = 0;                                  ///< the pattern's handle id
  HandleId playerId = 0;                            ///< player it was created on
  std::string name;                                 ///< name given at creation
  std::shared_ptr<const format::Program> program;   ///< never null
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_PATTERN_H_
