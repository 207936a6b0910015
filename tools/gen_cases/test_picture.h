// A synthetic 8-bit grey picture with the features an image filter should be
// checked on: gradients, hard and soft edges, thin lines, a fine-detail
// wedge, a checkerboard and a little noise. Stateless; safe from any thread.
#ifndef KESH_TOOLS_GEN_CASES_TEST_PICTURE_H_
#define KESH_TOOLS_GEN_CASES_TEST_PICTURE_H_

#include <cstdint>
#include <vector>

namespace kesh::gencases {

/// Returns a `width` x `height` row-major picture; the same for the same size.
std::vector<uint8_t> makeTestPicture(uint32_t width, uint32_t height);

}  // namespace kesh::gencases

#endif  // KESH_TOOLS_GEN_CASES_TEST_PICTURE_H_
