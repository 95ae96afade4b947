#pragma once

#include <QHash>
#include <QIcon>
#include <QString>
#include <functional>
#include <vector>

namespace quarl::tree {

/// Gives the icon of an image key. Throws Error when there is no such image.
using IconSource = std::function<QIcon(const QString& imageKey)>;

/// The images in use, each under a small number, so that a node or row needs two bytes for its own. An image is asked
/// for once, when it is first used.
class NodeImages {
 public:
  explicit NodeImages(IconSource source) : source_(std::move(source)) {}
  /// Throws Error for a key that names no image.
  quint16 NumberOf(const QString& imageKey);
  const QIcon& Icon(quint16 number) const { return images_[number].icon; }
  const QString& Key(quint16 number) const { return images_[number].key; }

 private:
  struct Image {
    QString key;
    QIcon icon;
  };
  IconSource source_;
  std::vector<Image> images_;
  QHash<QString, quint16> numbers_;
};

}  // namespace quarl::tree
