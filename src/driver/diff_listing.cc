#include "driver/diff_listing.h"

#include <array>
#include <cstring>
#include <memory>

namespace {

// The text of two consecutive values ("h h " up to "hh hh "), padded to eight
// characters: a listing line is eight fixed-size copies, each cursor step
// being the pair's real length. No branch depends on the data, which keeps a
// multi-megabyte listing within a small multiple of the cost of writing it.
struct PairText {
  char text[7];
  uint8_t length;
};

const char kHexDigits[] = "0123456789abcdef";

char* putValue(char* out, unsigned value) {
  if (value >= 16) *out++ = kHexDigits[value >> 4];
  *out++ = kHexDigits[value & 15];
  *out++ = ' ';
  return out;
}

// Two bytes read as one 16-bit word in the machine's own order; the table is
// indexed the same way, so no byte order is assumed.
inline uint16_t pairIndex(const uint8_t* bytes) {
  uint16_t index;
  std::memcpy(&index, bytes, sizeof(index));
  return index;
}

struct PairTable {
  std::array<PairText, 65536> pairs{};
  PairTable() {
    for (unsigned first = 0; first < 256; ++first) {
      for (unsigned second = 0; second < 256; ++second) {
        const uint8_t bytes[2] = {static_cast<uint8_t>(first), static_cast<uint8_t>(second)};
        PairText& pair = pairs[pairIndex(bytes)];
        char* end = putValue(putValue(pair.text, first), second);
        pair.length = static_cast<uint8_t>(end - pair.text);
      }
    }
  }
};

// Built on the first mismatch only; equal buffers never pay for it.
const PairTable& pairTable() {
  static const PairTable table;
  return table;
}

// The XOR of one line's 16 bytes, computed a word at a time into `line`.
inline const uint8_t* lineDiff(const uint8_t* result, const uint8_t* golden, uint8_t* line) {
  uint64_t r[2];
  uint64_t g[2];
  std::memcpy(r, result, sizeof(r));
  std::memcpy(g, golden, sizeof(g));
  r[0] ^= g[0];
  r[1] ^= g[1];
  std::memcpy(line, r, sizeof(r));
  return line;
}

inline char* putPair(char* out, const PairTable& table, const uint8_t* diff, size_t i) {
  const PairText& pair = table.pairs[pairIndex(diff + i)];
  std::memcpy(out, &pair, sizeof(pair));
  return out + pair.length;
}

// Input bytes formatted per write to the sink: whole lines. Every write costs
// a system call, so pieces are large; the text buffer stays near a megabyte.
constexpr size_t kPieceBytes = 256 * 1024;

}  // namespace

char* writeDiffListing(char* out, const uint8_t* result, const uint8_t* golden, size_t size) {
  size_t k = 0;
  if (size >= 16) {
    const PairTable& table = pairTable();
    uint8_t line[16];
    for (; k + 16 <= size; k += 16) {
      const uint8_t* d = lineDiff(result + k, golden + k, line);
      out = putPair(putPair(out, table, d, 0), table, d, 2);
      *out++ = ' ';
      out = putPair(putPair(out, table, d, 4), table, d, 6);
      *out++ = ' ';
      out = putPair(putPair(out, table, d, 8), table, d, 10);
      *out++ = ' ';
      out = putPair(putPair(out, table, d, 12), table, d, 14);
      *out++ = '\n';
    }
  }
  for (size_t column = 1; k < size; ++k, ++column) {
    out = putValue(out, static_cast<unsigned>(result[k] ^ golden[k]));
    if (column % 4 == 0) *out++ = ' ';
  }
  return out;
}

void appendDiffListing(std::string& text, const uint8_t* result, const uint8_t* golden, size_t size) {
  const size_t start = text.size();
  text.resize(start + diffListingCapacity(size));
  char* end = writeDiffListing(&text[start], result, golden, size);
  text.resize(static_cast<size_t>(end - text.data()));
}

void printDiffListing(std::ostream& sink, const uint8_t* result, const uint8_t* golden, size_t size) {
  const size_t pieceBytes = size < kPieceBytes ? size : kPieceBytes;
  std::unique_ptr<char[]> buffer(new char[diffListingCapacity(pieceBytes)]);
  for (size_t done = 0; done < size; done += pieceBytes) {
    const size_t count = size - done < pieceBytes ? size - done : pieceBytes;
    const char* end = writeDiffListing(buffer.get(), result + done, golden + done, count);
    sink.write(buffer.get(), end - buffer.get());
  }
}
