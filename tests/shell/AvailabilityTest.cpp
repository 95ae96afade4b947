#include "shell/MainFixture.h"

namespace quarl::shell {
namespace {

// What no selection ever touches.
const char* const kAlwaysItems = "mTestPlugin mAlertPlugin mQuit mLogClear mLogSave mHelpGuide mAbout";
const char* const kAlwaysButtons = "SStart SStop";

QSet<QString> Names(const char* always, const char* more) {
  const QStringList names = (Q(always) + u' ' + Q(more)).split(u' ', Qt::SkipEmptyParts);
  return QSet<QString>(names.begin(), names.end());
}

std::string Sorted(const QSet<QString>& names) {
  QStringList list = names.values();
  list.sort();
  return list.join(u' ').toStdString();
}

struct KindCase {
  const char* name;
  const char* key;
  const char* items;
  const char* buttons;
};

const char* const kGroupItems =
    "mGroupRemove mGroupProperties mGroupAddAlert mGroupCheck mGroupAddServer mGroupScanNet";
const char* const kGroupButtons = "Refresh GroupSub Properties AlertAdd CheckGroup ServerAdd";

const KindCase kKinds[] = {
    {"root", "_GROUP_0", "mGroupAdd mGroupProperties mGroupAddAlert mGroupCheck mGroupAddServer mGroupScanNet",
     "Refresh GroupAdd Properties AlertAdd CheckGroup ServerAdd"},
    {"group", "_GROUP_12", kGroupItems, kGroupButtons},
    {"groupWithLeadingZero", "_GROUP_01", kGroupItems, kGroupButtons},
    {"server", "_SERVER_3", "mServerRemove mServerAddTest mServerAddAlert mServerCheck mServerProperties",
     "Refresh ServerSub TestAdd AlertAdd CheckServer Properties"},
    {"test", "_TEST_4", "mTestRemove mTestCheck mTestProperties mTestRename", "TestSub CheckTest Properties"},
    {"alert", "_ALERT_5", "mAlertRemove mAlertTest mAlertProperties mAlertRename", "AlertSub Properties"},
    {"log", "_LOG", "", "Refresh"},
    {"testsFolder", "_STESTS_3", "", ""},
    {"alertsFolder", "_ALERTS_3", "", ""},
    {"nothing", "", "", ""},
    {"otherCase", "_group_0", "", ""},
    {"prefixInTheMiddle", "x_GROUP_0", "", ""},
};

using AvailabilityTest = MainFixture;

TEST_F(AvailabilityTest, EachKindEnablesExactlyItsCommands) {
  Start();
  for (const KindCase& kind : kKinds) {
    Window().UpdateOptions(Q(kind.key), false);
    EXPECT_EQ(Sorted(EnabledItems()), Sorted(Names(kAlwaysItems, kind.items))) << kind.name;
    EXPECT_EQ(Sorted(EnabledButtons()), Sorted(Names(kAlwaysButtons, kind.buttons))) << kind.name;
  }
}

TEST_F(AvailabilityTest, TitlesAndTypeEntriesAreNeverTouched) {
  InstallTypes();
  Start();
  Window().UpdateOptions(Q("_LOG"), false);
  for (const char* name : {"mFile", "mGroup", "mServer", "mTest", "mAlert", "mLog", "mInfo", "mServerTest_1",
                           "mServerTest_2", "mServerAlert_1", "mGroupAlert_1"}) {
    EXPECT_TRUE(Action(Q(name))->isEnabled()) << name;
  }
}

TEST_F(AvailabilityTest, ClicksInTheTreeEnableAndList) {
  InstallTypes();
  const qint32 group = stores_.Groups().AddGroup(Q("Office"), QString());
  const qint32 server = AddServer("alpha", group);
  const qint32 test = stores_.Tests().AddTest(server, 1, QString());
  const qint32 alert = stores_.Alerts().AddServerAlert(server, 1, QString());
  stores_.Log().AddLog(1, Q("started"));
  stores_.Log().AddLog(3, Q("failed"));
  Start();

  struct Click {
    NodeKind kind;
    qint32 id;
    int like;  // row of kKinds
    int columns;
    int rows;
  };
  const Click clicks[] = {{NodeKind::Group, group, 1, 2, 1},         {NodeKind::Server, server, 3, 2, 1},
                          {NodeKind::TestsFolder, server, 7, 0, 0},  {NodeKind::Group, 0, 0, 3, 1},
                          {NodeKind::Test, test, 4, 0, 0},           {NodeKind::Log, 0, 6, 2, 2},
                          {NodeKind::AlertsFolder, server, 8, 0, 0}, {NodeKind::Alert, alert, 5, 0, 0}};
  for (const Click& click : clicks) {
    const QString key = NodeKey::Make(click.kind, click.id);
    ClickNode(key);
    EXPECT_EQ(Window().SelectedKey(), key);
    EXPECT_EQ(Sorted(EnabledItems()), Sorted(Names(kAlwaysItems, kKinds[click.like].items))) << key.toStdString();
    EXPECT_EQ(Sorted(EnabledButtons()), Sorted(Names(kAlwaysButtons, kKinds[click.like].buttons)));
    EXPECT_EQ(List().model()->columnCount(), click.columns) << key.toStdString();
    EXPECT_EQ(List().model()->rowCount(), click.rows) << key.toStdString();
  }
}

TEST_F(AvailabilityTest, AKeyWithoutANumberIsReported) {
  Start();
  dialogs_.ExpectError(Q("(Main:UpdateOptions)"));
  Window().UpdateOptions(Q("_SERVER_x"), true);
  EXPECT_TRUE(Action(Q("mServerRemove"))->isEnabled()) << "what was set before stays";
}

TEST_F(AvailabilityTest, RefreshListsTheTreesNodeAnew) {
  AddServer("alpha");
  Start();
  AddServer("beta");
  Window().UpdateOptions(Q("_LOG"), false);
  Action(Q("Refresh"))->trigger();
  EXPECT_EQ(List().model()->rowCount(), 2);
  EXPECT_EQ(Window().SelectedKey(), Q("_GROUP_0"));
  EXPECT_TRUE(Action(Q("mGroupAdd"))->isEnabled());
}

}  // namespace
}  // namespace quarl::shell
