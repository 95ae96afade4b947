#include <QApplication>
#include <QCheckBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QTimeEdit>

#include "editors/EditorRig.h"
#include "editors/pGroup.h"
#include "editors/pServer.h"
#include "tree/TreeSupport.h"
#include "ui/AddressInput.h"

namespace quarl::editors {
namespace {

const ScheduleRecord kEvery15{true, QDate(2024, 2, 29), QTime(23, 59, 58), 15, 2};

QString L(const char* text) {
  return QString::fromUtf8(text);
}

class DialogTest : public EditorRig {
 protected:
  static void SetUnit(QDialog& dialog, int index) { In<QComboBox>(dialog, "deltaType").setCurrentIndex(index); }
  static void Tick(QDialog& dialog) { In<QCheckBox>(dialog, "sEnabled").click(); }
  static void EnterSchedule(QDialog& dialog) {
    if (!In<QCheckBox>(dialog, "sEnabled").isChecked()) Tick(dialog);
    In<QDateEdit>(dialog, "StartDate").setDate(kEvery15.startDate);
    In<QTimeEdit>(dialog, "StartTime").setTime(kEvery15.startTime);
    Type(dialog, "deltaTime", L("15"));
    SetUnit(dialog, 1);
  }
  static ScheduleRecord Shown(QDialog& dialog) {
    return {In<QCheckBox>(dialog, "sEnabled").isChecked(), In<QDateEdit>(dialog, "StartDate").date(),
            In<QTimeEdit>(dialog, "StartTime").time(), static_cast<qint16>(TextIn(dialog, "deltaTime").toInt()),
            static_cast<qint16>(In<QComboBox>(dialog, "deltaType").currentIndex() + 1)};
  }
  /// Answers the next dialog by an act and OK, upon which a message box comes.
  void ExpectRefusedOk(const char* name, const std::function<void(QDialog&)>& act) {
    ExpectDialog(name, [this, act](QDialog& dialog) {
      act(dialog);
      dialogs.ExpectAnyBox(L("OKButton"));
    });
  }
  QString LastBox() const { return dialogs.Boxes().empty() ? QString() : dialogs.Boxes().back().text; }
  static QString Caption(QDialog& dialog) { return In<QGroupBox>(dialog, "Schedule").title(); }
};

// --- Groups ---

TEST_F(DialogTest, NewGroupOpensEmptyAndIsAddedWithoutSchedule) {
  ExpectDialog("pGroup", [](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), L("Group properties"));
    EXPECT_EQ(Caption(dialog), L("Override parent schedule"));
    EXPECT_EQ(TextIn(dialog, "groupName") + TextIn(dialog, "groupDescription"), QString());
    EXPECT_EQ(Shown(dialog), (ScheduleRecord{false, Shown(dialog).startDate, QTime(0, 0), 0, 0}));
    Type(dialog, "groupName", L("Kyiv"));
    Type(dialog, "groupDescription", L("of the east"));
  });
  store::Configuration wanted = Stored();
  commands.mGroupAdd_Click();
  wanted.groups.insert(wanted.groups.begin() + 1, {5, L("Kyiv"), L("of the east"), {}, {}, {}});
  EXPECT_TRUE(Stored() == wanted);
}

TEST_F(DialogTest, NewGroupWithTickedBoxHasItsSchedule) {
  ExpectDialog("pGroup", [](QDialog& dialog) {
    Type(dialog, "groupName", L("Kyiv"));
    EnterSchedule(dialog);
  });
  commands.mGroupAdd_Click();
  EXPECT_EQ(sql.Groups().GetGroupSchedule(5), kEvery15);
}

TEST_F(DialogTest, GroupPropertiesShowAndChangeOneGroup) {
  std::ignore = sql.Groups().SetGroupSchedule(1, kEvery15);
  Press("_GROUP_1");
  ExpectDialog("pGroup", [](QDialog& dialog) {
    EXPECT_EQ(Caption(dialog), L("Override parent schedule"));
    EXPECT_EQ(TextIn(dialog, "groupName"), L("Berlin"));
    EXPECT_EQ(TextIn(dialog, "groupDescription"), L("north"));
    EXPECT_EQ(Shown(dialog), kEvery15);
    Type(dialog, "groupName", L("Bern"));
    Tick(dialog);
  });
  store::Configuration wanted = Stored();
  wanted.groups[0].name = L("Bern");
  wanted.groups[0].schedule->enabled = false;
  commands.mGroupProperties_Click();
  EXPECT_TRUE(Stored() == wanted);
  ExpectTreeLikeFresh();
}

