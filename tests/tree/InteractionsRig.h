#pragma once

#include <gtest/gtest.h>

#include <QSplitter>

#include "store/StoreFixture.h"
#include "support/DialogDriver.h"
#include "support/FaultyStores.h"
#include "tree/ContentEvents.h"
#include "tree/ContentInteractions.h"
#include "tree/ContentViews.h"
#include "tree/TreeBuilder.h"
#include "tree/TreeDrag.h"
#include "tree/TreeEvents.h"
#include "tree/TreeInteractions.h"
#include "ui/ErrorTrap.h"

namespace quarl::tree {

inline QString Q(const char* text) {
  return QString::fromUtf8(text);
}

/// A window with tree and list over a store in memory, wired as the main window does it. What the store holds:
///   groups 1 "Berlin" and 2 "Moscow" and 3 "Berlin"; servers 4 "alpha" and 5 "beta" in 1, 6 "Gamma" in 2, 7 "omega"
///   in the root group; tests 1 and 2 on alpha; alerts 1 and 2 of alpha, 3 of Moscow.
class InteractionsRig : public ::testing::Test,
                        protected SelectionPort,
                        protected CommandPort,
                        protected TreeEventPort,
                        protected ContentEventPort {
 protected:
  InteractionsRig();

  // --- The user ---------------------------------------------------------------------------------------------------
  QPoint PointOf(const char* key);
  QPoint PointOfRow(int row);
  void Click(const char* key, Qt::MouseButton button = Qt::LeftButton);
  void Key(QWidget& view, Qt::Key key, Qt::KeyboardModifiers modifiers = {});
  /// Starts a rename, types a name and ends the edit with a key.
  void TypeName(const QString& name, Qt::Key end = Qt::Key_Return);
  void Press(const char* key);
  void Release();
  /// What Qt sends while a node is dragged, here to a point; whether it may be dropped there.
  bool HoverAt(const QPoint& point);
  bool Hover(const char* key) { return HoverAt(PointOf(key)); }
  void Drop(const QPoint& point);
  void Drag(const char* key, const char* target);

  // --- What is there then -----------------------------------------------------------------------------------------
  QString Text(const char* key) const { return nodes.TextOf(Q(key)); }
  QString Children(const char* key) const { return nodes.ChildrenOf(Q(key)).join(u' '); }
  /// The tree as text, with only folders marked as open.
  static QString Picture(const ObjectTreeModel& model);
  /// The same of a tree that a fresh start would show.
  QString FreshPicture();
  /// Statements that an act executes.
  quint64 Statements(const std::function<void()>& act);
  /// What the ports got since the last call.
  QString Calls() { return std::exchange(calls, {}).join(u' '); }
  static ::quarl::testing::ShownBox Fault(const char* tag);

  // --- Ports ------------------------------------------------------------------------------------------------------
  const QString& SelectedKey() const override { return selected; }
  void SetSelectedKey(const QString& key) override { selected = key; }
  void UpdateOptions(const QString& key, bool refill) override;
  void NodeClick(const QString& key) override;
  void Remove(NodeKind kind) override { calls << Q("remove:") + NodeKey::Prefix(kind).toString(); }
  void PopUp(const QString& menu, const QPoint& globalPosition) override;
  bool KVCTree_AfterLabelEdit(const QString& key, const QString& text) override;
  void KVCTree_KeyDown(const QKeyEvent& event) override;
  void KVCTree_MenuKey() override;
  void KVCTree_MouseDown(Qt::MouseButton button, const QPoint& position) override;
  bool KVCTree_MouseMove(Qt::MouseButtons buttons, const QPoint& position) override;
  void KVCTree_MouseUp(Qt::MouseButton button, const QPoint& position) override;
  bool KVCTree_DragOver(const QMimeData& source, const QPoint& position) override;
  void KVCTree_DragDrop() override;
  void Form_DragOver() override;
  void KVCContent_Click() override;
  void KVCContent_DblClick() override;
  void KVCContent_KeyDown(const QKeyEvent& event) override;
  void KVCContent_MouseUp(Qt::MouseButton button, const QPoint& position) override;
  void KVCContent_MenuKey() override;

  store::StoreFolder folder;
  store::SqlStores sql;
  store::FaultyStores stores;
  InstallPaths paths{QStringLiteral(QUARL_LAYOUT_DIR)};
  ObjectTreeModel nodes;
  ContentListModel rows;
  QSplitter window;
  ObjectTree tree{nodes};
  ContentList list{rows};
  ContentViews views;
  QTimer scrollTimer;
  QString selected;
  QString dragged;  ///< the key that drag events carry
  QStringList calls;
  QPoint menuPoint;
  ui::ErrorTrap trap;
  TreeInteractions hands;
  TreeDrag drag;
  ContentInteractions contentHands;
  TreeEvents treeEvents{tree, *this};
  ContentEvents contentEvents{list, *this};
  ::quarl::testing::DialogDriver dialogs;

 private:
  void FillStore();
};

}  // namespace quarl::tree
