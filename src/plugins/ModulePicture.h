#pragma once

#include <QPixmap>

namespace quarl::plugins {

/// The picture that a module's file carries (its bitmap named "ICON"), in the size it is stored in; a null picture when
/// the file cannot be read, is no whole module or has no usable picture. Nothing of the file is run.
/// @param path a native path
QPixmap LoadModulePicture(const QString& path);

}  // namespace quarl::plugins
