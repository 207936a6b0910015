// A failed allocation anywhere in the tool is a fatal error like the others:
// one line on standard error and status 1, instead of an uncaught exception
// and an abort. Installed once from the main thread; the handler itself is
// safe from any thread.
#ifndef KESH_DRIVER_OUT_OF_MEMORY_H_
#define KESH_DRIVER_OUT_OF_MEMORY_H_

/// Makes every failed allocation end the process with "kesh_player: out of memory".
void failOnOutOfMemory();

#endif  // KESH_DRIVER_OUT_OF_MEMORY_H_
