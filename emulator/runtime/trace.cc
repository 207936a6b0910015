#include "runtime/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kesh::runtime {

TraceSink& TraceSink::instance() {
  static TraceSink* sink = new TraceSink(std::getenv("KESH_EMU_TRACE"));  // never destroyed
  return *sink;
}

TraceSink::TraceSink(const char* setting) {
  if (setting == nullptr || *setting == '\0') return;
  if (std::strcmp(setting, "stderr") == 0) {
    fd_ = STDERR_FILENO;
    return;
  }
  fd_ = ::open(setting, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
}

void TraceSink::writeLine(const std::string& line) const {
  if (fd_ < 0) return;
  std::string whole = line + '\n';
  const char* data = whole.data();
  size_t left = whole.size();
  while (left > 0) {  // one write in practice; the loop only covers a short write
    ssize_t written = ::write(fd_, data, left);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    data += written;
    left -= static_cast<size_t>(written);
  }
}

std::string quoted(const char* text) {
  std::string out = "\"";
  for (const char* c = text; *c != '\0'; ++c) {
    unsigned char byte = static_cast<unsigned char>(*c);
    if (byte == '"' || byte == '\\') {
      out += '\\';
      out += static_cast<char>(byte);
    } else if (byte < 0x20 || byte > 0x7e) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
      out += escaped;
    } else {
      out += static_cast<char>(byte);
    }
  }
  out += '"';
  return out;
}

}  // namespace kesh::runtime
