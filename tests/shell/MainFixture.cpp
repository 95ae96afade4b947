#include "shell/MainFixture.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenuBar>
#include <QPointer>
#include <QRegularExpression>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include "plugins/contract/ModuleFile.h"
#include "tree/TreeSupport.h"

namespace quarl::shell {
namespace {

constexpr const char* kTestModules[] = {"ping.dll", "http.dll"};
constexpr const char* kAlertModules[] = {"email.dll", "webhook.dll"};

store::SqlSetup SetupIn(const QString& folder, control::ServiceControl& service) {
  return {.location = store::StoreLocation::File(folder + Q("/store.db")),
          .paths = InstallPaths(folder),
          .inspector = plugins::InspectModule,
          .service = &service};
}

void AddEnabled(const QWidget& owner, QSet<QString>& names) {
  for (const QAction* action : owner.actions()) {
    if (action->isSeparator()) continue;
    if (action->isEnabled()) names.insert(action->objectName());
  }
}

}  // namespace

MainFixture::MainFixture() : stores_(SetupIn(folder_.path(), service_)) {
  QDir(folder_.path()).mkpath(Q("plugins/tests"));
  QDir(folder_.path()).mkpath(Q("plugins/alerts"));
}

void MainFixture::InstallTypes() {
  for (const char* module : kTestModules) {
    ASSERT_TRUE(stores_.System().AddTestType(Q(QUARL_LAYOUT_DIR "/plugins/tests/") + Q(module), QString())) << module;
  }
  for (const char* module : kAlertModules) {
    ASSERT_TRUE(stores_.System().AddAlertType(Q(QUARL_LAYOUT_DIR "/plugins/alerts/") + Q(module), QString())) << module;
  }
}

qint32 MainFixture::AddServer(const char* name, qint32 idGroup) {
  return stores_.Servers().AddServer(Q(name), Q("192.0.2.7"), idGroup);
}

Main& MainFixture::Start(plugins::ModuleCalls& modules) {
  window_ = std::make_unique<Main>(faulty_, InstallPaths(folder_.path()), modules);
  window_->Form_Load();
  window_->show();
  EXPECT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
  return *window_;
}

QAction* MainFixture::Action(const QString& name) const {
  return window_->findChild<QAction*>(name);
}

tree::ObjectTree& MainFixture::Tree() const {
  return static_cast<tree::ObjectTree&>(*window_->findChild<QTreeView*>(Q("KVCTree")));
}

tree::ContentList& MainFixture::List() const {
  return static_cast<tree::ContentList&>(*window_->findChild<QTreeView*>(Q("KVCContent")));
}

QPoint MainFixture::PointOf(const QString& key) const {
  Tree().EnsureVisible(key);
  return Tree().visualRect(Nodes().IndexOf(key)).center();
}

void MainFixture::ClickNode(const QString& key, Qt::MouseButton button) const {
  QTest::mouseClick(Tree().viewport(), button, {}, PointOf(key));
}

void MainFixture::Tick(const char* timer) const {
  QMetaObject::invokeMethod(&Timer(timer), "timeout", Qt::DirectConnection);
}

QSet<QString> MainFixture::EnabledItems() const {
  QSet<QString> names;
  for (const QAction* title : window_->menuBar()->actions()) AddEnabled(*title->menu<QMenu*>(), names);
  return names;
}

QSet<QString> MainFixture::EnabledButtons() const {
  QSet<QString> names;
  AddEnabled(*window_->findChild<QToolBar*>(), names);
  return names;
}

void MainFixture::ClickRow(int row, Qt::MouseButton button) const {
  QTest::mouseClick(List().viewport(), button, {}, RowPoint(row));
}

void MainFixture::Choose(const char* item) const {
  ASSERT_TRUE(Action(Q(item))->isEnabled()) << item;
  Action(Q(item))->trigger();
}

void MainFixture::Rename(const QString& name, Qt::Key end, const char* item) const {
  Choose(item);
  ASSERT_NE(NameEditor(), nullptr);
  NameEditor()->setText(name);
  QTest::keyClick(NameEditor(), end);
  EXPECT_TRUE(QTest::qWaitFor([this] { return NameEditor() == nullptr; }));
}

void MainFixture::ExpectQuestion(const char* text, const char* answer) {
  dialogs_.ExpectBox({Q("warning"), Q("Warning"), Q(text)}, Q(answer));
}

void MainFixture::ExpectFault(const char* tag) {
  dialogs_.ExpectBox({Q("message"), Q("Quarl Console"), Q("store fault(Main:") + Q(tag) + u')'});
}

QString MainFixture::TakePopUp() {
  const QPointer<QWidget> menu = QApplication::activePopupWidget();
  if (!menu) return {};
  menu->close();
  return menu->objectName();
}

int MainFixture::Refills() const {
  return faulty_.Calls(Q("ServerStore.GetAllServers")) + faulty_.Calls(Q("ServerStore.GetServersByGroup")) +
         faulty_.Calls(Q("TestStore.GetTestsByServer")) + faulty_.Calls(Q("LogStore.GetLogs"));
}

quint64 MainFixture::Statements(const std::function<void()>& act) const {
  const quint64 before = stores_.Statistics().statementsExecuted;
  act();
  return stores_.Statistics().statementsExecuted - before;
}

void MainFixture::ExpectTreeLikeFresh() {
  tree::ObjectTreeModel fresh(tree::TestIcon);
  tree::TreeBuilder(stores_, fresh, [](const QString& text) { ADD_FAILURE() << text.toStdString(); }).LoadTree();
  // Servers and groups are opened by the user.
  static const QRegularExpression opened(Q("( *_(SERVER|GROUP)_.*) \\+\n"));
  const auto text = [](const tree::ObjectTreeModel& nodes) {
    return tree::Outline(nodes).replace(opened, Q("\\1\n")).toStdString();
  };
  EXPECT_EQ(text(Nodes()), text(fresh));
}

FilledFixture::FilledFixture() {
  InstallTypes();
  for (const char* group : {"Berlin", "Moscow", "Berlin"}) EXPECT_GT(stores_.Groups().AddGroup(Q(group), {}), 0);
  EXPECT_EQ(AddServer("alpha", 1), 4);
  EXPECT_EQ(AddServer("beta", 1), 5);
  EXPECT_EQ(AddServer("Gamma", 2), 6);
  EXPECT_EQ(AddServer("omega"), 7);
  for (int i = 1; i <= 2; ++i) {
    EXPECT_EQ(stores_.Tests().AddTest(4, 1, {}), i);
    EXPECT_EQ(stores_.Alerts().AddServerAlert(4, 1, {}), i);
  }
  EXPECT_EQ(stores_.Alerts().AddGroupAlert(2, 1, {}), 3);
  Start().activateWindow();
}

}  // namespace quarl::shell
