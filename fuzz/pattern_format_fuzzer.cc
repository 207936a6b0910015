// Decodes arbitrary bytes; the library must accept exactly what the reader
// accepts. An accepted pattern must answer every argument query and be
// destroyed cleanly; it is run when its buffers are small (the executor trusts
// the reader's bounds checks), then disassembled and assembled again, which
// must reproduce its bytes.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "format/reader.h"
#include "format/writer.h"
#include "kernels/executor.h"
#include "kesh/kesh_pattern.h"
#include "pattern_asm/text_parser.h"
#include "pattern_asm/text_printer.h"

namespace {

using kesh::format::Program;

// Runs the program over argument buffers of exactly their declared sizes, so
// that the sanitizer sees any access past them.
void execute(const Program& program) {
  uint64_t total = 0;
  for (const auto& arg : program.args) total += arg.size;
  for (uint32_t size : program.internalSizes) total += size;
  if (total > 64 * 1024) return;
  std::vector<std::vector<uint8_t>> buffers;
  std::vector<kesh::kernels::BufferView> views;
  buffers.reserve(program.args.size());
  for (const auto& arg : program.args) {
    buffers.emplace_back(arg.size, static_cast<uint8_t>(arg.index * 37 + 11));
    views.push_back({buffers.back().data(), buffers.back().size()});
  }
  kesh::kernels::executeProgram(program, views);
}

void createThroughLibrary(const uint8_t* data, size_t size, bool valid) {
  static _kesh_player* const player = keshCreatePlayer("fuzz");
  _pattern* pattern = keshCreatePattern(player, data, static_cast<uint32_t>(size), "fuzz");
  if ((pattern != nullptr) != valid) std::abort();
  if (pattern == nullptr) return;
  std::vector<uint8_t> buffer;
  for (int type = PATTERN_ARG_INFO_INDEX; type <= PATTERN_ARG_INFO_SIZE; ++type) {
    uint32_t infoSize = 0;
    const auto infoType = static_cast<pattern_arg_info_type>(type);
    if (keshGetPatternArgInfoSize(pattern, infoType, &infoSize) != 0) std::abort();
    buffer.assign(infoSize, 0xA5);
    if (infoSize != 0 && keshGetPatternArgInfo(pattern, infoType, buffer.data(), infoSize) != 0) std::abort();
  }
  if (keshDestroyPattern(pattern) != 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Program program, again;
  const bool valid = size <= UINT32_MAX && kesh::format::decodePattern(data, size, &program, nullptr);
  if (size <= UINT32_MAX) createThroughLibrary(data, size, valid);
  if (!valid) return 0;
  execute(program);
  const std::string text = kesh::pattern_text::formatPatternText(program);
  kesh::pattern_text::TextError error;
  if (!kesh::pattern_text::parsePatternText(text, &again, &error)) std::abort();
  const std::vector<uint8_t> rebuilt = kesh::format::encodePattern(again, static_cast<uint32_t>(size));
  if (rebuilt != kesh::format::encodePattern(program, static_cast<uint32_t>(size))) std::abort();
  // Without padding the re-assembled binary is the input itself.
  if (kesh::format::encodedSize(program) == size && std::memcmp(rebuilt.data(), data, size) != 0) std::abort();
  return 0;
}
