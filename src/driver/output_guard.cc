#include "driver/output_guard.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <streambuf>
#include <string>

#include "common/fatal.h"

namespace {

constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;

// A buffer that hands full buffers and every flush to write(2). After the
// first failure it drops everything, so the fatal path (which flushes standard
// output again on its way out) cannot fail a second time.
class GuardedOutputBuffer : public std::streambuf {
 public:
  GuardedOutputBuffer() { setp(buffer_, buffer_ + sizeof buffer_); }

  // Writes the buffered bytes; false (with errno set) when they could not be.
  bool drain() {
    const bool written = failed_ || writeAll(pbase(), static_cast<size_t>(pptr() - pbase()));
    setp(buffer_, buffer_ + sizeof buffer_);
    return written;
  }

  // Marks the stream failed: nothing more is written.
  void abandon() {
    failed_ = true;
    setp(buffer_, buffer_ + sizeof buffer_);
  }

  // Set once the process is ending: a failure then cannot go through exit() again.
  bool exiting = false;

 protected:
  int_type overflow(int_type c) override {
    if (!drainOrFail()) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(c);
      pbump(1);
    }
    return traits_type::not_eof(c);
  }

  std::streamsize xsputn(const char* text, std::streamsize count) override {
    const auto size = static_cast<size_t>(count);
    if (size <= static_cast<size_t>(epptr() - pptr())) {
      std::memcpy(pptr(), text, size);
      pbump(static_cast<int>(size));
      return count;
    }
    // Large writes (a long diff listing) go straight out after what is buffered.
    if (!drainOrFail()) return 0;
    if (!failed_ && !writeAll(text, size)) reportFailure();
    return count;
  }

  int sync() override { return drainOrFail() ? 0 : -1; }

 private:
  bool drainOrFail() {
    if (drain()) return true;
    reportFailure();
    return false;
  }

  // Ends the process naming the failed write; errno holds the reason.
  void reportFailure() {
    const int error = errno;
    abandon();
    if (!exiting) kesh::fatalError(std::string("kesh_player: write error: ") + std::strerror(error));
    // Already inside exit(): say so without allocating and end here.
    const char* reason = std::strerror(error);
    const char prefix[] = "kesh_player: write error: ";
    ssize_t ignored = write(kStandardError, prefix, sizeof prefix - 1);
    ignored = write(kStandardError, reason, std::strlen(reason));
    ignored = write(kStandardError, "\n", 1);
    (void)ignored;
    _exit(1);
  }

  static bool writeAll(const char* bytes, size_t size) {
    while (size > 0) {
      const ssize_t written = write(kStandardOutput, bytes, size);
      if (written > 0) {
        bytes += written;
        size -= static_cast<size_t>(written);
      } else if (written < 0 && errno == EAGAIN) {
        pollfd ready = {kStandardOutput, POLLOUT, 0};  // a non-blocking descriptor: wait, then retry
        if (poll(&ready, 1, -1) < 0 && errno != EINTR) return false;
      } else if (written < 0 && errno != EINTR) {
        return false;
      } else if (written == 0) {
        errno = EIO;
        return false;
      }
    }
    return true;
  }

  char buffer_[64 * 1024];
  bool failed_ = false;
};

// Never destroyed: standard output is flushed once more while the process
// ends, after every static object of this file would be gone.
alignas(GuardedOutputBuffer) unsigned char bufferStorage[sizeof(GuardedOutputBuffer)];
GuardedOutputBuffer* buffer = nullptr;

void markExiting() {
  if (buffer != nullptr) buffer->exiting = true;
}

}  // namespace

void guardStandardOutput() {
  if (buffer != nullptr) return;
  std::cout.flush();
  buffer = new (bufferStorage) GuardedOutputBuffer();
  std::cout.rdbuf(buffer);
  // Registered after the standard streams were set up, so this runs before
  // their last flush at exit.
  std::atexit(markExiting);
}

void flushStandardOutput() {
  std::cout.flush();
}

void flushStandardOutputQuietly() {
  if (buffer != nullptr && !buffer->drain()) buffer->abandon();
}
