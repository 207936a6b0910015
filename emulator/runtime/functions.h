// The 26 entry points of the library as an enumeration, so that call counting,
// fault injection and the trace can refer to them by number and by name.
// Stateless; safe from any thread.
#ifndef KESH_EMULATOR_RUNTIME_FUNCTIONS_H_
#define KESH_EMULATOR_RUNTIME_FUNCTIONS_H_

#include <cstddef>
#include <string>

namespace kesh::runtime {

enum class Fn : int {
  kCreatePlayer, kDestroyPlayer, kCreatePattern, kDestroyPattern, kCreatePatternGraph,
  kDestroyPatternGraph, kSetPatternGraphOption, kAddPattern, kSetPatternPack, kBuildPatternGraph,
  kDestroyPatternNode, kGetPatternArgInfoSize, kGetPatternArgInfo, kCreateMem, kMapMem, kFlushMem,
  kInvalidateMem, kUnmapMem, kDestroyMem, kSetPatternNodeArg, kSetPatternNodeOption,
  kUpdatePatternNode, kPlayPatternGraph, kWaitPatternJob, kGetPatternNodeExecInfo,
  kDestroyPatternJob,
};

inline constexpr size_t kFunctionCount = 26;

/// Returns the C name of `fn` ("keshCreatePlayer").
const char* functionName(Fn fn);

/// Finds the function called `name`; false if there is none.
bool functionByName(const std::string& name, Fn* out);

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_FUNCTIONS_H_
