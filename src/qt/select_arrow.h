// The picture of Cmd_Select: a black down arrow on light grey, drawn in code.
#pragma once

#include <QImage>

namespace velmora::qt {

inline constexpr int kArrowSize = 16;

// 16 by 16, 256 colours: a stem of 6 rows one pixel wide, then rows of 5, 3 and 1
// pixels, on red, green and blue 192.
QImage selectArrowImage();

}  // namespace velmora::qt