TEST_F(DialogTest, RootGroupEditsTheDefaultSchedule) {
  Press("_GROUP_0");
  ExpectDialog("pGroup", [](QDialog& dialog) {
    EXPECT_EQ(Caption(dialog), L("Group schedule"));
    EXPECT_EQ(TextIn(dialog, "groupName"), L("SERVERS"));
    EXPECT_EQ(TextIn(dialog, "groupDescription"), L("Master group"));
    EXPECT_FALSE(In<QLineEdit>(dialog, "groupName").isEnabled());
    EXPECT_FALSE(In<QLineEdit>(dialog, "groupDescription").isEnabled());
    EnterSchedule(dialog);
  });
  store::Configuration wanted = Stored();
  wanted.root.schedule = kEvery15;
  commands.mGroupProperties_Click();
  EXPECT_TRUE(Stored() == wanted);
  ExpectTreeLikeFresh();
}

TEST_F(DialogTest, GroupThatIsGoneIsNotShown) {
  Press("_GROUP_1");
  ASSERT_TRUE(sql.Groups().RemoveGroup(1));
  commands.mGroupProperties_Click();
}

// --- Sorted insertion ---

struct SortCase {
  const char* existing;  ///< names of the groups or servers that are there, by blanks
  const char* added;
  int place;
};

TEST_F(DialogTest, NewGroupsStandInOrdinalOrderOfTheirNames) {
  const SortCase cases[] = {{"", "M", 0},     {"A C", "B", 1}, {"A C", "D", 2},   {"A C", "", 0},
                            {"A Z", "a", 2},  {"a b", "Z", 0}, {"A A B", "A", 0}, {"Äpfel", "Zebra", 0},
                            {"10 2", "1", 0}, {"AB", "A", 0},  {"B A C", "AA", 0}};
  for (const SortCase& c : cases) {
    sql.Configurations().Write({}, sql.Configurations().Read().revision);
    std::ignore = sql.Servers().AddServer(L("server"), L("1.1.1.1"), 0);
    tree::TreeBuilder(sql, nodes, [](const QString&) {}).LoadTree();
    // Built by hand, because a store hands its groups out in order.
    nodes.RemoveNode(nodes.ChildrenOf(L("_GROUP_0")).at(0));
    int id = 1000;
    for (const QString& name : L(c.existing).split(u' ', Qt::SkipEmptyParts)) {
      nodes.AddNode(L("_GROUP_0"), L("_GROUP_%1").arg(++id), name, L("iSERVERGROUP"));
    }
    nodes.AddNode(L("_GROUP_0"), L("_SERVER_7777"), L("AAA"), L("iSERVER"));
    ExpectDialog("pGroup", [&](QDialog& dialog) { Type(dialog, "groupName", L(c.added)); });
    commands.mGroupAdd_Click();
    EXPECT_EQ(ChildTexts("_GROUP_0").value(c.place), L(c.added)) << c.existing << " + " << c.added;
    EXPECT_EQ(ChildTexts("_GROUP_0").last(), L("AAA"));
  }
}

TEST_F(DialogTest, NewServersStandBeforeTheGroupsFolder) {
  Press("_GROUP_2");
  for (const char* name : {"m", "z", "M", "a"}) {
    ExpectDialog("pServer", [&](QDialog& dialog) { Type(dialog, "serverName", L(name)); });
    commands.mGroupAddServer_Click();
  }
  EXPECT_EQ(ChildTexts("_GROUP_2"), (QStringList{L("M"), L("a"), L("m"), L("z"), L("ALERTS")}));
  ExpectTreeLikeFresh();
}

TEST_F(DialogTest, ServerOfTheRootGroupStandsBeforeTheFirstOtherNode) {
  Press("_GROUP_0");
  ExpectDialog("pServer", [](QDialog& dialog) { Type(dialog, "serverName", L("zulu")); });
  commands.mGroupAddServer_Click();
  EXPECT_EQ(Children("_GROUP_0").first(), L("_SERVER_5"));
  EXPECT_EQ(sql.Servers().GetServer(5)->idGroup, 0);
}

