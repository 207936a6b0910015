#include "format/writer.h"

#include <gtest/gtest.h>

#include "format/op_builder.h"

namespace kesh::format {
namespace {

TEST(WriterTest, LaysOutHeaderTablesOpsConstantsAndZeroPaddingInOrder) {
  Program program;
  program.args = {{5, 0x1234, true, "img"}};
  program.internalSizes = {0xABCD};
  program.ops = {makeOp(Opcode::kFill, {{"dst", BufferAt{bufferRef(Space::kInternal, 0), 2}}, {"length", 3}, {"value", 0xFF}})};
  program.constData = {0xDE, 0xAD};
  // Header, argument (index, size, flags, 36-byte name), internal size,
  // operation (opcode and 15 parameters), constant bytes.
  std::vector<uint8_t> expected = {'K', 'P', 'A', 'T', 1, 0, 32, 0, 150, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0,
                                   1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 5, 0, 0, 0, 0x34, 0x12, 0, 0,
                                   1, 0, 0, 0, 'i', 'm', 'g'};
  expected.resize(80);
  for (uint8_t b : {0xCD, 0xAB, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 2, 0, 0, 0, 3, 0, 0, 0, 0xFF}) expected.push_back(b);
  expected.resize(148);
  expected.insert(expected.end(), {0xDE, 0xAD});
  EXPECT_EQ(encodePattern(program), expected);
  EXPECT_TRUE(encodePattern(program, 149).empty()) << "a pad below the size is refused";
  expected[8] = 160;  // the total size counts the zero padding
  expected.resize(160, 0);
  EXPECT_EQ(encodePattern(program, 160), expected);
}

}  // namespace
}  // namespace kesh::format
