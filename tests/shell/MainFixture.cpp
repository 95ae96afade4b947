#include "shell/MainFixture.h"

#include <QDir>
#include <QFile>
#include <QMenuBar>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include "plugins/contract/ModuleFile.h"

namespace quarl::shell {
namespace {

constexpr const char* kTestModules[] = {"ping.dll", "http.dll"};
constexpr const char* kAlertModules[] = {"email.dll"};

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

Main& MainFixture::Start() {
  window_ = std::make_unique<Main>(stores_, InstallPaths(folder_.path()));
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

void MainFixture::ClickNode(const QString& key) const {
  Tree().EnsureVisible(key);
  const QRect place = Tree().visualRect(Tree().Nodes().IndexOf(key));
  QTest::mouseClick(Tree().viewport(), Qt::LeftButton, {}, place.center());
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

}  // namespace quarl::shell
