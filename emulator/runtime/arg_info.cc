#include "runtime/arg_info.h"

#include <cstring>
#include <string>
#include <vector>

namespace kesh::runtime {
namespace {

constexpr uint32_t kNum = 0, kIndex = 1, kName = 2, kNoAlloc = 3, kSize = 4;

std::string joinedNames(const format::Program& program) {
  std::string joined;
  for (size_t i = 0; i < program.args.size(); ++i) {
    if (i != 0) joined += ';';
    joined += program.args[i].name;
  }
  return joined;
}

uint32_t fieldOf(const format::ArgSpec& arg, uint32_t type) {
  switch (type) {
    case kIndex: return arg.index;
    case kNoAlloc: return arg.noAlloc ? 1u : 0u;
    default: return arg.size;
  }
}

}  // namespace

bool argInfoSize(const format::Program& program, uint32_t type, uint32_t* size) {
  switch (type) {
    case kNum:
      *size = 4;
      return true;
    case kIndex:
    case kNoAlloc:
    case kSize:
      *size = static_cast<uint32_t>(4 * program.args.size());  // at most 256 arguments
      return true;
    case kName:
      *size = static_cast<uint32_t>(joinedNames(program).size() + 1);
      return true;
    default:
      return false;
  }
}

bool argInfo(const format::Program& program, uint32_t type, void* data, uint32_t size) {
  uint32_t needed = 0;
  if (!argInfoSize(program, type, &needed)) return false;
  if (type == kNum) {
    if (size < 1) return false;
    uint32_t count = static_cast<uint32_t>(program.args.size());
    std::memcpy(data, &count, sizeof count);
    return true;
  }
  if (size < needed) return false;
  if (type == kName) {
    std::string joined = joinedNames(program);
    std::memcpy(data, joined.c_str(), joined.size() + 1);
    return true;
  }
  std::vector<uint32_t> values;
  values.reserve(program.args.size());
  for (const auto& arg : program.args) values.push_back(fieldOf(arg, type));
  if (!values.empty()) std::memcpy(data, values.data(), 4 * values.size());
  return true;
}

}  // namespace kesh::runtime
