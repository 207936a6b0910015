// The library's entry points as an enumeration, so that call counting, fault
// injection and the trace can refer to them by number and by name. The list is
// generated from the contract header. Stateless; safe from any thread.
#ifndef KESH_EMULATOR_RUNTIME_FUNCTIONS_H_
#define KESH_EMULATOR_RUNTIME_FUNCTIONS_H_

#include <cstddef>
#include <string>

namespace kesh::runtime {

/// One enumerator per entry point, named like it (Fn::keshCreatePlayer).
enum class Fn : int {
#define KESH_FUNCTION(name) name,
#include "runtime/kesh_functions.inc"
#undef KESH_FUNCTION
};

/// Number of entry points.
inline constexpr size_t kFunctionCount = 0
#define KESH_FUNCTION(name) +1
#include "runtime/kesh_functions.inc"
#undef KESH_FUNCTION
    ;

/// Returns the C name of `fn` ("keshCreatePlayer").
const char* functionName(Fn fn);

/// Finds the function called `name`; false if there is none.
bool functionByName(const std::string& name, Fn* out);

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_FUNCTIONS_H_