// --- Servers ---

TEST_F(DialogTest, NewServerIsStoredAsEntered) {
  Press("_GROUP_1");
  ExpectDialog("pServer", [](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), L("Server properties"));
    EXPECT_EQ(Caption(dialog), L("Override parent schedule"));
    Type(dialog, "serverName", L("beta"));
    In<ui::AddressInput>(dialog, "ServerIP").setFocus();
    QTest::keyClicks(dialog.focusWidget(), L("192"));
    QTest::keyClicks(dialog.focusWidget(), L(".168."));
    QTest::keyClicks(dialog.focusWidget(), L("0."));
    QTest::keyClicks(dialog.focusWidget(), L("10"));
    Type(dialog, "NFail", L("25"));
    EnterSchedule(dialog);
  });
  store::Configuration wanted = Stored();
  wanted.groups[0].servers.push_back({5, L("beta"), L("192.168.0.10"), qint16{25}, kEvery15, {}, {}});
  commands.mGroupAddServer_Click();
  EXPECT_TRUE(Stored() == wanted) << Stored().groups[0].servers.back().ipAddress.toStdString();
  ExpectTreeLikeFresh();
}

TEST_F(DialogTest, NewServerWithClearBoxHasNoSchedule) {
  Press("_GROUP_1");
  ExpectDialog("pServer", [](QDialog&) {});
  commands.mGroupAddServer_Click();
  EXPECT_EQ(sql.Servers().GetServer(5), (store::ServerRecord{QString(), L("0.0.0.0"), 1}));
  EXPECT_FALSE(sql.Servers().GetServerSchedule(5));
}

TEST_F(DialogTest, ServerPropertiesShowAndChangeOneServer) {
  std::ignore = sql.Servers().SetServerSchedule(3, kEvery15);
  std::ignore = sql.Servers().SetFailThreshold(3, 50);
  Press("_SERVER_3");
  ExpectDialog("pServer", [](QDialog& dialog) {
    EXPECT_EQ(TextIn(dialog, "serverName"), L("alpha"));
    const auto& address = In<ui::AddressInput>(dialog, "ServerIP");
    EXPECT_EQ(address.Octet(1) + address.Octet(2) + address.Octet(3), 10);
    EXPECT_EQ(TextIn(dialog, "NFail"), L("50"));
    EXPECT_EQ(Shown(dialog), kEvery15);
    Type(dialog, "serverName", L("alpha two"));
  });
  store::Configuration wanted = Stored();
  wanted.groups[0].servers[0].name = L("alpha two");
  commands.mServerProperties_Click();
  EXPECT_TRUE(Stored() == wanted);
  ExpectTreeLikeFresh();
}

TEST_F(DialogTest, ServerThatIsGoneOpensEmptyAndCannotBeUpdated) {
  Press("_SERVER_3");
  ASSERT_TRUE(sql.Servers().RemoveServer(3));
  const store::Configuration before = Stored();
  ExpectRefusedOk("pServer", [](QDialog& dialog) { EXPECT_EQ(TextIn(dialog, "serverName"), QString()); });
  commands.mServerProperties_Click();
  EXPECT_EQ(LastBox(), L("Update server failed!"));
  EXPECT_TRUE(Stored() == before);
}

TEST_F(DialogTest, AddressThatCannotBeShownIsReportedAndNothingElseIsLost) {
  for (const char* address : {"10.0.300.1", "10.0.x.1", "10.0..1", "10.0.0.1.2", "web.example"}) {
    ASSERT_TRUE(sql.Servers().UpdateServer(3, L("alpha"), L(address), 1));
    std::ignore = sql.Servers().SetServerSchedule(3, kEvery15);
    std::ignore = sql.Servers().SetFailThreshold(3, 7);
    store::Configuration wanted = Stored();
    Press("_SERVER_3");
    dialogs.ExpectAnyBox(L("OKButton"));
    ExpectDialog("pServer", [](QDialog& dialog) { In<ui::AddressInput>(dialog, "ServerIP").SetText(L("10.9.8.7")); });
    commands.mServerProperties_Click();
    wanted.groups[0].servers[0].ipAddress = L("10.9.8.7");
    EXPECT_TRUE(Stored() == wanted) << address;
    EXPECT_TRUE(LastBox().endsWith(L("(pServer:LoadServer)"))) << address;
  }
}

