// Draws the picture of the select button: a black down arrow on light grey, pixel by
// pixel, so that it is the same on every screen and needs no image file installed.
#include "qt/select_arrow.h"

#include <array>

namespace velmora::qt {

namespace {
constexpr int kGrey = 0;
constexpr int kBlack = 1;
// The arrow stands on the middle column; it starts low enough that the whole arrow sits
// in the middle of the square.
constexpr int kColumn = 7;
constexpr int kFirstRow = 3;
constexpr std::array kRowWidths{1, 1, 1, 1, 1, 1, 5, 3, 1};
}  // namespace

QImage selectArrowImage() {
  QImage image(kArrowSize, kArrowSize, QImage::Format_Indexed8);
  image.setColorCount(256);
  image.setColor(kGrey, qRgb(192, 192, 192));
  image.setColor(kBlack, qRgb(0, 0, 0));
  for (int c = 2; c < 256; ++c) image.setColor(c, qRgb(c, c, c));
  image.fill(kGrey);
  int row = kFirstRow;
  for (const int width : kRowWidths) {
    const int half = width / 2;
    for (int x = kColumn - half; x <= kColumn + half; ++x) image.setPixel(x, row, kBlack);
    ++row;
  }
  return image;
}

}  // namespace velmora::qt
