// Feeds arbitrary bytes to keshCreatePattern. A pattern the library accepts
// must answer every argument query and be destroyed cleanly, and the library
// must accept exactly what the reader accepts.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "format/reader.h"

#include "kesh/kesh_pattern.h"

namespace {

_kesh_player* player() {
  static _kesh_player* shared = keshCreatePlayer("fuzz");
  return shared;
}

void queryArguments(_pattern* pattern) {
  std::vector<uint8_t> buffer;
  for (int type = PATTERN_ARG_INFO_INDEX; type <= PATTERN_ARG_INFO_SIZE; ++type) {
    uint32_t size = 0;
    const auto infoType = static_cast<pattern_arg_info_type>(type);
    if (keshGetPatternArgInfoSize(pattern, infoType, &size) != 0) std::abort();
    buffer.assign(size, 0xA5);
    if (size != 0 && keshGetPatternArgInfo(pattern, infoType, buffer.data(), size) != 0) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > UINT32_MAX) return 0;
  kesh::format::Program program;
  const bool valid = kesh::format::decodePattern(data, size, &program, nullptr);
  _pattern* pattern = keshCreatePattern(player(), data, static_cast<uint32_t>(size), "fuzz");
  if ((pattern != nullptr) != valid) std::abort();
  if (!pattern) return 0;
  queryArguments(pattern);
  if (keshDestroyPattern(pattern) != 0) std::abort();
  return 0;
}
