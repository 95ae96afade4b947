#pragma once

#include <QByteArrayView>
#include <QStringView>
#include <optional>

#include "plugins/contract/ModuleImage.h"

namespace quarl::plugins {

inline constexpr quint32 kBitmapResource = 2;
inline constexpr quint32 kVersionResource = 16;

/// The resource tree of a module: type, name, language. One look-up follows one path of three directories, so that no
/// form of a hostile tree makes it long; each directory must lie inside the resources whole.
/// Of several languages the neutral one is taken, then 0409, then the lowest.
class ResourceTree {
 public:
  /// The image must outlive the tree.
  explicit ResourceTree(const ModuleImage& image) : image_(image) {}

  /// The data of a resource named by number; nothing when there is none. Throws ModuleError for a damaged tree.
  std::optional<QByteArrayView> Find(quint32 type, quint32 id) const;
  /// The same for a resource named by text, compared as stored.
  std::optional<QByteArrayView> Find(quint32 type, QStringView name) const;

 private:
  const ModuleImage& image_;
};

}  // namespace quarl::plugins
