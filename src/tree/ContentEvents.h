#pragma once

#include <QKeyEvent>
#include <QObject>

#include "tree/ContentList.h"

namespace quarl::tree {

/// The events of the detail list under the names of the procedures that deal with them. Positions are points of the
/// list's viewport. Nothing here throws Error.
class ContentEventPort {
 public:
  virtual ~ContentEventPort() = default;
  /// The user chose a row, with the left mouse button or the keyboard, or clicked where there is none.
  virtual void KVCContent_Click() = 0;
  /// The user opens the selected row, by a double click or with Enter.
  virtual void KVCContent_DblClick() = 0;
  virtual void KVCContent_KeyDown(const QKeyEvent& event) = 0;
  virtual void KVCContent_MouseUp(Qt::MouseButton button, const QPoint& position) = 0;
  /// The key of the keyboard that opens menus.
  virtual void KVCContent_MenuKey() = 0;
};

/// Turns what Qt tells the list into calls of the port. User-interface thread only.
class ContentEvents : public QObject {
 public:
  /// @param list, port borrowed; must outlive the object.
  ContentEvents(ContentList& list, ContentEventPort& port);

  bool eventFilter(QObject* target, QEvent* event) override;

 private:
  bool OnKey(const QKeyEvent& event);
  void OnRelease(const QMouseEvent& event);

  ContentList& list_;
  ContentEventPort& port_;
  bool pressed_ = false;  // the mouse selects rows; the click comes with its release
};

}  // namespace quarl::tree
