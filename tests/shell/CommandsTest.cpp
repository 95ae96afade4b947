#include <QMenu>
#include <QRegularExpression>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include "shell/MainFixture.h"
#include "store/StoreFixture.h"

namespace quarl::shell {
namespace {

class CommandsTest : public FilledFixture {
 protected:
  void ClickButton(const char* key) const {
    QTest::mouseClick(window_->findChild<QToolButton*>(Q(key)), Qt::LeftButton);
  }
};

// What a command brings up or calls: a dialog by its name, a question by its text, or a store operation.
struct Way {
  const char* node;
  const char* button;  ///< "" = none
  const char* item;    ///< "" = none
  const char* dialog;
  const char* question;
  const char* operation;
};

const Way kWays[] = {
    {"_GROUP_0", "GroupAdd", "mGroupAdd", "pGroup", "", ""},
    {"_GROUP_0", "Properties", "mGroupProperties", "pGroup", "", ""},
    {"_GROUP_1", "Properties", "mGroupProperties", "pGroup", "", ""},
    {"_GROUP_1", "GroupSub", "mGroupRemove", "", "Are you sure to remove definitely this group?", ""},
    {"_GROUP_1", "ServerAdd", "mGroupAddServer", "pServer", "", ""},
    {"_SERVER_4", "Properties", "mServerProperties", "pServer", "", ""},
    {"_SERVER_4", "ServerSub", "mServerRemove", "", "Are you sure to remove definitely this server?", ""},
    {"_TEST_1", "TestSub", "mTestRemove", "", "Are you sure to remove definitely this test?", ""},
    {"_ALERT_1", "AlertSub", "mAlertRemove", "", "Are you sure to remove definitely this alert?", ""},
    {"_GROUP_0", "CheckGroup", "mGroupCheck", "", "", "GroupStore.CheckGroup"},
    {"_SERVER_4", "CheckServer", "mServerCheck", "", "", "ServerStore.CheckServer"},
    {"_TEST_1", "CheckTest", "mTestCheck", "", "", "TestStore.CheckTest"},
    {"_GROUP_0", "Refresh", "", "", "", "ServerStore.GetAllServers"},
    {"_GROUP_1", "Refresh", "", "", "", "ServerStore.GetServersByGroup"},
    {"_SERVER_4", "Refresh", "", "", "", "TestStore.GetTestsByServer"},
    {"_LOG", "Refresh", "", "", "", "LogStore.GetLogs"},
    {"_LOG", "SStart", "", "", "", "SystemConfig.StartService"},
    {"_LOG", "SStop", "", "", "", "SystemConfig.StopService"},
    {"_TEST_1", "Properties", "mTestProperties", "", "", "TestStore.GetTestProperties"},
    {"_ALERT_1", "Properties", "mAlertProperties", "", "", "AlertStore.GetAlertProperties"},
    {"_LOG", "", "mTestPlugin", "pTestPlugin", "", ""},
    {"_LOG", "", "mAlertPlugin", "pAlertPlugin", "", ""},
    {"_LOG", "", "mLogClear", "", "Are you sure to delete definitely the logs?", ""},
    {"_LOG", "", "mLogSave", "CommonDialog", "", ""},
};

class WayTest : public CommandsTest, public ::testing::WithParamInterface<Way> {
 protected:
  void ExpectCommand(const std::function<void()>& act) {
    const Way& way = GetParam();
    const QString operation = Q(way.operation);
    const int before = faulty_.Calls(operation);
    if (*way.dialog != 0) dialogs_.Expect(Q(way.dialog), [](QWidget& dialog) { dialog.close(); });
    if (*way.question != 0) ExpectQuestion(way.question);
    act();
    dialogs_.Verify();
    if (*way.operation != 0) {
      EXPECT_EQ(faulty_.Calls(operation), before + 1);
    }
  }
};

TEST_P(WayTest, LeadsToItsCommand) {
  const store::Configuration before = stores_.Configurations().Read().configuration;
  Click(GetParam().node);
  if (*GetParam().button != 0) ExpectCommand([&] { ClickButton(GetParam().button); });
  if (*GetParam().item != 0) ExpectCommand([&] { Choose(GetParam().item); });
  EXPECT_TRUE(stores_.Configurations().Read().configuration == before) << "nothing was confirmed";
}

INSTANTIATE_TEST_SUITE_P(Commands, WayTest, ::testing::ValuesIn(kWays), [](const auto& row) {
  const Way& way = row.param;
  return std::string(*way.button != 0 ? way.button : way.item) + way.node;
});

TEST_F(CommandsTest, FacesOfTheDropDownsAndButtonsWithoutKindDoNothing) {
  Click("_SERVER_4");
  const int calls = faulty_.Calls();
  ClickButton("TestAdd");
  ClickButton("AlertAdd");
  Click("_STESTS_4");
  Action(Q("Properties"))->setEnabled(true);
  ClickButton("Properties");
  EXPECT_EQ(faulty_.Calls(), calls);
}

// --- Type menus ---

TEST_F(CommandsTest, EntryAndElementOfOnePlaceAddTheSameType) {
  const struct {
    const char* node;
    const char* entry;
    const char* element;
    const char* kind;
    const char* type;
  } cases[] = {{"_SERVER_7", "TEST_1", "mServerTest_1", "_TEST_", "ping"},
               {"_SERVER_7", "TEST_2", "mServerTest_2", "_TEST_", "http"},
               {"_SERVER_7", "ALERT_1", "mServerAlert_1", "_ALERT_", "email"},
               {"_SERVER_7", "ALERT_2", "mServerAlert_2", "_ALERT_", "webhook"},
               {"_GROUP_2", "ALERT_1", "mGroupAlert_1", "_ALERT_", "email"},
               {"_GROUP_0", "ALERT_2", "mGroupAlert_2", "_ALERT_", "webhook"}};
  int added[2] = {2, 3};
  for (const auto& c : cases) {
    for (const char* way : {c.entry, c.element}) {
      SCOPED_TRACE(std::string(c.node) + way);
      Click(c.node);
      Choose(way);
      int& last = added[Q(c.kind) == Q("_TEST_") ? 0 : 1];
      const QString key = Q(c.kind) + QString::number(++last);
      ASSERT_TRUE(Nodes().Contains(key));
      EXPECT_EQ(Nodes().TextOf(key), Q(c.type));
      EXPECT_EQ(Nodes().ParentOf(Nodes().ParentOf(key)), Q(c.node));
    }
  }
  ExpectTreeLikeFresh();
}

// The alert that was added is the tree's selected node, but the commands are still those of its owner.
TEST_F(CommandsTest, AlertsCanBeAddedOneAfterTheOther) {
  for (const char* owner : {"_GROUP_1", "_GROUP_0", "_SERVER_7"}) {
    Click(owner);
    for (const char* entry : {"ALERT_1", "ALERT_2"}) Choose(entry);
    const QString folder = Q(owner).replace(QRegularExpression(Q("_(GROUP|SERVER)_")), Q("_ALERTS_"));
    EXPECT_EQ(Nodes().ChildrenOf(folder).size(), 2) << owner;
  }
  ExpectTreeLikeFresh();
}

TEST_F(CommandsTest, AlertEntriesGoToTheSelectedKey) {
  Click("_GROUP_0");
  for (int row = 0; Window().SelectedKey() != Q("_SERVER_7") && row < Rows().rowCount(); ++row) ClickRow(row);
  ASSERT_EQ(Window().SelectedKey(), Q("_SERVER_7"));
  Choose("ALERT_1");
  EXPECT_EQ(Parent("_ALERT_4"), Q("_ALERTS_7"));
  for (const char* other : {"_TEST_1", "_ALERT_1", "_LOG", "_STESTS_4"}) {
    Click(other);
    const int calls = faulty_.Calls();
    Action(Q("ALERT_1"))->trigger();
    EXPECT_EQ(faulty_.Calls(), calls) << other;
  }
}

TEST_F(CommandsTest, NewAlertIsShownUnderItsTypesNameWhateverItsOwn) {
  store::RunSql(Folder("/store.db"),
                "CREATE TRIGGER other AFTER INSERT ON alerts BEGIN"
                " UPDATE alerts SET name = 'own' WHERE id_alert = NEW.id_alert; END");
  Click("_SERVER_7");
  Choose("ALERT_1");
  EXPECT_EQ(Nodes().TextOf(Q("_ALERT_4")), Q("email"));
  EXPECT_EQ(store::Column(stores_.Alerts().GetAlertsByServer(7), "AlertName"), Q("own"));
}

// --- Modules ---

TEST_F(CommandsTest, ModulesAreCalledForTestsAndAlerts) {
  calls_.size = 2;
  calls_.returned = Q("new~");
  const auto modules = [this](const char* folder) { return Folder() + Q(folder); };
  Click("_SERVER_4");
  ClickRow(0);
  ClickButton("Properties");
  EXPECT_EQ(stores_.Tests().GetTestProperties(1), Q("new"));
  Click("_ALERT_1");
  Choose("mAlertProperties");
  EXPECT_EQ(stores_.Alerts().GetAlertProperties(1), Q("new"));
  EXPECT_EQ(calls_.calls,
            (QStringList{Q("GetBufferSize|test|") + modules("\\plugins\\Tests\\ping.dll"),
                         Q("SetProperties|test|") + modules("\\plugins\\tests\\ping.dll|alpha|192.0.2.7|~~"),
                         Q("GetBufferSize|alert|") + modules("\\plugins\\Alerts\\email.dll"),
                         Q("SetProperties|alert|") + modules("\\plugins\\Alerts\\email.dll|alpha|192.0.2.7|~~")}));
  calls_.size = 9;
  dialogs_.ExpectBox({Q("information"), Q("Info"), Q("Alert test successfull: ")});
  Choose("mAlertTest");
  EXPECT_TRUE(calls_.calls.last().startsWith(Q("Alert|")));
}

TEST_F(CommandsTest, AddedAndRemovedTypesReachTheMenusAtTheNextStart) {
  const auto entries = [this] { return Action(Q("TestAdd"))->menu<QMenu*>()->actions().size(); };
  dialogs_.Expect(Q("pTestPlugin"), [this](QWidget& dialog) {
    auto* list = dialog.findChild<QTreeWidget*>(Q("pluginList"));
    list->setCurrentItem(list->topLevelItem(1));
    dialogs_.ExpectAnyBox(Q("YesButton"));
    testing::DialogDriver::Click(Q("RemovePlugin"))(dialog);
    EXPECT_EQ(list->topLevelItemCount(), 1);
    dialog.close();
  });
  Choose("mTestPlugin");
  EXPECT_EQ(entries(), 2);
  Click("_SERVER_7");
  dialogs_.ExpectBox({Q("critical"), Q("Quarl Console"), Q("Add test failed!")});
  Choose("TEST_2");
  Window().LoadMenu();
  EXPECT_EQ(entries(), 1);
}

// --- Failures ---

TEST_F(CommandsTest, UnreachableStoreIsReportedUnderTheProcedure) {
  for (const auto& [button, tag] :
       {std::pair("Refresh", "UpdateOptions"), std::pair("SStart", "KVCToolbar_ButtonClick")}) {
    Click("_LOG");
    faulty_.ThrowAlways();
    ExpectFault(tag);
    Choose(button);
    dialogs_.Verify();
    faulty_.Heal();
  }
  ExpectTreeLikeFresh();
}

}  // namespace
}  // namespace quarl::shell
