#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

namespace quarl::ui {

/// Icons that read their pictures when they are first drawn, so that making one costs nothing, and whose disabled form
/// is grey and faint on light and on dark ground alike. An icon without a picture is null, which is told without
/// reading any.

/// The icon of a picture of the program: ":/quarl/pictures/<size>/<name>.png" in the size that fits best.
QIcon PictureIcon(const QString& name);
/// A picture of the program that has only one size, ":/quarl/pictures/<name>.png", as sharp as a screen of this ratio
/// can show it. Null when it is missing.
QPixmap LargePicture(const QString& name, qreal devicePixelRatio);
/// The icon of one picture of any size; it is made smaller where it does not fit, never larger.
QIcon PictureIcon(const QPixmap& picture);
/// The greyed variant of an icon: grey in every mode.
QIcon GreyedIcon(const QIcon& icon);
/// Draws `greyed` where it is disabled, else `normal`.
QIcon WithDisabled(const QIcon& normal, const QIcon& greyed);

/// The picture without its colours and with two fifths of its opacity; the device pixel ratio is kept.
QPixmap Greyed(const QPixmap& picture);

}  // namespace quarl::ui
