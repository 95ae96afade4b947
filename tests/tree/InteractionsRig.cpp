#include "tree/InteractionsRig.h"

#include <QApplication>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTest>

#include "tree/TreeSupport.h"

namespace quarl::tree {

InteractionsRig::InteractionsRig()
    : sql(folder.Setup(store::StoreLocation::InMemory())),
      stores(sql),
      nodes(TestIcon),
      rows(TestIcon),
      views(stores, rows),
      trap(Q("Main"), ui::MessageBoxes(&window)),
      hands(tree, stores, *this, *this),
      drag(tree, stores, paths, scrollTimer),
      contentHands(list, tree, *this, *this) {
  QGuiApplication::setApplicationDisplayName(Q("Quarl Console"));
  FillStore();
  TreeBuilder(stores, nodes, [](const QString& text) { ADD_FAILURE() << text.toStdString(); }).LoadTree();
  tree.SetNodeClick([this](const QString& key) { NodeClick(key); });
  scrollTimer.setInterval(200);
  window.addWidget(&tree);
  window.addWidget(&list);
  window.resize(700, 420);
  window.show();
  EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
  window.activateWindow();
  tree.Select(Q("_GROUP_0"));
  NodeClick(Q("_GROUP_0"));
  calls.clear();
}

void InteractionsRig::FillStore() {
  const qint32 test = folder.AddTestType(sql, Q("ping"));
  const qint32 alert = folder.AddAlertType(sql, Q("mail"));
  for (const char* group : {"Berlin", "Moscow", "Berlin"}) EXPECT_GT(sql.Groups().AddGroup(Q(group), {}), 0);
  const auto addServer = [this](const char* name, qint32 group) {
    EXPECT_GT(sql.Servers().AddServer(Q(name), Q("192.0.2.1"), group), 0);
  };
  addServer("alpha", 1);
  addServer("beta", 1);
  addServer("Gamma", 2);
  addServer("omega", 0);
  for (int i = 0; i < 2; ++i) {
    EXPECT_GT(sql.Tests().AddTest(4, test, {}), 0);
    EXPECT_GT(sql.Alerts().AddServerAlert(4, alert, {}), 0);
  }
  EXPECT_GT(sql.Alerts().AddGroupAlert(2, alert, {}), 0);
}

// --- The user -------------------------------------------------------------------------------------------------------

QPoint InteractionsRig::PointOf(const char* key) {
  tree.EnsureVisible(Q(key));
  return tree.visualRect(nodes.IndexOf(Q(key))).center();
}

QPoint InteractionsRig::PointOfRow(int row) {
  return list.visualRect(rows.index(row, 0)).center();
}

void InteractionsRig::Click(const char* key, Qt::MouseButton button) {
  QTest::mouseClick(tree.viewport(), button, {}, PointOf(key));
  QCoreApplication::processEvents();
}

void InteractionsRig::Key(QWidget& view, Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(&view, key, modifiers);
  QCoreApplication::processEvents();
}

void InteractionsRig::TypeName(const QString& name, Qt::Key end) {
  trap("mTestRename_Click", [&] { hands.Rename(); });
  auto* editor = tree.viewport()->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  editor->setText(name);
  QTest::keyClick(editor, end);
  EXPECT_TRUE(QTest::qWaitFor([&] { return tree.viewport()->findChild<QLineEdit*>() == nullptr; }));
}

void InteractionsRig::Press(const char* key) {
  dragged = Q(key);
  QTest::mousePress(tree.viewport(), Qt::LeftButton, {}, PointOf(key));
}

void InteractionsRig::Release() {
  QTest::mouseRelease(tree.viewport(), Qt::LeftButton, {}, QPoint(2, 2));
  QCoreApplication::processEvents();
}

bool InteractionsRig::HoverAt(const QPoint& point) {
  QMimeData data;
  data.setData(TreeDrag::Format(), dragged.toUtf8());
  QDragEnterEvent enter(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(tree.viewport(), &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDragMoveEvent move(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(tree.viewport(), &move);
  return move.isAccepted();
}

void InteractionsRig::Drop(const QPoint& point) {
  QMimeData data;
  data.setData(TreeDrag::Format(), dragged.toUtf8());
  QDropEvent drop(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(tree.viewport(), &drop);
}

void InteractionsRig::Drag(const char* key, const char* target) {
  Press(key);
  const QPoint point = PointOf(target);
  if (HoverAt(point)) Drop(point);
  Release();
}

// --- What is there then ---------------------------------------------------------------------------------------------

QString InteractionsRig::Picture(const ObjectTreeModel& model) {
  static const QRegularExpression openedByUser(Q("( *_(SERVER|GROUP)_.*) \\+\n"));
  return Outline(model).replace(openedByUser, Q("\\1\n"));
}

QString InteractionsRig::FreshPicture() {
  ObjectTreeModel fresh(TestIcon);
  TreeBuilder(sql, fresh, [](const QString& text) { ADD_FAILURE() << text.toStdString(); }).LoadTree();
  return Picture(fresh);
}

quint64 InteractionsRig::Statements(const std::function<void()>& act) {
  const quint64 before = sql.Statistics().statementsExecuted;
  act();
  return sql.Statistics().statementsExecuted - before;
}

::quarl::testing::ShownBox InteractionsRig::Fault(const char* tag) {
  return {Q("message"), Q("Quarl Console"), Q("store fault(Main:") + Q(tag) + u')'};
}

// --- Ports ----------------------------------------------------------------------------------------------------------

void InteractionsRig::UpdateOptions(const QString& key, bool refill) {
  calls << Q("options:") + key + (refill ? Q("+") : QString());
  if (!refill) return;
  const NodeKind kind = NodeKey::KindOf(key);
  if (kind == NodeKind::Group) views.ShowServerList(NodeKey::IdOf(key));
  if (kind == NodeKind::Server) views.ShowTestList(NodeKey::IdOf(key));
  if (kind == NodeKind::Log) views.ShowLogList();
}

void InteractionsRig::NodeClick(const QString& key) {
  selected = key;
  views.Clear();
  UpdateOptions(key, true);
}

void InteractionsRig::PopUp(const QString& menu, const QPoint& globalPosition) {
  calls << menu;
  menuPoint = globalPosition;
}

bool InteractionsRig::KVCTree_AfterLabelEdit(const QString& key, const QString& text) {
  return trap("KVCTree_AfterLabelEdit", [&] { return hands.AfterLabelEdit(key, text); });
}

void InteractionsRig::KVCTree_KeyDown(const QKeyEvent& event) {
  trap("KVCTree_KeyDown", [&] { hands.KeyDown(event); });
}

void InteractionsRig::KVCTree_MenuKey() {
  trap.Quiet("KVCTree_MenuKey", [&] { hands.MenuKey(); });
}

void InteractionsRig::KVCTree_MouseDown(Qt::MouseButton button, const QPoint& position) {
  trap("KVCTree_MouseDown", [&] { drag.MouseDown(button, position); });
}

bool InteractionsRig::KVCTree_MouseMove(Qt::MouseButtons buttons, const QPoint& position) {
  return trap("KVCTree_MouseMove", [&] { return drag.MouseMove(buttons, position); });
}

void InteractionsRig::KVCTree_MouseUp(Qt::MouseButton button, const QPoint& position) {
  trap.Quiet("KVCTree_MouseUp", [&] {
    drag.MouseUp();
    hands.MouseUp(button, position);
  });
}

bool InteractionsRig::KVCTree_DragOver(const QMimeData& source, const QPoint& position) {
  return trap("KVCTree_DragOver", [&] { return drag.DragOver(source, position); });
}

void InteractionsRig::KVCTree_DragDrop() {
  trap("KVCTree_DragDrop", [&] { drag.DragDrop(); });
}

void InteractionsRig::Form_DragOver() {
  trap("Form_DragOver", [&] { drag.DragLeave(); });
}

void InteractionsRig::KVCContent_Click() {
  trap("KVCContent_Click", [&] { contentHands.Click(); });
}

void InteractionsRig::KVCContent_DblClick() {
  trap("KVCContent_DblClick", [&] { contentHands.DblClick(); });
}

void InteractionsRig::KVCContent_KeyDown(const QKeyEvent& event) {
  trap.Quiet("KVCContent_KeyDown", [&] { contentHands.KeyDown(event); });
}

void InteractionsRig::KVCContent_MouseUp(Qt::MouseButton button, const QPoint& position) {
  trap("KVCContent_MouseUp", [&] { contentHands.MouseUp(button, position); });
}

void InteractionsRig::KVCContent_MenuKey() {
  trap("KVCContent_MouseUp", [&] { contentHands.MenuKey(); });
}

}  // namespace quarl::tree
