// Decodes arbitrary bytes; any pattern the reader accepts is run when its
// buffers are small (the executor trusts the reader's bounds checks), then
// disassembled and assembled again, which must reproduce its bytes.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "format/reader.h"
#include "format/writer.h"
#include "kernels/executor.h"
#include "pattern_asm/text_parser.h"
#include "pattern_asm/text_printer.h"

namespace {

using kesh::format::Program;

constexpr uint64_t kMaxExecutedBytes = 64 * 1024;

// Runs the program over argument buffers of exactly their declared sizes, so
// that the sanitizer sees any access past them.
void execute(const Program& program) {
  uint64_t total = 0;
  for (const auto& arg : program.args) total += arg.size;
  for (uint32_t size : program.internalSizes) total += size;
  if (total > kMaxExecutedBytes) return;
  std::vector<std::vector<uint8_t>> buffers;
  std::vector<kesh::kernels::BufferView> views;
  buffers.reserve(program.args.size());
  for (const auto& arg : program.args) {
    buffers.emplace_back(arg.size, static_cast<uint8_t>(arg.index * 37 + 11));
    views.push_back({buffers.back().data(), buffers.back().size()});
  }
  kesh::kernels::executeProgram(program, views);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Program program;
  if (!kesh::format::decodePattern(data, size, &program, nullptr)) return 0;
  execute(program);
  const std::string text = kesh::pattern_text::formatPatternText(program);
  Program again;
  kesh::pattern_text::TextError error;
  if (!kesh::pattern_text::parsePatternText(text, &again, &error)) std::abort();
  const std::vector<uint8_t> rebuilt = kesh::format::encodePattern(again, static_cast<uint32_t>(size));
  if (rebuilt != kesh::format::encodePattern(program, static_cast<uint32_t>(size))) std::abort();
  // Without padding the re-assembled binary is the input itself.
  if (kesh::format::encodedSize(program) == size && std::memcmp(rebuilt.data(), data, size) != 0) std::abort();
  return 0;
}
