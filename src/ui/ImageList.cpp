#include "ui/ImageList.h"

#include <QPixmap>

#include "base/Error.h"

namespace quarl::ui {

void ImageList::Add(const QString& key, const QIcon& icon) {
  if (key.isEmpty()) throw Error(QStringLiteral("An image without a key cannot be added."));
  if (icons_.contains(key)) throw Error(QStringLiteral("The image \"%1\" is already there.").arg(key));
  if (icon.isNull()) throw Error(QStringLiteral("The image \"%1\" has no picture.").arg(key));
  icons_.insert(key, icon);
}

const QIcon& ImageList::Icon(const QString& key) const {
  const auto icon = icons_.constFind(key);
  if (icon == icons_.constEnd()) throw Error(QStringLiteral("There is no image \"%1\".").arg(key));
  return *icon;
}

}  // namespace quarl::ui
