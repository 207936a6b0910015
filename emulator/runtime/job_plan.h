// What a job runs: an immutable snapshot of a built graph with the arguments
// and options its nodes had applied when it was played. It shares the
// programs and device buffers, so destroying handles never disturbs a job.
// A graph keeps its latest plan and hands the same one to every play until a
// node changes, so a plan is shared, read-only, by any number of jobs.
#ifndef KESH_EMULATOR_RUNTIME_JOB_PLAN_H_
#define KESH_EMULATOR_RUNTIME_JOB_PLAN_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "format/program.h"
#include "runtime/handles.h"
#include "runtime/memory.h"

namespace kesh::runtime {

/// Device memory bound to one argument; a null block marks a no-alloc
/// argument, which gets a fresh zero-filled buffer for every execution.
struct BoundArg {
  std::shared_ptr<ByteBlock> block;
  uint32_t size = 0;  ///< bytes of the block the node may use
};

/// One node as it will run.
struct NodeRun {
  HandleId nodeId = 0;
  std::shared_ptr<const format::Program> program;
  std::vector<BoundArg> args;  ///< one per entry of program->args
  int boost = 0;
  int core = -1;
};

/// A whole job: nodes in graph order, grouped into steps that run one after
/// another; the nodes of one step (a pack) start together.
struct JobPlan {
  std::vector<NodeRun> nodes;
  std::vector<std::vector<size_t>> steps;  ///< indices into nodes
};

/// The graph's limits when it was played, microseconds (0: none).
struct JobLimits {
  int32_t hardUs = 0;  ///< a node ending past it fails the job
  int32_t softUs = 0;  ///< an overrun is only recorded
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_JOB_PLAN_H_
