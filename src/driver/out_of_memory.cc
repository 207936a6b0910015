#include "driver/out_of_memory.h"

#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

#include "driver/output_guard.h"

namespace {

pthread_t mainThread;

// Runs when operator new finds no memory, so it must not allocate: the line
// is a constant written with one system call.
void reportOutOfMemory() {
  static const char kLine[] = "kesh_player: out of memory\n";
  flushStandardOutputQuietly();
  ssize_t ignored = write(2, kLine, sizeof kLine - 1);
  (void)ignored;
  // exit() tears down the process's static objects, which only the main
  // thread may do while the library's workers run; a worker just ends it.
  if (pthread_equal(pthread_self(), mainThread)) std::exit(1);
  _exit(1);
}

}  // namespace

void failOnOutOfMemory() {
  mainThread = pthread_self();
  std::set_new_handler(reportOutOfMemory);
}
