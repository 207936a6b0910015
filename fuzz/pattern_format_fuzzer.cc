// The library accepts exactly what the reader accepts and answers every argument query; an accepted
// pattern runs over buffers of exactly its sizes, and its disassembly assembles back to the same bytes.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "format/reader.h"
#include "format/writer.h"
#include "kernels/executor.h"
#include "kesh/kesh_pattern.h"
#include "pattern_asm/text_parser.h"
#include "pattern_asm/text_printer.h"

static void require(bool holds) {
  if (!holds) std::abort();
}

static void execute(const kesh::format::Program& program) {
  uint64_t total = 0;
  for (const auto& arg : program.args) total += arg.size;
  for (uint32_t size : program.internalSizes) total += size;
  if (total > 64 * 1024) return;
  std::vector<std::vector<uint8_t>> buffers;
  std::vector<kesh::kernels::BufferView> views;
  for (const auto& arg : program.args) buffers.emplace_back(arg.size, static_cast<uint8_t>(arg.index * 37 + 11));
  for (auto& buffer : buffers) views.push_back({buffer.data(), buffer.size()});
  kesh::kernels::executeProgram(program, views);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kesh::format::Program program, again;
  const bool valid = kesh::format::decodePattern(data, size, &program, nullptr);
  static _kesh_player* const player = keshCreatePlayer("fuzz");
  _pattern* pattern = keshCreatePattern(player, data, static_cast<uint32_t>(size), "fuzz");
  require((pattern != nullptr) == valid);
  if (!valid) return 0;
  for (auto type : {PATTERN_ARG_INFO_INDEX, PATTERN_ARG_INFO_NAME, PATTERN_ARG_INFO_NO_ALLOC, PATTERN_ARG_INFO_SIZE}) {
    uint32_t infoSize = 0;
    require(keshGetPatternArgInfoSize(pattern, type, &infoSize) == 0);
    std::vector<uint8_t> info(infoSize, 0xA5);
    require(infoSize == 0 || keshGetPatternArgInfo(pattern, type, info.data(), infoSize) == 0);
  }
  require(keshDestroyPattern(pattern) == 0);
  execute(program);
  kesh::pattern_text::TextError error;
  require(kesh::pattern_text::parsePatternText(kesh::pattern_text::formatPatternText(program), &again, &error));
  const std::vector<uint8_t> rebuilt = kesh::format::encodePattern(again, static_cast<uint32_t>(size));
  require(rebuilt == kesh::format::encodePattern(program, static_cast<uint32_t>(size)));
  require(kesh::format::encodedSize(program) != size || std::memcmp(rebuilt.data(), data, size) == 0);
  return 0;
}
