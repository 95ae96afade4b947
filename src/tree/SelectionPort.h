#pragma once

#include <QString>

namespace quarl::tree {

/// What the parts of the main window need of its selection. User-interface thread only; nothing here throws Error.
class SelectionPort {
 public:
  virtual ~SelectionPort() = default;
  /// The key of the object that commands act on; empty at start.
  virtual const QString& SelectedKey() const = 0;
  virtual void SetSelectedKey(const QString& key) = 0;
  /// Sets which commands can be used for a key; with refill also lists what the key stands for.
  virtual void UpdateOptions(const QString& key, bool refill) = 0;
  /// What a click on a tree node does: makes it the selected key, and lists it.
  virtual void NodeClick(const QString& key) = 0;
};

}  // namespace quarl::tree
