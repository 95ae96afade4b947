#pragma once

#include <QByteArrayView>

namespace quarl::plugins {

inline constexpr int kLargestIconSide = 1024;  ///< pixels

/// A module's picture as it stands in the file: a bitmap without its file header. Views into the file's bytes.
struct ModuleBitmap {
  int width = 0;   ///< 1 to kLargestIconSide pixels
  int height = 0;  ///< 1 to kLargestIconSide pixels, whichever row comes first
  int bitCount = 0;
  qsizetype pixelOffset = 0;  ///< where the pixels begin in the bytes
  QByteArrayView bytes;

  /// Looks the whole bitmap over: headers of 12, 40, 108 and 124 bytes; 1, 4, 8, 16, 24 and 32 bits a pixel; plain,
  /// run-length coded (4 and 8 bits) or with channel masks of up to 8 bits (16 and 32 bits); palette and pixels inside
  /// the bytes. Throws ModuleError for anything else.
  static ModuleBitmap Check(QByteArrayView bytes);
};

}  // namespace quarl::plugins
