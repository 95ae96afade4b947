#pragma once

#include <QWidget>

#include "store/Stores.h"
#include "tree/ObjectTree.h"
#include "tree/SelectionPort.h"
#include "ui/MessageBoxes.h"

namespace quarl::logs {

/// The commands that clear the service's log and save it to a file. What fails is thrown as Error, with log and list
/// as they were. User-interface thread only.
class LogCommands {
 public:
  /// @param window the owner of dialogs. All are borrowed and must outlive the object.
  LogCommands(store::Stores& stores, const tree::ObjectTree& tree, tree::SelectionPort& selection, QWidget& window);

  /// Clears the log after a question, leaves a record of that in it, and shows the selected key's node anew.
  void Clear();
  /// Saves the log to a file that the user names; the name is taken as typed. A failure shows a message.
  void Save();

 private:
  QString AskFileName();

  store::Stores& stores_;
  const tree::ObjectTree& tree_;
  tree::SelectionPort& selection_;
  QWidget& window_;
  ui::MessageBoxes boxes_;
};

}  // namespace quarl::logs
