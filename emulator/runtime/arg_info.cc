#include "runtime/arg_info.h"

#include <cstring>
#include <string>
#include <vector>

#include "kesh/kesh_pattern.h"

namespace kesh::runtime {
namespace {

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
    case PATTERN_ARG_INFO_INDEX: return arg.index;
    case PATTERN_ARG_INFO_NO_ALLOC: return arg.noAlloc ? 1u : 0u;
    default: return arg.size;
  }
}

}  // namespace

bool argInfoSize(const format::Program& program, uint32_t type, uint32_t* size) {
  switch (type) {
    case PATTERN_ARG_INFO_NUM:
      *size = 4;
      return true;
    case PATTERN_ARG_INFO_INDEX:
    case PATTERN_ARG_INFO_NO_ALLOC:
    case PATTERN_ARG_INFO_SIZE:
      *size = static_cast<uint32_t>(4 * program.args.size());  // at most 256 arguments
      return true;
    case PATTERN_ARG_INFO_NAME:
      *size = static_cast<uint32_t>(joinedNames(program).size() + 1);
      return true;
    default:
      return false;
  }
}

bool argInfo(const format::Program& program, uint32_t type, void* data, uint32_t size) {
  uint32_t needed = 0;
  if (!argInfoSize(program, type, &needed)) return false;
  if (type == PATTERN_ARG_INFO_NUM) {
    if (size < 1) return false;
    uint32_t count = static_cast<uint32_t>(program.args.size());
    std::memcpy(data, &count, sizeof count);
    return true;
  }
  if (size < needed) return false;
  if (type == PATTERN_ARG_INFO_NAME) {
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