TEST_F(DialogTest, PingTellsWhetherTheAddressAnswers) {
  struct Case {
    std::function<bool(const QString&)> ping;
    ::quarl::testing::ShownBox box;
  };
  const Case cases[] = {
      {[](const QString&) { return QApplication::activeModalWidget()->cursor().shape() == Qt::WaitCursor; },
       {L("information"), L("Info"), L("Ping test successfull!")}},
      {[](const QString&) { return false; }, {L("warning"), L("Warning"), L("Ping test unsuccessfull!")}},
      {[](const QString&) -> bool { throw Error(L("no socket")); }, Plain(L("no socket(pServer:TestIP_Click)"))}};
  const store::Configuration before = Stored();
  for (const Case& c : cases) {
    ping = c.ping;
    Press("_SERVER_3");
    ExpectDialog(
        "pServer",
        [&](QDialog& dialog) {
          In<ui::AddressInput>(dialog, "ServerIP").SetOctet(4, 77);
          dialogs.ExpectBox(c.box, L("OKButton"));
          In<QAbstractButton>(dialog, "TestIP").click();
          EXPECT_EQ(dialog.cursor().shape(), Qt::ArrowCursor);
        },
        "CancelButton");
    commands.mServerProperties_Click();
    dialogs.Verify();
  }
  EXPECT_EQ(pinged, QStringList(3, L("10.0.0.77")));
  EXPECT_TRUE(Stored() == before);
}

// --- Refusals and errors ---

struct FaultCase {
  const char* name;
  const char* key;
  void (EntityCommands::*command)();
  const char* dialog;
  const char* operation;
  const char* refusal;  ///< box of a refusal; "" = silent
  const char* tag;      ///< of an error
};

const FaultCase kFaults[] = {{"AddGroup", "_GROUP_0", &EntityCommands::mGroupAdd_Click, "pGroup", "GroupStore.AddGroup",
                              "Add group failed!", "(pGroup:OKButton_Click)"},
                             {"AddGroupSchedule", "_GROUP_0", &EntityCommands::mGroupAdd_Click, "pGroup",
                              "GroupStore.SetGroupSchedule", "", "(pGroup:OKButton_Click)"},
                             {"UpdateGroup", "_GROUP_1", &EntityCommands::mGroupProperties_Click, "pGroup",
                              "GroupStore.UpdateGroup", "Update group failed!", "(pGroup:OKButton_Click)"},
                             {"SetGroupSchedule", "_GROUP_1", &EntityCommands::mGroupProperties_Click, "pGroup",
                              "GroupStore.SetGroupSchedule", "", "(pGroup:OKButton_Click)"},
                             {"SetDefaultSchedule", "_GROUP_0", &EntityCommands::mGroupProperties_Click, "pGroup",
                              "GroupStore.SetDefaultSchedule", "Update group failed!", "(pGroup:OKButton_Click)"},
                             {"AddServer", "_GROUP_2", &EntityCommands::mGroupAddServer_Click, "pServer",
                              "ServerStore.AddServer", "Add server failed!", "(pServer:OKButton_Click)"},
                             {"UpdateServer", "_SERVER_3", &EntityCommands::mServerProperties_Click, "pServer",
                              "ServerStore.UpdateServer", "Update server failed!", "(pServer:OKButton_Click)"},
                             {"SetServerSchedule", "_SERVER_3", &EntityCommands::mServerProperties_Click, "pServer",
                              "ServerStore.SetServerSchedule", "", "(pServer:OKButton_Click)"},
                             {"SetFailThreshold", "_SERVER_3", &EntityCommands::mServerProperties_Click, "pServer",
                              "ServerStore.SetFailThreshold", "", "(pServer:OKButton_Click)"}};

