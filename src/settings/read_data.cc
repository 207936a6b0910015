#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <ios>
#include <vector>

#include "common/fatal.h"
#include "settings/file_kind.h"
#include "settings/tester_setting.h"

namespace {

// Step for whatever follows the reported size.
constexpr std::size_t kTailChunk = 64 * 1024;

// The reported size, truncated to 32 bits like every length the tool keeps;
// 0 when the stream cannot tell (a pipe). Leaves the stream at its start.
int32_t reportedSize(std::ifstream& file) {
  int32_t size = 0;
  if (file.seekg(0, std::ios::end)) {
    const std::streamoff end = file.tellg();
    if (end > 0) size = static_cast<int32_t>(static_cast<uint32_t>(end));
  }
  file.clear();
  file.seekg(0, std::ios::beg);
  file.clear();
  return size;
}

// Reads up to `count` bytes onto the end of `bytes` in one request.
void append(std::ifstream& file, std::vector<uint8_t>& bytes, std::size_t count) {
  const std::size_t start = bytes.size();
  bytes.resize(start + count);
  file.read(reinterpret_cast<char*>(bytes.data() + start), static_cast<std::streamsize>(count));
  bytes.resize(start + static_cast<std::size_t>(file.gcount()));
}

// The reported size is read in one request; then reading goes on to the
// real end of the stream, since files under /proc report 0 and a file may
// grow while it is read. A failed read ends the data like the end of the stream.
void readToEnd(std::ifstream& file, std::vector<uint8_t>& bytes, std::size_t reported) {
  if (reported != 0) append(file, bytes, reported);
  while (file.peek() != std::ifstream::traits_type::eof()) append(file, bytes, kTailChunk);
}

}  // namespace

std::vector<uint8_t> TesterSetting::TestCommand::readData(const char* path) {
  std::ifstream file;
  // A directory opens as a stream on this platform but yields no bytes;
  // it is no more a data file than a missing one.
  if (!kesh::settings::isDirectory(path)) file.open(path, std::ios::in | std::ios::binary);
  if (!file.is_open()) kesh::fatalCannotOpen(path);
  file.unsetf(std::ios::skipws);

  const int32_t size = reportedSize(file);
  // A size beyond the signed 32-bit range cannot be reserved: like any
  // impossible reservation it aborts the process.
  if (size < 0) std::abort();
  std::vector<uint8_t> bytes;
  if (size != 0) bytes.reserve(static_cast<std::size_t>(size));
  readToEnd(file, bytes, static_cast<std::size_t>(size));
  return bytes;
}
