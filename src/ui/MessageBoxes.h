#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include "base/StringTable.h"

namespace quarl::ui {

/// Every message box of the console is built here. A box is modal over the owner; its object name is "PlainBox",
/// "ConfirmBox", "StopBox", "InfoBox" or "WarningBox", its buttons are "OKButton", "YesButton" and "NoButton", and
/// its accessible description tells the kind. Texts are shown as plain text. One that would not fit on the screen is
/// shortened in the middle, with "…" in the gap, and stands whole in the log (category quarl.console).
/// User-interface thread only. The calls return when the box has been answered.
class MessageBoxes {
 public:
  enum class Title { OfKind, Application };
  enum class Icon { Exclamation, Question };

  /// @param owner may be null; not owned. A box whose owner is gone or hidden has none.
  explicit MessageBoxes(QWidget* owner = nullptr);

  /// OK, no icon, the application's title.
  void Plain(const QString& text) const;
  /// Yes and No, title "Warning"; true for Yes only. Escape is No, Enter is No.
  [[nodiscard]] bool Confirm(Text text, Icon icon = Icon::Exclamation) const;
  /// OK, critical icon, title "Stop" or the application's.
  void Stop(Text text, Title title = Title::OfKind) const;
  void Stop(const QString& text, Title title = Title::OfKind) const;
  /// OK, information icon, title "Info".
  void Info(Text text) const;
  void Info(const QString& text) const;
  /// OK, exclamation icon, title "Warning".
  void Warning(Text text) const;
  void Warning(const QString& text) const;

  /// The title of boxes without one of their own: the application's name.
  static QString ApplicationTitle();

 private:
  QPointer<QWidget> owner_;
};

}  // namespace quarl::ui
