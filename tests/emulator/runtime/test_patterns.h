// The library tests' view of the shared sample patterns and API helpers.
#ifndef KESH_TESTS_EMULATOR_RUNTIME_TEST_PATTERNS_H_
#define KESH_TESTS_EMULATOR_RUNTIME_TEST_PATTERNS_H_

#include <vector>

#include "testing/pattern_calls.h"
#include "testing/sample_patterns.h"

namespace kesh::runtime::testing {

using ::kesh::testing::bindFilled;
using ::kesh::testing::buildGraph;
using ::kesh::testing::convPattern;
using ::kesh::testing::copyPattern;
using ::kesh::testing::execInfo;
using ::kesh::testing::loadPattern;
using ::kesh::testing::playAndWait;
using ::kesh::testing::scratchPattern;
using ::kesh::testing::singleNodeGraph;

}  // namespace kesh::runtime::testing

#endif  // KESH_TESTS_EMULATOR_RUNTIME_TEST_PATTERNS_H_
