#pragma once

#include <QString>
#include <QVariant>

namespace quarl::editors {

/// What commands use of the main window besides its selection. User-interface thread only.
class CommandPort {
 public:
  virtual ~CommandPort() = default;
  /// What a click on the toolbar's button of that key does. Throws no Error.
  virtual void ToolbarClick(const QString& button) = 0;
  /// The tag of an element of a menu array ("mServerTest", "mServerAlert", "mGroupAlert"), counted from 1: the id of a
  /// type, or nothing for an element that stands for none.
  virtual QVariant TypeTag(const QString& menuArray, int index) const = 0;
};

}  // namespace quarl::editors
