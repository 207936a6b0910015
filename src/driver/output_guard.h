// The tool's standard output, written through a stream buffer of its own so
// that a write that fails (a full disk, a reader that went away) ends the run
// at once with status 1 and one line naming the failure, instead of a run
// whose log was lost reporting a pass. Output that is written completely is
// byte for byte what the stream was given. Installed once, from the main
// thread, before anything is written; the tool writes from that thread only.
#ifndef KESH_DRIVER_OUTPUT_GUARD_H_
#define KESH_DRIVER_OUTPUT_GUARD_H_

/// Routes std::cout through a buffer that writes to descriptor 1; a failed
/// write ends the process with "kesh_player: write error: " and the reason.
void guardStandardOutput();

/// Writes out whatever standard output still holds; returns only when all of
/// it was written, otherwise ends the process like a failed write.
void flushStandardOutput();

/// Writes out what standard output holds without reporting a failure: for
/// paths that are already ending the process.
void flushStandardOutputQuietly();

#endif  // KESH_DRIVER_OUTPUT_GUARD_H_
