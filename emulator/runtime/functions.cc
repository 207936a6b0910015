#include "runtime/functions.h"

namespace kesh::runtime {
namespace {

constexpr const char* kNames[kFunctionCount] = {
    "keshCreatePlayer",        "keshDestroyPlayer",          "keshCreatePattern",
    "keshDestroyPattern",      "keshCreatePatternGraph",     "keshDestroyPatternGraph",
    "keshSetPatternGraphOption", "keshAddPattern",           "keshSetPatternPack",
    "keshBuildPatternGraph",   "keshDestroyPatternNode",     "keshGetPatternArgInfoSize",
    "keshGetPatternArgInfo",   "keshCreateMem",              "keshMapMem",
    "keshFlushMem",            "keshInvalidateMem",          "keshUnmapMem",
    "keshDestroyMem",          "keshSetPatternNodeArg",      "keshSetPatternNodeOption",
    "keshUpdatePatternNode",   "keshPlayPatternGraph",       "keshWaitPatternJob",
    "keshGetPatternNodeExecInfo", "keshDestroyPatternJob",
};

}  // namespace

const char* functionName(Fn fn) { return kNames[static_cast<size_t>(fn)]; }

bool functionByName(const std::string& name, Fn* out) {
  for (size_t i = 0; i < kFunctionCount; ++i) {
    if (name == kNames[i]) {
      *out = static_cast<Fn>(i);
      return true;
    }
  }
  return false;
}

}  // namespace kesh::runtime
