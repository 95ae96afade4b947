#pragma once

#include <QHash>
#include <QIcon>
#include <QString>

namespace quarl::ui {

/// Images by key; keys are case-sensitive and unique. User-interface thread only.
class ImageList {
 public:
  /// Throws Error for a null icon and for a key that is empty or already there.
  void Add(const QString& key, const QIcon& icon);
  /// Valid until the list changes. Throws Error when there is no such image.
  const QIcon& Icon(const QString& key) const;
  bool Contains(const QString& key) const { return icons_.contains(key); }
  qsizetype Count() const { return icons_.size(); }

 private:
  QHash<QString, QIcon> icons_;
};

}  // namespace quarl::ui
