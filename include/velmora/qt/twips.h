// Measures of the surface are kept in twips; a screen pixel is 15 twips at 96 dots per
// inch, and Qt scales logical pixels on denser screens. Pure conversions between the
// toolkit's values and Qt's: any thread (QFont and QColor only as Qt allows them there).
#pragma once

#include <QColor>
#include <QFont>
#include <QRect>
#include <QString>

#include <velmora/base/text.h>
#include <velmora/toolkit/control.h>

namespace velmora::qt {

inline constexpr int kTwipsPerPixel = 15;

// Twips to logical pixels, rounded to the nearest, halves away from zero.
constexpr int toPixels(int twips) {
  return (twips + (twips >= 0 ? kTwipsPerPixel / 2 : -kTwipsPerPixel / 2)) / kTwipsPerPixel;
}

// A control's place and size in logical pixels.
inline QRect toPixels(const toolkit::Geometry& g) {
  return {toPixels(g.left), toPixels(g.top), toPixels(g.width), toPixels(g.height)};
}

// The toolkit's UTF-16 text and Qt's, both ways, unchanged (no normalisation).
inline QString toQString(TextView text) {
  return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

inline Text fromQString(const QString& text) {
  return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<size_t>(text.size())};
}

inline QColor toQColor(const toolkit::Rgb& rgb) {
  return {rgb.red, rgb.green, rgb.blue};
}

// The face, size in points and weight a control asks for; fontconfig may substitute.
inline QFont toQFont(const toolkit::FontSpec& wanted) {
  QFont font(QString::fromStdString(wanted.family));
  font.setPointSizeF(wanted.points);
  font.setBold(wanted.bold);
  return font;
}

}  // namespace velmora::qt
