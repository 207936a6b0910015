#include "driver/diff_listing.h"

#include <array>
#include <cstring>
#include <memory>

namespace {

// The text of two consecutive values ("h h " up to "hh hh "), padded with
// blanks to seven characters, and its length. Each pair is stored as all
// eight bytes and the cursor steps by the length (plus one, past a padding
// blank, at the end of a group of four): the next store overwrites the rest.
// A line's eight steps are summed apart from its stores, so neither a branch
// nor a long dependency chain depends on the data.
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

// Two bytes read as one 16-bit word in the machine's own order: the table's index.
inline uint16_t pairIndex(const uint8_t* bytes) {
  uint16_t index;
  std::memcpy(&index, bytes, sizeof(index));
  return index;
}

// The index of the `pair`-th byte pair of a 64-bit word loaded from memory.
inline unsigned pairAt(uint64_t word, unsigned pair) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  return static_cast<unsigned>(word >> (48 - 16 * pair)) & 0xffffu;
#else
  return static_cast<unsigned>(word >> (16 * pair)) & 0xffffu;
#endif
}

struct PairTable {
  std::array<PairText, 65536> pairs{};
  PairTable() {
    for (unsigned first = 0; first < 256; ++first) {
      for (unsigned second = 0; second < 256; ++second) {
        const uint8_t bytes[2] = {static_cast<uint8_t>(first), static_cast<uint8_t>(second)};
        PairText& pair = pairs[pairIndex(bytes)];
        std::memset(pair.text, ' ', sizeof(pair.text));
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

// Lays out the eight values of `diff`, two groups of four, each closed by its
// second blank; returns the end.
inline char* putEight(char* out, const PairTable& table, uint64_t diff) {
  const PairText& p0 = table.pairs[pairAt(diff, 0)];
  const PairText& p1 = table.pairs[pairAt(diff, 1)];
  const PairText& p2 = table.pairs[pairAt(diff, 2)];
  const PairText& p3 = table.pairs[pairAt(diff, 3)];
  const size_t at1 = p0.length;
  const size_t at2 = at1 + p1.length + 1u;
  const size_t at3 = at2 + p2.length;
  std::memcpy(out, &p0, sizeof(PairText));
  std::memcpy(out + at1, &p1, sizeof(PairText));
  std::memcpy(out + at2, &p2, sizeof(PairText));
  std::memcpy(out + at3, &p3, sizeof(PairText));
  return out + at3 + p3.length + 1u;
}

}  // namespace

char* writeDiffListing(char* out, const uint8_t* result, const uint8_t* golden, size_t size) {
  size_t k = 0;
  if (size >= 16) {
    const PairTable& table = pairTable();
    for (; k + 16 <= size; k += 16) {
      uint64_t r[2];
      uint64_t g[2];
      std::memcpy(r, result + k, sizeof(r));
      std::memcpy(g, golden + k, sizeof(g));
      out = putEight(putEight(out, table, r[0] ^ g[0]), table, r[1] ^ g[1]);
      out[-1] = '\n';
    }
  }
  for (size_t column = 1; k < size; ++k, ++column) {
    out = putValue(out, static_cast<unsigned>(result[k] ^ golden[k]));
    if (column % 4 == 0) *out++ = ' ';
  }
  return out;
}

void printDiffListing(std::ostream& sink, const std::string& header, const uint8_t* result,
                      const uint8_t* golden, size_t size) {
  // Whole lines per chunk, so the chunks' listings join into the whole one.
  // A small buffer reused chunk after chunk stays in the cache and costs no
  // fresh pages, which a buffer for a multi-megabyte listing would fault in
  // one by one; each chunk still reaches the system in one write.
  constexpr size_t kChunkBytes = 16 * 1024;
  std::unique_ptr<char[]> text(new char[header.size() + diffListingCapacity(kChunkBytes)]);
  std::memcpy(text.get(), header.data(), header.size());
  char* start = text.get() + header.size();
  size_t done = 0;
  do {
    const size_t chunk = size - done < kChunkBytes ? size - done : kChunkBytes;
    const char* end = writeDiffListing(start, result + done, golden + done, chunk);
    sink.write(text.get(), end - text.get());
    start = text.get();
    done += chunk;
  } while (done < size);
}

bool matchesOrListsDiff(std::ostream& sink, const std::string& header, const uint8_t* result,
                        const uint8_t* golden, size_t size) {
  if (size == 0 || std::memcmp(result, golden, size) == 0) return true;
  printDiffListing(sink, header, result, golden, size);
  return false;
}
