
#include "editors/EditorRig.h"
#include "tree/TreeSupport.h"

namespace quarl::editors {
namespace {

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
    dialogs.ExpectBox(Question(Q(GetParam().question)), Q(answer));
    for (const auto& box : answers_) dialogs.ExpectBox(box);
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
  EXPECT_FALSE(nodes.Contains(Q(GetParam().key)));
  ExpectTreeLikeFresh();
  EXPECT_TRUE(toolbarClicks.isEmpty()) << "the list stays as it is";
}

TEST_P(RemovalTest, WhateverElseHappensChangesNothing) {
  const store::Configuration before = Stored();
  Run("NoButton");
  EXPECT_EQ(stores.Calls(), 0);

  stores.RefuseFrom(Q(GetParam().operation));
  if (*GetParam().refusal != 0) answers_.push_back(Stop(Q(GetParam().refusal), Q("Stop")));
  Run("YesButton");

  stores.ThrowFrom(Q(GetParam().operation));
  answers_.clear();
  if (*GetParam().errorTag != 0) answers_.push_back(Plain(Q("store fault") + Q(GetParam().errorTag)));
  Run("YesButton");
  EXPECT_TRUE(Stored() == before);
  ExpectTreeLikeFresh();
}

// A key of another kind may end in the id of a record that must not be touched.
TEST_P(RemovalTest, KeyOfAnotherKindRemovesNothing) {
  const store::Configuration before = Stored();
  for (const char* key : {"", "_LOG", "_STESTS_3", "_ALERTS_2", "_GROUP_", "_SERVER_99999999999", "_TEST_x"}) {
    selected = Q(key);
    dialogs.ExpectAnyBox(Q("YesButton"));
    if (*GetParam().errorTag != 0) dialogs.ExpectAnyBox();
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
    Click(folderStays ? Q("_TEST_2") : Q("_TEST_1"));
    dialogs.ExpectAnyBox(Q("YesButton"));
    commands.mTestRemove_Click();
    EXPECT_EQ(nodes.Contains(Q("_STESTS_3")), folderStays);
  }
  EXPECT_TRUE(nodes.Contains(Q("_ALERTS_3")));
  ExpectTreeLikeFresh();
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
    selected = Q(GetParam().selectedKey);
    (commands.*GetParam().command)();
  }
};

TEST_P(CheckTest, AsksTheStoreAndRefreshes) {
  window.setCursor(Qt::CrossCursor);
  Run();
  EXPECT_EQ(stores.Calls(), *GetParam().operation != 0 ? 1 : 0);
  EXPECT_EQ(stores.Calls(Q(GetParam().operation)), *GetParam().operation != 0 ? 1 : 0);
  EXPECT_EQ(toolbarClicks, GetParam().refreshed ? QStringList(Q("Refresh")) : QStringList());
  if (GetParam().refreshed) {
    EXPECT_EQ(pointers, (std::vector{Qt::CrossCursor, Qt::WaitCursor, Qt::CrossCursor, kNone}));
  }
}

TEST_P(CheckTest, RefusalIsNotLookedAtAndAnErrorIsSilent) {
  window.setCursor(Qt::CrossCursor);
  if (*GetParam().operation != 0) stores.RefuseFrom(Q(GetParam().operation));
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
  const char* name;  ///< of the procedure as well, "m..._Click"
  void (EntityCommands::*command)(int index);
  const char* treeKey;
  const char* selectedKey;
  const char* folder;
  const char* newKey;
  const char* add;        ///< the store's operation
  bool shows = true;      ///< refusals and errors of it
  bool kindShown = true;  ///< an error is shown when the key is of another kind
};

const TypeCase kTypes[] = {{"ServerTest", &EntityCommands::mServerTest_Click, "_GROUP_0", "_SERVER_4", "_STESTS_4",
                            "_TEST_3", "TestStore.AddTest", false},
                           {"ServerAlert", &EntityCommands::mServerAlert_Click, "_GROUP_0", "_SERVER_4", "_ALERTS_4",
                            "_ALERT_3", "AlertStore.AddServerAlert", true, false},
                           {"ServerAlert", &EntityCommands::mServerAlert_Click, "_GROUP_0", "_SERVER_3", "_ALERTS_3",
                            "_ALERT_3", "AlertStore.AddServerAlert", true, false},
                           {"GroupAlert", &EntityCommands::mGroupAlert_Click, "_GROUP_1", "_SERVER_3", "_ALERTS_1",
                            "_ALERT_3", "AlertStore.AddGroupAlert"},
                           {"GroupAlert", &EntityCommands::mGroupAlert_Click, "_GROUP_0", "", "_ALERTS_0", "_ALERT_3",
                            "AlertStore.AddGroupAlert"}};

class TypeTest : public EditorRig, public ::testing::WithParamInterface<TypeCase> {
 protected:
  void Run(int index = 2) {
    Press(GetParam().treeKey);
    selected = Q(GetParam().selectedKey);
    (commands.*GetParam().command)(index);
  }
  static QString Tag() { return Q("(Main:m%1_Click)").arg(Q(GetParam().name)); }
};

TEST_P(TypeTest, AddsToStoreAndTree) {
  Run();
  EXPECT_EQ(Children(GetParam().folder).last(), Q(GetParam().newKey));
  EXPECT_EQ(nodes.TextOf(Q(GetParam().newKey)), Q("Kind"));
  ExpectTreeLikeFresh();
  EXPECT_FALSE(tree.visualRect(nodes.IndexOf(Q(GetParam().newKey))).isEmpty()) << "it can be seen";
  if (Q(GetParam().newKey).startsWith(Q("_ALERT_"))) {
    EXPECT_EQ(tree.SelectedKey(), Q(GetParam().newKey));
  }
  EXPECT_EQ(selected, Q(GetParam().selectedKey)) << "no node click follows";
}

TEST_P(TypeTest, RefusalErrorAndEmptyEntryAddNothing) {
  stores.RefuseFrom(Q(GetParam().add));
  if (GetParam().shows) dialogs.ExpectBox(Stop(Q("Add alert failed!")));
  Run();
  stores.ThrowFrom(Q(GetParam().add));
  if (GetParam().shows) dialogs.ExpectBox(Plain(Q("store fault") + Tag()));
  Run();
  EXPECT_EQ(commonErrors.size(), GetParam().shows ? 0U : 1U);
  dialogs.ExpectAnyBox();
  Run(1);
  EXPECT_EQ(stores.Calls(), 2);
  ExpectTreeLikeFresh();
}

TEST_P(TypeTest, KeyOfAnotherKindAddsNothing) {
  Press("_TEST_1");
  if (GetParam().kindShown) dialogs.ExpectError(Tag());
  (commands.*GetParam().command)(2);
  dialogs.Verify();
  EXPECT_EQ(stores.Calls(), 0);
}

INSTANTIATE_TEST_SUITE_P(Commands, TypeTest, ::testing::ValuesIn(kTypes));

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
      dialogs.ExpectAnyBox(Q("YesButton"));
      (commands.*command)();
    };
  }
  void SetUp() override {
    for (int i = 0; i < 10000; ++i) std::ignore = sql.Servers().AddServer(Q("filler"), Q("10.1.1.1"), 1);
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