class FaultTest : public DialogTest, public ::testing::WithParamInterface<FaultCase> {
 protected:
  // Every text and the schedule are changed, so that each write has something to say.
  using Boxes = std::vector<::quarl::testing::ShownBox>;
  void Run(const Boxes& boxes) {
    Press(GetParam().key);
    ExpectDialog(GetParam().dialog, [&](QDialog& dialog) {
      for (const char* field : {"groupName", "serverName"}) {
        auto* input = dialog.findChild<QLineEdit*>(L(field));
        if (input != nullptr && input->isEnabled()) Type(dialog, field, L("Beta"));
      }
      EnterSchedule(dialog);
      for (const auto& box : boxes) dialogs.ExpectBox(box, L("OKButton"));
    });
    (commands.*GetParam().command)();
    dialogs.Verify();
  }
};

TEST_P(FaultTest, RefusalAndErrorAreToldAndTheTreeFollowsTheStore) {
  const store::Configuration before = Stored();
  stores.RefuseFrom(L(GetParam().operation));
  Run(*GetParam().refusal != 0 ? Boxes{Stop(L(GetParam().refusal))} : Boxes{});
  if (*GetParam().refusal != 0) {
    EXPECT_TRUE(Stored() == before) << "nothing else is written";
  }
  ExpectTreeLikeFresh();
  stores.ThrowFrom(L(GetParam().operation));
  Run({Plain(L("store fault") + L(GetParam().tag))});
  ExpectTreeLikeFresh();
}

INSTANTIATE_TEST_SUITE_P(Dialogs, FaultTest, ::testing::ValuesIn(kFaults), CaseName());

struct LoadFault {
  const char* key;
  void (EntityCommands::*command)();
  const char* operation;
  const char* tag;
};

TEST_F(DialogTest, RecordThatCannotBeReadIsNotShown) {
  const LoadFault cases[] = {
      {"_GROUP_1", &EntityCommands::mGroupProperties_Click, "GroupStore.GetGroup", "(pGroup:LoadGroup)"},
      {"_GROUP_1", &EntityCommands::mGroupProperties_Click, "GroupStore.GetGroupSchedule", "(pGroup:LoadGroup)"},
      {"_GROUP_0", &EntityCommands::mGroupProperties_Click, "GroupStore.GetDefaultSchedule", "(pGroup:LoadGroup)"},
      {"_SERVER_3", &EntityCommands::mServerProperties_Click, "ServerStore.GetServer", "(pServer:LoadServer)"},
      {"_SERVER_3", &EntityCommands::mServerProperties_Click, "ServerStore.GetServerSchedule", "(pServer:LoadServer)"},
      {"_SERVER_3", &EntityCommands::mServerProperties_Click, "ServerStore.GetFailThreshold", "(pServer:LoadServer)"}};
  for (const LoadFault& c : cases) {
    stores.Heal();
    stores.ThrowFrom(L(c.operation));
    Press(c.key);
    dialogs.ExpectBox(Plain(L("store fault") + L(c.tag)), L("OKButton"));
    (commands.*c.command)();
    dialogs.Verify();
  }
}

TEST_F(DialogTest, IntervalOutsideItsRangeKeepsTheNameAndTheOldSchedule) {
  std::ignore = sql.Groups().SetGroupSchedule(1, kEvery15);
  Press("_GROUP_1");
  ExpectRefusedOk("pGroup", [](QDialog& dialog) {
    Type(dialog, "groupName", L("Bern"));
    Type(dialog, "deltaTime", L("32768"));
  });
  store::Configuration wanted = Stored();
  wanted.groups[0].name = L("Bern");
  commands.mGroupProperties_Click();
  EXPECT_EQ(LastBox(), L("Overflow(pGroup:OKButton_Click)"));
  EXPECT_TRUE(Stored() == wanted);
  ExpectTreeLikeFresh();
}

TEST_F(DialogTest, ThresholdThatIsNoNumberKeepsTheStoredOne) {
  std::ignore = sql.Servers().SetFailThreshold(3, 7);
  for (const char* text : {"", "many", "3x", "40000"}) {
    Press("_SERVER_3");
    ExpectRefusedOk("pServer", [&](QDialog& dialog) {
      Type(dialog, "NFail", L(text));
      EnterSchedule(dialog);
    });
    commands.mServerProperties_Click();
    dialogs.Verify();
    EXPECT_TRUE(LastBox().endsWith(L("(pServer:OKButton_Click)"))) << text;
    EXPECT_EQ(sql.Servers().GetFailThreshold(3), 7) << text;
    EXPECT_EQ(sql.Servers().GetServerSchedule(3), kEvery15);
  }
}

