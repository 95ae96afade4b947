#pragma once

#include <QIcon>
#include <QModelIndex>
#include <QPixmap>
#include <QString>
#include <QStringList>

#include "base/Error.h"
#include "support/Text.h"
#include "tree/ObjectTreeModel.h"

namespace quarl::tree {

/// Icons for the fixed keys of tree and list, and for test and alert types 1 to 5.
inline QIcon TestIcon(const QString& key) {
  static const QStringList known = [] {
    QStringList keys{Q("iSERVERGROUP"), Q("iSERVER"), Q("iTEST"), Q("iALERT"), Q("iLOGS")};
    for (int i = 1; i <= 5; ++i) keys << Q("iTEST%1").arg(i) << Q("iALERT%1").arg(i);
    for (int i = 1; i <= 3; ++i) keys << Q("iTEST_STATE%1").arg(i) << Q("iSEVERITY%1").arg(i);
    return keys;
  }();
  if (!known.contains(key)) throw Error(Q("no image %1").arg(key));
  QPixmap pixmap(16, 16);
  pixmap.fill(Qt::darkCyan);
  return QIcon(pixmap);
}

/// The tree as text: a line a node, two blanks a level, "key text image", with a "+" at nodes that count as expanded.
inline QString Outline(const ObjectTreeModel& model, const QModelIndex& parent = {}, int level = 0) {
  QString outline;
  for (int row = 0; row < model.rowCount(parent); ++row) {
    const QModelIndex index = model.index(row, 0, parent);
    const QString key = model.KeyOf(index);
    outline += QString(level * 2, u' ') + key + u' ' + model.TextOf(key) + u' ' + model.ImageKeyOf(key) +
               (model.IsExpanded(key) ? Q(" +\n") : Q("\n"));
    outline += Outline(model, index, level + 1);
  }
  return outline;
}

}  // namespace quarl::tree
