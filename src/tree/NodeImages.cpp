#include "tree/NodeImages.h"

#include <limits>

#include "base/Error.h"

namespace quarl::tree {

quint16 NodeImages::NumberOf(const QString& imageKey) {
  const auto known = numbers_.constFind(imageKey);
  if (known != numbers_.constEnd()) return *known;
  QIcon icon = source_(imageKey);
  if (images_.size() > std::numeric_limits<quint16>::max()) throw Error(QStringLiteral("Too many images are in use."));
  const auto number = static_cast<quint16>(images_.size());
  images_.push_back({imageKey, std::move(icon)});
  numbers_.insert(imageKey, number);
  return number;
}

}  // namespace quarl::tree
