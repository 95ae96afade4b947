#pragma once

#include <QPoint>
#include <QString>

#include "base/NodeKey.h"

namespace quarl::tree {

/// What tree and list need of the main window's commands. User-interface thread only; nothing here throws Error.
class CommandPort {
 public:
  virtual ~CommandPort() = default;
  /// Runs the remove command of a kind (group, server, test or alert), which asks for confirmation and acts on the
  /// selected key. Does nothing for other kinds.
  virtual void Remove(NodeKind kind) = 0;
  /// Shows a menu of the menu bar at a point of the screen.
  /// @param menu its name, "mGroup" and so on.
  virtual void PopUp(const QString& menu, const QPoint& globalPosition) = 0;
};

/// The name of the menu that goes with a node or row; empty where there is none (folders, the empty key).
QString MenuOf(const QString& key);

}  // namespace quarl::tree
