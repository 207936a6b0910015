// Decodes arbitrary bytes; the library must accept exactly what the reader
// accepts. An accepted pattern must answer every argument query and be
// destroyed cleanly; it is run when its buffers are small (the executor trusts
// the reader's bounds checks), then disassembled and assembled again, which
// must reproduce its bytes.
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

namespace {

using kesh::format::Program;

void require(bool holds) {
  if (!holds) std::abort();
}

// Runs the program over argument buffers of exactly their declared sizes, so
// that the sanitizer sees any access past them.
void execute(const Program& program) {
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

void createThroughLibrary(const uint8_t* data, size_t size, bool valid) {
  static _kesh_player* const player = keshCreatePlayer("fuzz");
  _pattern* pattern = keshCreatePattern(player, data, static_cast<uint32_t>(size), "fuzz");
  require((pattern != nullptr) == valid);
  if (pattern == nullptr) return;
  for (int type = PATTERN_ARG_INFO_INDEX; type <= PATTERN_ARG_INFO_SIZE; ++type) {
    uint32_t infoSize = 0;
    const auto infoType = static_cast<pattern_arg_info_type>(type);
    require(keshGetPatternArgInfoSize(pattern, infoType, &infoSize) == 0);
    std::vector<uint8_t> info(infoSize, 0xA5);
    require(infoSize == 0 || keshGetPatternArgInfo(pattern, infoType, info.data(), infoSize) == 0);
  }
  require(keshDestroyPattern(pattern) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > UINT32_MAX) return 0;
  Program program, again;
  const bool valid = kesh::format::decodePattern(data, size, &program, nullptr);
  createThroughLibrary(data, size, valid);
  if (!valid) return 0;
  execute(program);
  kesh::pattern_text::TextError error;
  require(kesh::pattern_text::parsePatternText(kesh::pattern_text::formatPatternText(program), &again, &error));
  const std::vector<uint8_t> rebuilt = kesh::format::encodePattern(again, static_cast<uint32_t>(size));
  require(rebuilt == kesh::format::encodePattern(program, static_cast<uint32_t>(size)));
  // Without padding the re-assembled binary is the input itself.
  require(kesh::format::encodedSize(program) != size || std::memcmp(rebuilt.data(), data, size) == 0);
  return 0;
}
