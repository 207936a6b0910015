// Writes the data of the end-to-end benchmark into a folder: an int8 matrix
// product pattern heavy enough to keep one core busy, its zero inputs and
// its golden, and the command files of one 63-job group and of 63 groups.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "test_patterns.h"

namespace {

constexpr uint32_t kSide = 192;
constexpr int kJobs = 63;

bool writeFile(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return file.good();
}

bool writeText(const std::string& path, const std::string& text) {
  return writeFile(path, std::vector<uint8_t>(text.begin(), text.end()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: " << argv[0] << " FOLDER\n";
    return 2;
  }
  const std::string dir = argv[1];
  const std::vector<uint8_t> zeros(kSide * kSide, 0);
  // Zero operands give a zero product, so the golden is zero as well.
  const std::string set = "-f " + dir + "/matmul.bin -i " + dir + "/a.bin -i " + dir + "/b.bin -o " + dir + "/c.bin";
  std::string oneGroupPerSet;
  for (int i = 0; i < kJobs; ++i) oneGroupPerSet += set + "\n";
  const bool written = writeFile(dir + "/matmul.bin", kesh::testing::matMulPattern(kSide, kSide, kSide)) &&
                       writeFile(dir + "/a.bin", zeros) && writeFile(dir + "/b.bin", zeros) &&
                       writeFile(dir + "/c.bin", zeros) &&
                       writeText(dir + "/one_group.txt", set + " -l " + std::to_string(kJobs) + "\n") &&
                       writeText(dir + "/groups.txt", oneGroupPerSet);
  if (!written) std::cerr << "cannot write into " << dir << "\n";
  return written ? 0 : 1;
}
