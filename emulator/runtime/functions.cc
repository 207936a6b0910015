#include "runtime/functions.h"

#include <type_traits>

#include "kesh/kesh_pattern.h"

namespace kesh::runtime {
namespace {

// Each generated name must be a function of the contract.
#define KESH_FUNCTION(name) static_assert(std::is_function_v<decltype(::name)>, #name " is not in the contract");
#include "runtime/kesh_functions.inc"
#undef KESH_FUNCTION

constexpr const char* kNames[kFunctionCount] = {
#define KESH_FUNCTION(name) #name,
#include "runtime/kesh_functions.inc"
#undef KESH_FUNCTION
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
