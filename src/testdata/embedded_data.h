// The built-in test data carried in the executable: for every datum one byte
// array and one 32-bit length word, generated at build time from the files of
// data/default_cases/ (file "x.bin" gives `x` and `x_len`). The arrays are
// never written, so any thread may read them at any time.
#ifndef KESH_TESTDATA_EMBEDDED_DATA_H_
#define KESH_TESTDATA_EMBEDDED_DATA_H_

#include <cstdint>

/// Declares the array `name` and its byte length `name_len`.
#define KESH_EMBEDDED_DATUM(name) \
  extern const uint8_t name[];    \
  extern const uint32_t name##_len;

extern "C" {
KESH_EMBEDDED_DATUM(case0_pattern)
KESH_EMBEDDED_DATUM(case0_in_auto_buf_name_0)
KESH_EMBEDDED_DATUM(case0_in_auto_buf_name_1)
KESH_EMBEDDED_DATUM(case0_in_auto_buf_name_2)
KESH_EMBEDDED_DATUM(case0_golden_auto_buf_name_0)
KESH_EMBEDDED_DATUM(case0_golden_auto_buf_name_1)
KESH_EMBEDDED_DATUM(case0_golden_auto_buf_name_2)

KESH_EMBEDDED_DATUM(case1_pattern)
KESH_EMBEDDED_DATUM(case1_in_auto_buf_name_0)
KESH_EMBEDDED_DATUM(case1_in_auto_buf_name_1)
KESH_EMBEDDED_DATUM(case1_in_auto_buf_name_2)
KESH_EMBEDDED_DATUM(case1_golden_auto_buf_name_0)
KESH_EMBEDDED_DATUM(case1_golden_auto_buf_name_1)
KESH_EMBEDDED_DATUM(case1_golden_auto_buf_name_2)

KESH_EMBEDDED_DATUM(case2_pattern)
KESH_EMBEDDED_DATUM(case2_in_auto_buf_name_0)
KESH_EMBEDDED_DATUM(case2_in_auto_buf_name_1)
KESH_EMBEDDED_DATUM(case2_in_auto_buf_name_2)
KESH_EMBEDDED_DATUM(case2_golden_auto_buf_name_0)
KESH_EMBEDDED_DATUM(case2_golden_auto_buf_name_1)
KESH_EMBEDDED_DATUM(case2_golden_auto_buf_name_2)

KESH_EMBEDDED_DATUM(case3_pattern)
KESH_EMBEDDED_DATUM(case3_in_auto_buf_name_0)
KESH_EMBEDDED_DATUM(case3_in_auto_buf_name_1)
KESH_EMBEDDED_DATUM(case3_in_auto_buf_name_2)
KESH_EMBEDDED_DATUM(case3_golden_auto_buf_name_0)
KESH_EMBEDDED_DATUM(case3_golden_auto_buf_name_1)
KESH_EMBEDDED_DATUM(case3_golden_auto_buf_name_2)

KESH_EMBEDDED_DATUM(case4_pattern)
KESH_EMBEDDED_DATUM(case4_in_GI_65540)
KESH_EMBEDDED_DATUM(case4_golden_GO_65544)

KESH_EMBEDDED_DATUM(case5_pattern)
KESH_EMBEDDED_DATUM(case5_in_GI_65542)
KESH_EMBEDDED_DATUM(case5_in_GO_65548)
KESH_EMBEDDED_DATUM(case5_golden_GI_65542)
KESH_EMBEDDED_DATUM(case5_golden_GO_65548)
}

#endif  // KESH_TESTDATA_EMBEDDED_DATA_H_
