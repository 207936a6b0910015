// The catalogue of the built-in cases: for each case number its pattern and
// its inputs and goldens, each bound to the argument name it is matched by.
// The data lives in the executable and is never written; thread-safe.
#ifndef KESH_TESTDATA_DEFAULT_CASES_H_
#define KESH_TESTDATA_DEFAULT_CASES_H_

#include <cstdint>
#include <vector>

namespace kesh::testdata {

/// Case numbers run from 0 to one less than this.
inline constexpr unsigned kDefaultCaseCount = 6;

/// Embedded bytes; `argName` is null for a pattern.
struct NamedDatum {
  const char* argName;      ///< the argument the datum binds to
  const uint8_t* bytes;     ///< first byte
  const uint32_t* length;   ///< its length in bytes
};

/// A built-in case: its pattern and its inputs and goldens in catalogue order.
struct DefaultCase {
  NamedDatum pattern;               ///< the pattern binary
  std::vector<NamedDatum> inputs;   ///< input data
  std::vector<NamedDatum> goldens;  ///< expected output data
};

/// The built-in case `caseNumber`, which must be below kDefaultCaseCount.
const DefaultCase& defaultCase(unsigned caseNumber);

}  // namespace kesh::testdata

#endif  // KESH_TESTDATA_DEFAULT_CASES_H_
