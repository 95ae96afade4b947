#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include "shell/MainFixture.h"

namespace quarl::shell {
namespace {

// One line for each entry, indented by its depth: name, caption, and shortcut where there is one.
void Describe(const QList<QAction*>& actions, int depth, QStringList& lines) {
  for (const QAction* action : actions) {
    QStringList parts{action->objectName(), action->isSeparator() ? Q("-") : action->text()};
    if (!action->shortcut().isEmpty()) parts.append(action->shortcut().toString(QKeySequence::PortableText));
    lines.append(QString(2 * depth, u' ') + parts.join(u'|'));
    if (auto* menu = action->menu<QMenu*>()) Describe(menu->actions(), depth + 1, lines);
  }
}

const char* const kMenus = R"(mFile|&File
  mTestPlugin|Test Plug-ins
  mAlertPlugin|Alert Plug-ins
  mFileSeparator|-
  mQuit|Quit|Ctrl+Q
mGroup|Group
  mGroupProperties|Properties
  mGroupSeparator3|-
  mGroupAdd|Add group
  mGroupRemove|Remove group
  mGroupSeparator0|-
  mGroupAddServer|Add server
  mGroupScanNet|Scan Network ...
  mGroupSeparator1|-
  mGroupAddAlert|Add alert
    mGroupAlert_1|
  mGroupSeparator2|-
  mGroupCheck|Check group
mServer|&Server
  mServerProperties|Properties
  mSeparator|-
  mServerRemove|Remove server
  g|-
  mServerAddTest|Add test
    mServerTest_1|
  mServerAddAlert|Add alert
    mServerAlert_1|
  r|-
  mServerCheck|Check server
mTest|&Test
  mTestProperties|Properties
  mTestRename|Rename
  z|-
  mTestRemove|Remove test
  q|-
  mTestCheck|Check test
mAlert|&Alert
  mAlertProperties|Properties
  mAlertRename|Rename
  mAlertSeparator1|-
  mAlertRemove|Remove Alert
  mAlertSeparator2|-
  mAlertTest|Test alert
mLog|&Log
  mLogClear|Clear logs
  mLogSave|Save logs
mInfo|&?
  mHelpGuide|Help
  mHelpSeparator|-
  mAbout|About Quarl ...)";

const char* const kToolbar = R"(GroupAdd|Add group
GroupSub|Remove group
-
ServerAdd|Add server
ServerSub|Remove server
-
TestAdd|Add test|drop-down
TestSub|Remove Test
-
AlertAdd|Add alert|drop-down
AlertSub|Remove alert
-
CheckGroup|Check all tests for the selected group
CheckServer|Check all tests for the selected server
CheckTest|Check the selected test
-
Properties|Properties
Refresh|Refresh
-
SStart|Start Quarl service
SStop|Stop Quarl service)";

class StructureTest : public MainFixture {
 protected:
  StructureTest() { window_ = std::make_unique<Main>(stores_, InstallPaths(Folder()), calls_); }
};

TEST_F(StructureTest, MenuBarHasEveryItemInItsPlace) {
  QStringList lines;
  Describe(window_->menuBar()->actions(), 0, lines);
  EXPECT_EQ(lines.join(u'\n').toStdString(), kMenus);
}

TEST_F(StructureTest, ToolbarHasEveryButtonInItsPlace) {
  QStringList lines;
  const auto* toolbar = window_->findChild<QToolBar*>(Q("KVCToolbar"));
  for (QAction* action : toolbar->actions()) {
    if (action->isSeparator()) {
      lines.append(Q("-"));
      continue;
    }
    const auto* button = qobject_cast<QToolButton*>(toolbar->widgetForAction(action));
    QString line = action->objectName() + u'|' + button->toolTip();
    if (button->popupMode() == QToolButton::MenuButtonPopup && action->menu<QMenu*>()) line += Q("|drop-down");
    lines.append(line);
    EXPECT_EQ(button->accessibleName(), action->objectName());
    EXPECT_FALSE(action->icon().pixmap(QSize(24, 24)).isNull()) << line.toStdString();
  }
  EXPECT_EQ(lines.join(u'\n').toStdString(), kToolbar);
}

TEST_F(StructureTest, EverythingCanBeUsedBeforeANodeIsClicked) {
  for (const QAction* action : window_->findChildren<QAction*>()) {
    EXPECT_TRUE(action->isEnabled()) << action->objectName().toStdString();
  }
}

TEST_F(StructureTest, TimersHaveTheirIntervals) {
  const auto* scroll = window_->findChild<QTimer*>(Q("scrollTimer"));
  const auto* service = window_->findChild<QTimer*>(Q("ServiceTimer"));
  ASSERT_TRUE(scroll && service);
  EXPECT_EQ(scroll->interval(), 200);
  EXPECT_FALSE(scroll->isActive());
  EXPECT_EQ(service->interval(), 5000);
  EXPECT_TRUE(service->isActive());
}

TEST_F(StructureTest, WindowAndViewsAreNamedForTools) {
  EXPECT_EQ(window_->windowTitle(), Q("Quarl Console"));
  for (const char* name : {"KVCTree", "KVCContent", "KVCToolbar", "KVCStatusBar"}) {
    const auto* widget = window_->findChild<QWidget*>(Q(name));
    ASSERT_NE(widget, nullptr) << name;
    EXPECT_EQ(widget->accessibleName(), Q(name));
  }
}

TEST_F(StructureTest, TheTabKeyGoesThroughViewsAndButtonsThatCanBeUsed) {
  Start();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
  ASSERT_EQ(QApplication::focusWidget(), &Tree());
  QStringList visited;
  for (int step = 0; step < 40; ++step) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    visited.append(QApplication::focusWidget()->objectName());
    if (visited.last() == Q("KVCTree")) break;
  }
  EXPECT_EQ(visited.join(u' '),
            Q("KVCContent GroupAdd ServerAdd AlertAdd CheckGroup Properties Refresh SStart SStop KVCTree"));
}

}  // namespace
}  // namespace quarl::shell
