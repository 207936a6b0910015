#include "pattern_asm/arg_table.h"

#include <gtest/gtest.h>

namespace kesh::pattern_text {
namespace {

TEST(ArgTableTest, AlignsColumnsToTheirWidestCell) {
  format::Program program;
  program.args = {{12, 3072, false, "input_image"}, {3, 4, true, "s"}};
  EXPECT_EQ(formatArgTable(program),
            "POS  INDEX  NAME         SIZE  NOALLOC\n"
            "0    12     input_image  3072  no\n"
            "1    3      s            4     yes\n");
  EXPECT_EQ(formatArgTable(format::Program{}), "POS  INDEX  NAME  SIZE  NOALLOC\n");
}

}  // namespace
}  // namespace kesh::pattern_text
