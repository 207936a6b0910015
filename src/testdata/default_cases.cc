#include "testdata/default_cases.h"

#include "testdata/embedded_data.h"

namespace kesh::testdata {

#define KESH_DATUM(arg, symbol) NamedDatum{arg, symbol, &symbol##_len}

// Cases 0 to 3 differ only in their symbol prefix.
#define KESH_MATMUL_CASE(n)                                                  \
  DefaultCase{KESH_DATUM(nullptr, case##n##_pattern),                        \
              {KESH_DATUM("auto_buf_name_0", case##n##_in_auto_buf_name_0),     \
               KESH_DATUM("auto_buf_name_1", case##n##_in_auto_buf_name_1),     \
               KESH_DATUM("auto_buf_name_2", case##n##_in_auto_buf_name_2)},    \
              {KESH_DATUM("auto_buf_name_0", case##n##_golden_auto_buf_name_0), \
               KESH_DATUM("auto_buf_name_1", case##n##_golden_auto_buf_name_1), \
               KESH_DATUM("auto_buf_name_2", case##n##_golden_auto_buf_name_2)}}

const DefaultCase& defaultCase(unsigned caseNumber) {
  static const DefaultCase kCases[kDefaultCaseCount] = {
      KESH_MATMUL_CASE(0),
      KESH_MATMUL_CASE(1),
      KESH_MATMUL_CASE(2),
      KESH_MATMUL_CASE(3),
      DefaultCase{KESH_DATUM(nullptr, case4_pattern),
                  {KESH_DATUM("GI_65540", case4_in_GI_65540)},
                  {KESH_DATUM("GO_65544", case4_golden_GO_65544)}},
      DefaultCase{KESH_DATUM(nullptr, case5_pattern),
                  {KESH_DATUM("GI_65542", case5_in_GI_65542), KESH_DATUM("GO_65548", case5_in_GO_65548)},
                  {KESH_DATUM("GI_65542", case5_golden_GI_65542), KESH_DATUM("GO_65548", case5_golden_GO_65548)}},
  };
  return kCases[caseNumber];
}

#undef KESH_MATMUL_CASE
#undef KESH_DATUM

}  // namespace kesh::testdata
