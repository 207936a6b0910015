#include "test_picture.h"

#include <cstddef>


#include "reference_ops.h"
#include "xorshift.h"

namespace kesh::gencases {
namespace {

// Shapes are placed in thousandths of the picture so any size works.
struct Canvas {
  uint32_t width;
  uint32_t height;
  int64_t px(int64_t thousandths) const { return thousandths * width / 1000; }
  int64_t py(int64_t thousandths) const { return thousandths * height / 1000; }
};

bool inDisc(int64_t x, int64_t y, int64_t cx, int64_t cy, int64_t r) {
  return (x - cx) * (x - cx) + (y - cy) * (y - cy) <= r * r;
}

bool inBox(int64_t x, int64_t y, int64_t x0, int64_t y0, int64_t x1, int64_t y1) {
  return x >= x0 && x < x1 && y >= y0 && y < y1;
}

// The value of one pixel before noise: later shapes cover earlier ones.
int64_t scene(const Canvas& c, int64_t x, int64_t y) {
  int64_t value = 40 + x * 120 / c.width + y * 60 / c.height;  // diagonal background ramp
  if (inDisc(x, y, c.px(250), c.py(333), c.py(185))) value = 230 - (x - c.px(250)) / 8;  // shaded disc
  if (inDisc(x, y, c.px(750), c.py(280), c.py(167)) && !inDisc(x, y, c.px(750), c.py(280), c.py(130))) value = 20;
  if (inBox(x, y, c.px(104), c.py(648), c.px(365), c.py(926))) {
    value = inBox(x, y, c.px(156), c.py(722), c.px(313), c.py(852)) ? 200 : 90;  // frame
  }
  if (inBox(x, y, c.px(469), c.py(556), c.px(677), c.py(926))) {
    value = ((x / 25 + y / 25) % 2 == 0) ? 30 : 220;  // checkerboard
  }
  const int64_t apexX = c.px(872);
  const int64_t top = c.py(602);
  const int64_t base = c.py(944);
  if (y >= top && y < base && absolute(x - apexX) * (base - top) <= (y - top) * c.px(91)) value = 170;  // triangle
  if (inBox(x, y, c.px(521), c.py(37), c.px(990), c.py(130))) {
    const int64_t stripe = 1 + (x - c.px(521)) / 90;  // stripes widen to the right
    value = ((x - c.px(521)) / stripe) % 2 == 0 ? 210 : 60;
  }
  if (absolute(x - y - c.px(104)) <= 1) value = 250;  // thin diagonal line
  if (absolute(y - c.py(500)) <= 3 && x < c.px(450)) value = 10;  // thick horizontal line
  return value;
}

}  // namespace

std::vector<uint8_t> makeTestPicture(uint32_t width, uint32_t height) {
  const Canvas canvas{width, height};
  Xorshift64 rng(0x50494354u);
  std::vector<uint8_t> picture(size_t{width} * height);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const int64_t value = scene(canvas, x, y) + rng.uniform(-3, 3);
      picture[size_t{y} * width + x] = static_cast<uint8_t>(saturate(value, 0, 255));
    }
  }
  return picture;
}

}  // namespace kesh::gencases
