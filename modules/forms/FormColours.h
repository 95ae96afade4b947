#pragma once

#include <QWidget>

namespace quarl::forms {

/// Colours beside the palette's, for light and dark.
QColor ErrorColour(const QPalette& palette);
QColor NoteGround(const QPalette& palette);
/// A text of less weight: help lines.
QColor QuietColour(const QPalette& palette);

void SetTextColour(QWidget& widget, const QColor& colour);

}  // namespace quarl::forms
