// Text of the byte-difference listing shown when an output does not match its
// golden data. Stateless; safe from any thread.
#ifndef KESH_DRIVER_DIFF_LISTING_H_
#define KESH_DRIVER_DIFF_LISTING_H_

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

/// Characters writeDiffListing may touch for `size` bytes (the text plus slack).
constexpr size_t diffListingCapacity(size_t size) { return size * 4 + 8; }

/// Writes to `out` one lower-case, unpadded hex value per byte of
/// result XOR golden over `size` bytes, the first byte starting a line: each
/// value is followed by a blank, every 16th by a newline and every other 4th by
/// a second blank; no newline follows a last line shorter than 16 values.
/// `out` must hold diffListingCapacity(size) characters; returns the text's end.
char* writeDiffListing(char* out, const uint8_t* result, const uint8_t* golden, size_t size);

/// Writes `header` and then the listing of writeDiffListing to `sink`,
/// formatted a few thousand lines at a time into one small reused buffer.
void printDiffListing(std::ostream& sink, const std::string& header, const uint8_t* result,
                      const uint8_t* golden, size_t size);

/// True if the `size` bytes at `result` and `golden` are equal (or `size` is
/// 0); otherwise prints `header` and the listing to `sink` and returns false.
/// Reads the bytes where they are: no copy of either side is made.
bool matchesOrListsDiff(std::ostream& sink, const std::string& header, const uint8_t* result,
                        const uint8_t* golden, size_t size);

#endif  // KESH_DRIVER_DIFF_LISTING_H_
