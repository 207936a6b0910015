// Names of parameterised test cases, made from a case's own label so that they
// read well and stay the same from build to build. Stateless; safe from any thread.
#ifndef KESH_TESTING_TEST_NAME_H_
#define KESH_TESTING_TEST_NAME_H_

#include <string>

namespace kesh::testing {

/// `label` as a test name: letters and digits kept, anything else an underscore
/// ("keshMapMem@3" becomes "keshMapMem_3"); "_" for an empty label.
std::string testName(const std::string& label);

}  // namespace kesh::testing

#endif  // KESH_TESTING_TEST_NAME_H_
