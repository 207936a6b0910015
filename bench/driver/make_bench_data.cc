// Writes the data of the end-to-end benchmark into a folder: an int8 matrix
// product pattern heavy enough to keep one core busy, its zero inputs and
// golden, and the command files of one 63-job group and of 63 groups.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "test_patterns.h"

namespace {

constexpr uint32_t kSide = 192;
constexpr int kJobs = 63;

bool writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  return file.good();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: " << argv[0] << " FOLDER\n";
    return 2;
  }
  const std::string dir = argv[1];
  const std::vector<uint8_t> pattern = kesh::testing::matMulPattern(kSide, kSide, kSide);
  // Zero operands give a zero product, so the golden is zero as well.
  const std::string zeros(kSide * kSide, '\0');
  const std::string set = "-f " + dir + "/matmul.bin -i " + dir + "/a.bin -i " + dir + "/b.bin -o " + dir + "/c.bin\n";
  std::string groups;
  for (int i = 0; i < kJobs; ++i) groups += set;
  const bool written = writeFile(dir + "/matmul.bin", std::string(pattern.begin(), pattern.end())) &&
                       writeFile(dir + "/a.bin", zeros) && writeFile(dir + "/b.bin", zeros) &&
                       writeFile(dir + "/c.bin", zeros) && writeFile(dir + "/groups.txt", groups) &&
                       writeFile(dir + "/one_group.txt", set.substr(0, set.size() - 1) + " -l 63\n");
  if (!written) std::cerr << "cannot write into " << dir << "\n";
  return written ? 0 : 1;
}
