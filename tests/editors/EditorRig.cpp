#include "editors/EditorRig.h"

#include <QApplication>

#include "tree/TreeSupport.h"

namespace quarl::editors {

using ::quarl::testing::DialogDriver;
using ::quarl::testing::ShownBox;

ShownBox Stop(const QString& text, const QString& title) {
  return {QStringLiteral("critical"), title, text};
}

ShownBox Plain(const QString& text) {
  return {QStringLiteral("message"), QStringLiteral("Quarl Console"), text};
}

ShownBox Question(const QString& text) {
  return {QStringLiteral("warning"), QStringLiteral("Warning"), text};
}

EditorRig::EditorRig()
    : sql(folder.Setup(store::StoreLocation::InMemory())),
      stores(sql),
      nodes(tree::TestIcon),
      tree(nodes, &window),
      common(stores, tree, {[](Text) {}, [this](const QString& text) { commonErrors.push_back(text); }}),
      commands({&window, stores, tree, *this, folder.clock,
                [this](const QString& address) {
                  pinged.append(address);
                  return ping(address);
                }},
               common, *this) {
  FillStore();
  tree::TreeBuilder(sql, nodes, [](const QString& text) { ADD_FAILURE() << text.toStdString(); }).LoadTree();
  window.show();
  window.installEventFilter(this);
}

void EditorRig::FillStore() {
  EXPECT_EQ(folder.AddTestType(sql, QStringLiteral("Kind")), 1);
  EXPECT_EQ(folder.AddAlertType(sql, QStringLiteral("Kind")), 1);
  EXPECT_EQ(sql.Groups().AddGroup(QStringLiteral("Berlin"), QStringLiteral("north")), 1);
  EXPECT_EQ(sql.Groups().AddGroup(QStringLiteral("Moscow"), QString()), 2);
  EXPECT_EQ(sql.Servers().AddServer(QStringLiteral("alpha"), QStringLiteral("10.0.0.1"), 1), 3);
  EXPECT_EQ(sql.Servers().AddServer(QStringLiteral("omega"), QStringLiteral("10.0.0.2"), 0), 4);
  EXPECT_EQ(sql.Tests().AddTest(3, 1, QString()), 1);
  EXPECT_EQ(sql.Tests().AddTest(3, 1, QString()), 2);
  EXPECT_EQ(sql.Alerts().AddServerAlert(3, 1, QString()), 1);
  EXPECT_EQ(sql.Alerts().AddGroupAlert(2, 1, QString()), 2);
}

void EditorRig::Click(const QString& key) {
  tree.EnsureVisible(key);
  tree.Select(key);
  selected = key;
}

void EditorRig::ExpectDialog(const char* name, const std::function<void(QDialog&)>& act, const char* button) {
  const QString clicked = QString::fromLatin1(button);
  dialogs.Expect(QString::fromLatin1(name), [act, clicked](QWidget& widget) {
    try {
      act(*qobject_cast<QDialog*>(&widget));
    } catch (const Error& error) {
      ADD_FAILURE() << error.what();
    }
    DialogDriver::Click(clicked)(widget);
  });
}

void EditorRig::Type(QDialog& dialog, const char* field, const QString& text) {
  auto& input = In<QLineEdit>(dialog, field);
  input.setFocus();
  input.selectAll();
  QTest::keyClick(&input, Qt::Key_Delete);
  QTest::keyClicks(&input, text);
}

QString EditorRig::TextIn(QDialog& dialog, const char* field) {
  return In<QLineEdit>(dialog, field).text();
}

void EditorRig::ExpectTreeLikeFresh() {
  tree::ObjectTreeModel fresh(tree::TestIcon);
  tree::TreeBuilder(sql, fresh, [](const QString& text) { ADD_FAILURE() << text.toStdString(); }).LoadTree();
  // Folders that a command adds are opened by the view, not by the model.
  const auto plain = [](const tree::ObjectTreeModel& model) {
    return tree::Outline(model).remove(QStringLiteral(" +")).toStdString();
  };
  EXPECT_EQ(plain(nodes), plain(fresh));
}

bool EditorRig::eventFilter(QObject* watched, QEvent* event) {
  const bool changed = watched == &window && event->type() == QEvent::CursorChange;
  const Qt::CursorShape shape = window.cursor().shape();
  if (changed && (pointers.empty() || pointers.back() != shape)) pointers.push_back(shape);
  return QObject::eventFilter(watched, event);
}

QStringList EditorRig::ChildTexts(const char* key) const {
  QStringList texts;
  for (const QString& child : Children(key)) texts.append(nodes.TextOf(child));
  return texts;
}

void EditorRig::ToolbarClick(const QString& button) {
  toolbarClicks.append(button);
  pointers.push_back(kNone);
}

QVariant EditorRig::TypeTag(const QString& menuArray, int index) const {
  const bool known = menuArray == QLatin1String("mServerTest") || menuArray == QLatin1String("mServerAlert") ||
                     menuArray == QLatin1String("mGroupAlert");
  return known && index == 2 ? QVariant(qint32{1}) : QVariant();
}

}  // namespace quarl::editors