TEST_F(DialogTest, ServerCannotBeAddedWithoutAGroup) {
  for (const char* key : {"_SERVER_3", "_LOG"}) {
    Press(key);
    dialogs.ExpectAnyBox(L("OKButton"));
    commands.mGroupAddServer_Click();
    dialogs.Verify();
    EXPECT_TRUE(LastBox().endsWith(L("(pServer:LoadServer)")));
  }
  EXPECT_EQ(stores.Calls(), 0);
}

// --- Cancel, keys, schedule panel ---

TEST_F(DialogTest, CancelAndEscapeWriteNothing) {
  const store::Configuration before = Stored();
  for (const bool escape : {false, true}) {
    Press("_SERVER_3");
    dialogs.Expect(L("pServer"), [escape](QWidget& widget) {
      auto& dialog = *qobject_cast<QDialog*>(&widget);
      Type(dialog, "serverName", L("other"));
      EnterSchedule(dialog);
      if (escape) {
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Escape);
      } else {
        ::quarl::testing::DialogDriver::Click(L("CancelButton"))(dialog);
      }
    });
    commands.mServerProperties_Click();
    dialogs.Verify();
  }
  EXPECT_TRUE(Stored() == before);
  ExpectTreeLikeFresh();
}

TEST_F(DialogTest, EnterInAnyFieldIsOk) {
  for (const char* field : {"serverName", "Octet2", "NFail", "deltaTime"}) {
    Press("_SERVER_3");
    const QString name = L("via ") + L(field);
    dialogs.Expect(L("pServer"), [&](QWidget& widget) {
      auto& dialog = *qobject_cast<QDialog*>(&widget);
      Type(dialog, "serverName", name);
      if (!In<QCheckBox>(dialog, "sEnabled").isChecked()) Tick(dialog);
      auto& input = In<QLineEdit>(dialog, field);
      input.setFocus();
      QTest::keyClick(&input, Qt::Key_Return);
    });
    commands.mServerProperties_Click();
    dialogs.Verify();
    EXPECT_EQ(sql.Servers().GetServer(3)->name, name);
  }
}

TEST_F(DialogTest, TabGoesThroughTheFieldsFromTopToBottom) {
  Press("_SERVER_3");
  ExpectDialog(
      "pServer",
      [](QDialog& dialog) {
        Tick(dialog);
        In<QWidget>(dialog, "serverName").setFocus();
        QStringList order;
        for (int i = 0; i < 16; ++i) {
          // Date and time are gone through part by part.
          if (order.isEmpty() || order.last() != dialog.focusWidget()->objectName()) {
            order.append(dialog.focusWidget()->objectName());
          }
          QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        }
        EXPECT_EQ(order.join(u' '), L("serverName Octet1 TestIP NFailUpDown sEnabled StartDate StartTime deltaTime "
                                      "deltaType OKButton CancelButton serverName"));
      },
      "CancelButton");
  commands.mServerProperties_Click();
}

TEST_F(DialogTest, InputsOfASwitchedOffScheduleAreGreyed) {
  QDialog dialog;
  SchedulePanel panel(L("Schedule"), folder.clock, &dialog);
  const auto expect = [&](bool on) {
    for (const char* name : {"StartDate", "StartDateLbl", "StartTime", "deltaTime", "DeltaTimelbl", "deltaType"}) {
      EXPECT_EQ(In<QWidget>(dialog, name).isEnabled(), on) << name;
    }
    const QColor ground = dialog.palette().color(QPalette::Active, on ? QPalette::Base : QPalette::Button);
    auto& input = In<QLineEdit>(dialog, "deltaTime");
    dialog.grab();
    EXPECT_EQ(input.grab().toImage().pixelColor(input.rect().center()), ground) << on;
    EXPECT_EQ(In<QWidget>(dialog, "deltaType").palette().color(QPalette::Base), ground) << on;
  };
  dialog.show();
  expect(false);
  Tick(dialog);
  expect(true);
  QPalette dark = dialog.palette();
  dark.setColor(QPalette::Base, QColor(20, 30, 40));
  dark.setColor(QPalette::Button, QColor(60, 70, 80));
  dialog.setPalette(dark);
  expect(true);
  Tick(dialog);
  expect(false);
}

}  // namespace
}  // namespace quarl::editors
