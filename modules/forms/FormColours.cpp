#include "forms/FormColours.h"

namespace quarl::forms {
namespace {

bool IsDark(const QPalette& palette) {
  return palette.color(QPalette::Window).lightness() < 128;
}

}  // namespace

QColor ErrorColour(const QPalette& palette) {
  return IsDark(palette) ? QColor(0xff, 0x9c, 0x92) : QColor(0xb3, 0x26, 0x1e);
}

QColor NoteGround(const QPalette& palette) {
  return IsDark(palette) ? QColor(0x52, 0x45, 0x1c) : QColor(0xff, 0xf1, 0xc2);
}

QColor QuietColour(const QPalette& palette) {
  return IsDark(palette) ? QColor(0xb0, 0xb5, 0xbc) : QColor(0x5a, 0x60, 0x68);
}

void SetTextColour(QWidget& widget, const QColor& colour) {
  QPalette palette = widget.palette();
  for (const auto group : {QPalette::Active, QPalette::Inactive}) palette.setColor(group, QPalette::WindowText, colour);
  widget.setPalette(palette);
}

}  // namespace quarl::forms
