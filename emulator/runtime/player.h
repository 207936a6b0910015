// A player: the context that patterns, graphs and memory are created on and
// that jobs are played on. Shared by the handle table and by its jobs;
// the counter of unfinished jobs is atomic, the rest is immutable.
#ifndef KESH_EMULATOR_RUNTIME_PLAYER_H_
#define KESH_EMULATOR_RUNTIME_PLAYER_H_

#include <atomic>
#include <string>

#include "runtime/handles.h"

namespace kesh::runtime {

struct Player {
  HandleId id = 0;                     ///< the player's handle id
  std::string name;                    ///< name given at creation
  std::atomic<int> unfinishedJobs{0};  ///< jobs played and not yet complete
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_PLAYER_H_
