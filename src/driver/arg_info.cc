#include "driver/arg_info.h"

#include <cstring>
#include <sstream>

#include "common/fatal.h"

namespace {

uint32_t wordAt(const std::vector<uint8_t>& buffer, uint32_t i) {
  uint32_t value = 0;
  std::memcpy(&value, buffer.data() + static_cast<size_t>(i) * sizeof(value), sizeof(value));
  return value;
}

std::string textUpToNul(const std::vector<uint8_t>& buffer) {
  const char* text = reinterpret_cast<const char*>(buffer.data());
  return std::string(text, strnlen(text, buffer.size()));
}

}  // namespace

void assignArgNames(const std::string& names, std::vector<PatternArgInfo>& args) {
  std::istringstream stream(names);
  std::string piece;
  // More pieces than entries end in the vector's out-of-range abort: nothing
  // catches it, and a library that lies about its arguments must not go on.
  for (size_t k = 0; std::getline(stream, piece, ';'); ++k) args.at(k).name = piece;
}

void getArgInfo(_pattern* pattern, std::vector<PatternArgInfo>& args) {
  uint32_t count = 0;
  // The count query passes a size of 1 although the count is four bytes wide;
  // libraries in the field accept it that way.
  if (keshGetPatternArgInfo(pattern, PATTERN_ARG_INFO_NUM, &count, 1) != 0) {
    kesh::fatalError("Failed to get pattern argument number");
  }
  args.resize(count);

  std::vector<uint8_t> buffer;  // one buffer serves all four tables
  auto query = [pattern, &buffer](pattern_arg_info_type type) {
    uint32_t size = 0;
    if (keshGetPatternArgInfoSize(pattern, type, &size) != 0) {
      kesh::fatalError("Failed to get pattern argument info size of type " + std::to_string(type));
    }
    if (size == 0) {
      kesh::fatalError("Pattern argument info size is zero for type " + std::to_string(type));
    }
    buffer.resize(size);
    if (keshGetPatternArgInfo(pattern, type, buffer.data(), size) != 0) {
      kesh::fatalError("Failed to get pattern argument info of type " + std::to_string(type));
    }
  };

  query(PATTERN_ARG_INFO_INDEX);
  for (uint32_t i = 0; i < count; ++i) args.at(i).index = wordAt(buffer, i);
  query(PATTERN_ARG_INFO_SIZE);
  for (uint32_t i = 0; i < count; ++i) args.at(i).size = wordAt(buffer, i);
  query(PATTERN_ARG_INFO_NO_ALLOC);
  for (uint32_t i = 0; i < count; ++i) args.at(i).noAlloc = wordAt(buffer, i);
  query(PATTERN_ARG_INFO_NAME);
  assignArgNames(textUpToNul(buffer), args);
}
