#include <algorithm>

#include "editors/EditorRig.h"
#include "tree/TreeSupport.h"

namespace quarl::editors {
namespace {

using Command = void (EntityCommands::*)();

QString L(const char* text) {
  return QString::fromUtf8(text);
}

// --- Removal ---

struct Removal {
  const char* name;
  Command command;
  const char* key;
  const char* question;
  const char* operation;
  const char* refusal;                                     ///< "" = silent
  const char* errorTag;                                    ///< "" = silent
  std::function<void(store::Configuration& stored)> done;  ///< what the store has lost then
};

const Removal kRemovals[] = {
    {"Group", &EntityCommands::mGroupRemove_Click, "_GROUP_1", "Are you sure to remove definitely this group?",
     "GroupStore.RemoveGroup", "Remove group failed!", "(Main:mGroupRemove_Click)",
     [](store::Configuration& stored) { stored.groups.erase(stored.groups.begin()); }},
    {"Server", &EntityCommands::mServerRemove_Click, "_SERVER_3", "Are you sure to remove definitely this server?",
     "ServerStore.RemoveServer", "Remove server failed!", "",
     [](store::Configuration& stored) { stored.groups[0].servers.clear(); }},
    {"Test", &EntityCommands::mTestRemove_Click, "_TEST_1", "Are you sure to remove definitely this test?",
     "TestStore.RemoveTest", "", "",
     [](store::Configuration& stored) {
       auto& tests = stored.groups[0].servers[0].tests;
       tests.erase(tests.begin());
     }},
    {"ServerAlert", &EntityCommands::mAlertRemove_Click, "_ALERT_1", "Are you sure to remove definitely this alert?",
     "AlertStore.RemoveAlert", "", "(Main:mAlertRemove_Click)",
     [](store::Configuration& stored) { stored.groups[0].servers[0].alerts.clear(); }},
    {"GroupAlert", &EntityCommands::mAlertRemove_Click, "_ALERT_2", "Are you sure to remove definitely this alert?",
     "AlertStore.RemoveAlert", "", "(Main:mAlertRemove_Click)",
     [](store::Configuration& stored) { stored.groups[1].alerts.clear(); }}};

class RemovalTest : public EditorRig, public ::testing::WithParamInterface<Removal> {
 protected:
  void Run(const char* answer) {
    Press(GetParam().key);
    dialogs.ExpectBox(Question(L(GetParam().question)), L(answer));
    for (const auto& box : answers_) dialogs.ExpectBox(box, L("OKButton"));
    (commands.*GetParam().command)();
    dialogs.Verify();
  }
  std::vector<::quarl::testing::ShownBox> answers_;  // boxes that follow the question
};

TEST_P(RemovalTest, YesRemovesFromStoreAndTree) {
  store::Configuration wanted = Stored();
  GetParam().done(wanted);
  Run("YesButton");
  EXPECT_TRUE(Stored() == wanted);
  EXPECT_FALSE(nodes.Contains(L(GetParam().key)));
  ExpectTreeLikeFresh();
  EXPECT_TRUE(toolbarClicks.isEmpty()) << "the list stays as it is";
}

TEST_P(RemovalTest, WhateverElseHappensChangesNothing) {
  const store::Configuration before = Stored();
  Run("NoButton");
  EXPECT_EQ(stores.Calls(), 0);

  stores.RefuseFrom(L(GetParam().operation));
  if (*GetParam().refusal != 0) answers_.push_back(Stop(L(GetParam().refusal), L("Stop")));
  Run("YesButton");

  stores.ThrowFrom(L(GetParam().operation));
  answers_.clear();
  if (*GetParam().errorTag != 0) answers_.push_back(Plain(L("store fault") + L(GetParam().errorTag)));
  Run("YesButton");
  EXPECT_TRUE(Stored() == before);
  ExpectTreeLikeFresh();
}

// A key of another kind may end in the id of a record that must not be touched.
TEST_P(RemovalTest, KeyOfAnotherKindRemovesNothing) {
  const store::Configuration before = Stored();
  for (const char* key : {"", "_LOG", "_STESTS_3", "_ALERTS_2", "_GROUP_", "_SERVER_99999999999", "_TEST_x"}) {
    selected = L(key);
    dialogs.ExpectAnyBox(L("YesButton"));
    if (*GetParam().errorTag != 0) dialogs.ExpectAnyBox(L("OKButton"));
    (commands.*GetParam().command)();
    dialogs.Verify();
  }
  EXPECT_TRUE(Stored() == before);
  ExpectTreeLikeFresh();
  EXPECT_EQ(stores.Calls(), 0);
}

INSTANTIATE_TEST_SUITE_P(Commands, RemovalTest, ::testing::ValuesIn(kRemovals), CaseName());

TEST_F(EditorRig, LastTestTakesItsFolderAlong) {
  for (const bool folderStays : {true, false}) {
    Click(folderStays ? L("_TEST_2") : L("_TEST_1"));
    dialogs.ExpectAnyBox(L("YesButton"));
    commands.mTestRemove_Click();
    EXPECT_EQ(nodes.Contains(L("_STESTS_3")), folderStays);
  }
  EXPECT_TRUE(nodes.Contains(L("_ALERTS_3")));
  ExpectTreeLikeFresh();
}

TEST_F(EditorRig, RemovalOfWhatIsGoneIsRefused) {
  Press("_GROUP_1");
  ASSERT_TRUE(sql.Groups().RemoveGroup(1));
  dialogs.ExpectAnyBox(L("YesButton"));
  dialogs.ExpectBox(Stop(L("Remove group failed!"), L("Stop")), L("OKButton"));
  commands.mGroupRemove_Click();
  EXPECT_TRUE(nodes.Contains(L("_GROUP_1")));
}

// --- Checks ---

struct CheckCase {
  const char* name;
  Command command;
  const char* treeKey;      ///< the tree's selected node
  const char* selectedKey;  ///< the key that commands act on
  const char* operation;    ///< "" = none is called
  bool refreshed;
};

const CheckCase kChecks[] = {
    {"Group", &EntityCommands::mGroupCheck_Click, "_SERVER_4", "_GROUP_1", "GroupStore.CheckGroup", true},
    {"RootGroup", &EntityCommands::mGroupCheck_Click, "_GROUP_0", "_GROUP_0", "GroupStore.CheckGroup", true},
    {"GroupWithServerKey", &EntityCommands::mGroupCheck_Click, "_SERVER_4", "_SERVER_4", "", false},
    {"Server", &EntityCommands::mServerCheck_Click, "_GROUP_0", "_SERVER_4", "ServerStore.CheckServer", true},
    {"ServerWithGroupKey", &EntityCommands::mServerCheck_Click, "_SERVER_4", "_GROUP_1", "", false},
    {"ServerWithoutKey", &EntityCommands::mServerCheck_Click, "_SERVER_4", "", "", false},
    {"Test", &EntityCommands::mTestCheck_Click, "_TEST_1", "_SERVER_3", "TestStore.CheckTest", true},
    {"TestWithFolder", &EntityCommands::mTestCheck_Click, "_STESTS_3", "_TEST_1", "", false}};

class CheckTest : public EditorRig, public ::testing::WithParamInterface<CheckCase> {
 protected:
  void Run() {
    Press(GetParam().treeKey);
    selected = L(GetParam().selectedKey);
    (commands.*GetParam().command)();
  }
};

TEST_P(CheckTest, AsksTheStoreAndRefreshes) {
  window.setCursor(Qt::CrossCursor);
  Run();
  EXPECT_EQ(stores.Calls(), *GetParam().operation != 0 ? 1 : 0);
  EXPECT_EQ(stores.Calls(L(GetParam().operation)), *GetParam().operation != 0 ? 1 : 0);
  EXPECT_EQ(toolbarClicks, GetParam().refreshed ? QStringList(L("Refresh")) : QStringList());
  if (GetParam().refreshed) {
    EXPECT_EQ(pointers, (std::vector{Qt::CrossCursor, Qt::WaitCursor, Qt::CrossCursor, kNone}));
  }
}

TEST_P(CheckTest, RefusalIsNotLookedAtAndAnErrorIsSilent) {
  window.setCursor(Qt::CrossCursor);
  if (*GetParam().operation != 0) stores.RefuseFrom(L(GetParam().operation));
  Run();
  EXPECT_EQ(toolbarClicks.size(), GetParam().refreshed ? 1 : 0);
  stores.ThrowAlways();
  Run();
  EXPECT_EQ(toolbarClicks.size(), GetParam().refreshed ? 1 : 0) << "an error ends the command";
  EXPECT_EQ(window.cursor().shape(), Qt::CrossCursor);
}

INSTANTIATE_TEST_SUITE_P(Commands, CheckTest, ::testing::ValuesIn(kChecks), CaseName());

// --- Type menus ---

struct TypeCase {
  const char* name;
  void (EntityCommands::*command)(int index);
  const char* treeKey;
  const char* selectedKey;
  const char* folder;
  const char* newKey;
  const char* add;        ///< the store's operation
  const char* refusal;    ///< of it
  const char* error;      ///< what an error of it shows
  const char* wrongKind;  ///< the tag when the key is of another kind; "" = silent
};

const TypeCase kTypes[] = {
    {"ServerTest", &EntityCommands::mServerTest_Click, "_GROUP_0", "_SERVER_4", "_STESTS_4", "_TEST_3",
     "TestStore.AddTest", "", "", "(Main:mServerTest_Click)"},
    {"ServerAlert", &EntityCommands::mServerAlert_Click, "_GROUP_0", "_SERVER_4", "_ALERTS_4", "_ALERT_3",
     "AlertStore.AddServerAlert", "Add alert failed!", "store fault(Main:mServerAlert_Click)", ""},
    {"SecondServerAlert", &EntityCommands::mServerAlert_Click, "_GROUP_0", "_SERVER_3", "_ALERTS_3", "_ALERT_3",
     "AlertStore.AddServerAlert", "Add alert failed!", "store fault(Main:mServerAlert_Click)", ""},
    {"GroupAlert", &EntityCommands::mGroupAlert_Click, "_GROUP_1", "_SERVER_3", "_ALERTS_1", "_ALERT_3",
     "AlertStore.AddGroupAlert", "Add alert failed!", "store fault(Main:mGroupAlert_Click)",
     "(Main:mGroupAlert_Click)"},
    {"RootAlert", &EntityCommands::mGroupAlert_Click, "_GROUP_0", "", "_ALERTS_0", "_ALERT_3",
     "AlertStore.AddGroupAlert", "Add alert failed!", "store fault(Main:mGroupAlert_Click)",
     "(Main:mGroupAlert_Click)"}};

class TypeTest : public EditorRig, public ::testing::WithParamInterface<TypeCase> {
 protected:
  void Run(int index = 2) {
    Press(GetParam().treeKey);
    selected = L(GetParam().selectedKey);
    (commands.*GetParam().command)(index);
  }
};

TEST_P(TypeTest, AddsToStoreAndTree) {
  Run();
  EXPECT_EQ(Children(GetParam().folder).last(), L(GetParam().newKey));
  EXPECT_EQ(nodes.TextOf(L(GetParam().newKey)), L("Kind"));
  ExpectTreeLikeFresh();
  EXPECT_FALSE(tree.visualRect(nodes.IndexOf(L(GetParam().newKey))).isEmpty()) << "it can be seen";
  if (L(GetParam().newKey).startsWith(L("_ALERT_"))) {
    EXPECT_EQ(tree.SelectedKey(), L(GetParam().newKey));
  }
  EXPECT_EQ(selected, L(GetParam().selectedKey)) << "no node click follows";
}

TEST_P(TypeTest, RefusalErrorAndEmptyEntryAddNothing) {
  stores.RefuseFrom(L(GetParam().add));
  if (*GetParam().refusal != 0) dialogs.ExpectBox(Stop(L(GetParam().refusal)), L("OKButton"));
  Run();
  stores.ThrowFrom(L(GetParam().add));
  if (*GetParam().error != 0) dialogs.ExpectBox(Plain(L(GetParam().error)), L("OKButton"));
  Run();
  EXPECT_EQ(commonErrors.size(), *GetParam().error == 0 ? 1U : 0U);
  dialogs.ExpectAnyBox(L("OKButton"));
  Run(1);
  EXPECT_EQ(stores.Calls(), 2);
  ExpectTreeLikeFresh();
}

TEST_P(TypeTest, KeyOfAnotherKindAddsNothing) {
  Press("_TEST_1");
  if (*GetParam().wrongKind != 0) dialogs.ExpectAnyBox(L("OKButton"));
  (commands.*GetParam().command)(2);
  dialogs.Verify();
  for (const auto& box : dialogs.Boxes()) EXPECT_TRUE(box.text.endsWith(L(GetParam().wrongKind))) << box;
  EXPECT_EQ(stores.Calls(), 0);
}

INSTANTIATE_TEST_SUITE_P(Commands, TypeTest, ::testing::ValuesIn(kTypes), CaseName());

class FileRig : public EditorRig {
 protected:
  FileRig() : EditorRig(Keep::InFile) {}
};

TEST_F(FileRig, NewAlertIsShownUnderItsTypesNameWhateverItsOwn) {
  store::RunSql(folder.StorePath(),
                "CREATE TRIGGER other AFTER INSERT ON alerts BEGIN"
                " UPDATE alerts SET name = 'own' WHERE id_alert = NEW.id_alert; END");
  Press("_SERVER_3");
  commands.mServerAlert_Click(2);
  EXPECT_EQ(nodes.TextOf(L("_ALERT_3")), L("Kind"));
  EXPECT_EQ(store::Column(sql.Alerts().GetAlertsByServer(3), "AlertName"), L("Kind own"));
}

// --- Statements ---

class StatementTest : public EditorRig {
 protected:
  quint64 Executed() const { return sql.Statistics().statementsExecuted; }
  quint64 CostOf(const char* key, const std::function<void()>& act) {
    Press(key);
    const quint64 before = Executed();
    act();
    return Executed() - before;
  }
  std::function<void()> Confirmed(Command command) {
    return [this, command] {
      dialogs.ExpectAnyBox(L("YesButton"));
      (commands.*command)();
    };
  }
  void SetUp() override {
    for (int i = 0; i < 10000; ++i) std::ignore = sql.Servers().AddServer(L("filler"), L("10.1.1.1"), 1);
  }
};

TEST_F(StatementTest, CommandsNeedAtMostFive) {
  struct Case {
    const char* key;
    std::function<void()> act;
  };
  const Case cases[] = {{"_GROUP_1", [this] { commands.mGroupCheck_Click(); }},
                        {"_SERVER_3", [this] { commands.mServerCheck_Click(); }},
                        {"_TEST_1", [this] { commands.mTestCheck_Click(); }},
                        {"_SERVER_3", [this] { commands.mServerAlert_Click(2); }},
                        {"_GROUP_1", [this] { commands.mGroupAlert_Click(2); }},
                        {"_SERVER_3", [this] { commands.mServerTest_Click(2); }},
                        {"_TEST_1", Confirmed(&EntityCommands::mTestRemove_Click)},
                        {"_ALERT_1", Confirmed(&EntityCommands::mAlertRemove_Click)},
                        {"_SERVER_3", Confirmed(&EntityCommands::mServerRemove_Click)},
                        {"_GROUP_1", Confirmed(&EntityCommands::mGroupRemove_Click)}};
  for (const Case& c : cases) EXPECT_LE(CostOf(c.key, c.act), 5U) << c.key;
}

// A dialog reads one record in up to three operations and writes it in up to three; only a new id costs one more.
TEST_F(StatementTest, DialogsNeedAFewToOpenAndAFewToSave) {
  struct Case {
    const char* key;
    Command command;
    const char* dialog;
    quint64 open, save;
  };
  const Case cases[] = {{"_GROUP_0", &EntityCommands::mGroupAdd_Click, "pGroup", 0, 3},
                        {"_GROUP_0", &EntityCommands::mGroupProperties_Click, "pGroup", 1, 1},
                        {"_GROUP_1", &EntityCommands::mGroupProperties_Click, "pGroup", 2, 2},
                        {"_GROUP_1", &EntityCommands::mGroupAddServer_Click, "pServer", 0, 4},
                        {"_SERVER_3", &EntityCommands::mServerProperties_Click, "pServer", 3, 3}};
  for (const Case& c : cases) {
    quint64 opened = 0;
    ExpectDialog(c.dialog, [&](QDialog& dialog) {
      opened = Executed();
      In<QAbstractButton>(dialog, "sEnabled").click();
    });
    Press(c.key);
    const quint64 before = Executed();
    (commands.*c.command)();
    EXPECT_LE(opened - before, c.open) << c.dialog << c.key;
    EXPECT_LE(Executed() - opened, c.save) << c.dialog << c.key;
  }
}

}  // namespace
}  // namespace quarl::editors
