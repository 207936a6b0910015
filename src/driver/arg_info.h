// Argument introspection of a loaded pattern. Stateless free function; call
// it from one thread at a time per pattern. The caller owns the vector.
#ifndef KESH_DRIVER_ARG_INFO_H_
#define KESH_DRIVER_ARG_INFO_H_

#include <cstdint>
#include <string>
#include <vector>

#include "kesh/kesh_pattern.h"

/// One argument of a pattern as the library reports it.
struct PatternArgInfo {
  std::string name;      ///< key under which inputs and goldens are looked up
  uint32_t index = 0;    ///< index passed when memory is bound to the argument
  uint32_t size = 0;     ///< buffer size in bytes
  uint32_t noAlloc = 0;  ///< nonzero: the tool creates, binds and compares nothing for it
};

/// Fills `args` with one entry per argument of `pattern`; ends the process on
/// any library failure, and aborts when the library reports more names than
/// arguments.
void getArgInfo(_pattern* pattern, std::vector<PatternArgInfo>& args);

/// Gives entry k of `args` the k-th ';'-separated piece of `names`, read as
/// lines: empty pieces count, a trailing separator adds none, entries without a
/// piece keep their name, and a piece beyond the last entry aborts the process.
void assignArgNames(const std::string& names, std::vector<PatternArgInfo>& args);

#endif  // KESH_DRIVER_ARG_INFO_H_
