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

/// How a user comes to a dialog.
struct Way {
  const char* key;
  Command command;
  const char* dialog;
};

const Way kNewGroup{"_GROUP_0", &EntityCommands::mGroupAdd_Click, "pGroup"};
const Way kGroup{"_GROUP_1", &EntityCommands::mGroupProperties_Click, "pGroup"};
const Way kRoot{"_GROUP_0", &EntityCommands::mGroupProperties_Click, "pGroup"};
const Way kNewServer{"_GROUP_1", &EntityCommands::mGroupAddServer_Click, "pServer"};
const Way kServer{"_SERVER_3", &EntityCommands::mServerProperties_Click, "pServer"};

class DialogTest : public EditorRig {
 protected:
  /// Goes a way on which messages may come.
  void Go(const Way& way) {
    Press(way.key);
    (commands.*way.command)();
    dialogs.Verify();
  }
  /// Goes to a dialog, acts on it and ends it with a button.
  void Use(const Way& way, const std::function<void(QDialog&)>& act, const char* button = "OKButton") {
    ExpectDialog(way.dialog, act, button);
    Go(way);
  }
  static void SetUnit(QDialog& dialog, int index) { In<QComboBox>(dialog, "deltaType").setCurrentIndex(index); }
  static void Tick(QDialog& dialog) { In<QCheckBox>(dialog, "sEnabled").click(); }
  static void EnterSchedule(QDialog& dialog) {
    if (!In<QCheckBox>(dialog, "sEnabled").isChecked()) Tick(dialog);
    In<QDateEdit>(dialog, "StartDate").setDate(kEvery15.startDate);
    In<QTimeEdit>(dialog, "StartTime").setTime(kEvery15.startTime);
    Type(dialog, "deltaTime", Q("15"));
    SetUnit(dialog, 1);
  }
  static ScheduleRecord Shown(QDialog& dialog) {
    return {In<QCheckBox>(dialog, "sEnabled").isChecked(), In<QDateEdit>(dialog, "StartDate").date(),
            In<QTimeEdit>(dialog, "StartTime").time(), static_cast<qint16>(TextIn(dialog, "deltaTime").toInt()),
            static_cast<qint16>(In<QComboBox>(dialog, "deltaType").currentIndex() + 1)};
  }
  void ExpectStored(const store::Configuration& wanted) {
    EXPECT_TRUE(Stored() == wanted);
    ExpectTreeLikeFresh();
  }
  static QString Caption(QDialog& dialog) { return In<QGroupBox>(dialog, "Schedule").title(); }
};

// --- Groups ---

TEST_F(DialogTest, NewGroupOpensEmptyAndIsAddedWithoutSchedule) {
  store::Configuration wanted = Stored();
  Use(kNewGroup, [](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), Q("Group properties"));
    EXPECT_EQ(Caption(dialog), Q("Override parent schedule"));
    EXPECT_EQ(TextIn(dialog, "groupName") + TextIn(dialog, "groupDescription"), QString());
    EXPECT_EQ(Shown(dialog), (ScheduleRecord{false, Shown(dialog).startDate, QTime(0, 0), 0, 0}));
    Type(dialog, "groupName", Q("Kyiv"));
    Type(dialog, "groupDescription", Q("of the east"));
  });
  wanted.groups.insert(wanted.groups.begin() + 1, {5, Q("Kyiv"), Q("of the east"), {}, {}, {}});
  ExpectStored(wanted);
}

TEST_F(DialogTest, NewGroupWithTickedBoxHasItsSchedule) {
  Use(kNewGroup, [](QDialog& dialog) {
    Type(dialog, "groupName", Q("Kyiv"));
    EnterSchedule(dialog);
  });
  EXPECT_EQ(sql.Groups().GetGroupSchedule(5), kEvery15);
}

TEST_F(DialogTest, GroupPropertiesShowAndChangeOneGroup) {
  std::ignore = sql.Groups().SetGroupSchedule(1, kEvery15);
  store::Configuration wanted = Stored();
  Use(kGroup, [](QDialog& dialog) {
    EXPECT_EQ(Caption(dialog), Q("Override parent schedule"));
    EXPECT_EQ(TextIn(dialog, "groupName"), Q("Berlin"));
    EXPECT_EQ(TextIn(dialog, "groupDescription"), Q("north"));
    EXPECT_EQ(Shown(dialog), kEvery15);
    Type(dialog, "groupName", Q("Bern"));
    Tick(dialog);
  });
  wanted.groups[0].name = Q("Bern");
  wanted.groups[0].schedule->enabled = false;
  ExpectStored(wanted);
}

TEST_F(DialogTest, RootGroupEditsTheDefaultSchedule) {
  store::Configuration wanted = Stored();
  Use(kRoot, [](QDialog& dialog) {
    EXPECT_EQ(Caption(dialog), Q("Group schedule"));
    EXPECT_EQ(TextIn(dialog, "groupName"), Q("SERVERS"));
    EXPECT_EQ(TextIn(dialog, "groupDescription"), Q("Master group"));
    EXPECT_FALSE(In<QLineEdit>(dialog, "groupName").isEnabled());
    EXPECT_FALSE(In<QLineEdit>(dialog, "groupDescription").isEnabled());
    EnterSchedule(dialog);
  });
  wanted.root.schedule = kEvery15;
  ExpectStored(wanted);
}

TEST_F(DialogTest, GroupThatIsGoneIsNotShown) {
  ASSERT_TRUE(sql.Groups().RemoveGroup(1));
  Go(kGroup);
}

// --- Servers ---

TEST_F(DialogTest, NewServersStandInTheirSortedPlaceBeforeWhatElseTheGroupHas) {
  for (const char* name : {"m", "z", "M", "a"}) {
    Use({"_GROUP_2", kNewServer.command, "pServer"}, [&](QDialog& dialog) { Type(dialog, "serverName", Q(name)); });
  }
  EXPECT_EQ(ChildTexts("_GROUP_2"), (Words("M a m z ALERTS")));
  ExpectTreeLikeFresh();
  Use({"_GROUP_0", kNewServer.command, "pServer"}, [](QDialog& dialog) { Type(dialog, "serverName", Q("zulu")); });
  EXPECT_EQ(ChildTexts("_GROUP_0").first(), Q("zulu"));
  EXPECT_EQ(sql.Servers().GetServer(9)->idGroup, 0);
}

TEST_F(DialogTest, NewServerIsStoredAsEntered) {
  store::Configuration wanted = Stored();
  Use(kNewServer, [](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), Q("Server properties"));
    EXPECT_EQ(Caption(dialog), Q("Override parent schedule"));
    Type(dialog, "serverName", Q("beta"));
    In<ui::AddressInput>(dialog, "ServerIP").setFocus();
    for (const char* keys : {"192", ".168.", "0.", "10"}) QTest::keyClicks(dialog.focusWidget(), Q(keys));
    Type(dialog, "NFail", Q("25"));
    EnterSchedule(dialog);
  });
  wanted.groups[0].servers.push_back({5, Q("beta"), Q("192.168.0.10"), qint16{25}, kEvery15, {}, {}});
  ExpectStored(wanted);
}

TEST_F(DialogTest, NewServerWithClearBoxHasNoSchedule) {
  Use(kNewServer, [](QDialog&) {});
  EXPECT_EQ(sql.Servers().GetServer(5), (store::ServerRecord{QString(), Q("0.0.0.0"), 1}));
  EXPECT_FALSE(sql.Servers().GetServerSchedule(5));
}

TEST_F(DialogTest, ServerPropertiesShowAndChangeOneServer) {
  std::ignore = sql.Servers().SetServerSchedule(3, kEvery15);
  std::ignore = sql.Servers().SetFailThreshold(3, 50);
  store::Configuration wanted = Stored();
  Use(kServer, [](QDialog& dialog) {
    EXPECT_EQ(TextIn(dialog, "serverName"), Q("alpha"));
    const auto& address = In<ui::AddressInput>(dialog, "ServerIP");
    EXPECT_EQ(address.Octet(1) + address.Octet(2) + address.Octet(3), 10);
    EXPECT_EQ(TextIn(dialog, "NFail"), Q("50"));
    EXPECT_EQ(Shown(dialog), kEvery15);
    Type(dialog, "serverName", Q("alpha two"));
  });
  wanted.groups[0].servers[0].name = Q("alpha two");
  ExpectStored(wanted);
}

TEST_F(DialogTest, ServerThatIsGoneOpensEmptyAndCannotBeUpdated) {
  ASSERT_TRUE(sql.Servers().RemoveServer(3));
  const store::Configuration before = Stored();
  Use(kServer, [this](QDialog& dialog) {
    EXPECT_EQ(TextIn(dialog, "serverName"), QString());
    dialogs.ExpectBox(Stop(Q("Update server failed!")));
  });
  EXPECT_TRUE(Stored() == before);
}

TEST_F(DialogTest, AddressThatCannotBeShownIsReportedAndNothingElseIsLost) {
  for (const char* address : {"10.0.300.1", "10.0.x.1", "10.0..1", "10.0.0.1.2", "web.example"}) {
    ASSERT_TRUE(sql.Servers().UpdateServer(3, Q("alpha"), Q(address), 1));
    std::ignore = sql.Servers().SetServerSchedule(3, kEvery15);
    std::ignore = sql.Servers().SetFailThreshold(3, 7);
    store::Configuration wanted = Stored();
    dialogs.ExpectError(Q("(pServer:LoadServer)"));
    Use(kServer, [](QDialog& dialog) { In<ui::AddressInput>(dialog, "ServerIP").SetText(Q("10.9.8.7")); });
    wanted.groups[0].servers[0].ipAddress = Q("10.9.8.7");
    EXPECT_TRUE(Stored() == wanted) << address;
  }
}

TEST_F(DialogTest, PingTellsWhetherTheAddressAnswers) {
  struct Case {
    std::function<bool(const QString&)> ping;
    ::quarl::testing::ShownBox box;
  };
  const Case cases[] = {
      {[](const QString&) { return QApplication::activeModalWidget()->cursor().shape() == Qt::WaitCursor; },
       {Q("information"), Q("Info"), Q("Ping test successfull!")}},
      {[](const QString&) { return false; }, {Q("warning"), Q("Warning"), Q("Ping test unsuccessfull!")}},
      {[](const QString&) -> bool { throw Error(Q("no socket")); }, Plain(Q("no socket(pServer:TestIP_Click)"))}};
  const store::Configuration before = Stored();
  for (const Case& c : cases) {
    ping = c.ping;
    Use(
        kServer,
        [&](QDialog& dialog) {
          In<ui::AddressInput>(dialog, "ServerIP").SetOctet(4, 77);
          dialogs.ExpectBox(c.box);
          In<QAbstractButton>(dialog, "TestIP").click();
          EXPECT_EQ(dialog.cursor().shape(), Qt::ArrowCursor);
        },
        "CancelButton");
  }
  EXPECT_EQ(pinged, QStringList(3, Q("10.0.0.77")));
  EXPECT_TRUE(Stored() == before);
}

// --- Refusals and errors ---

struct FaultCase {
  Way way;
  const char* operation;
  const char* refusal;  ///< box of a refusal; "" = silent
};

const FaultCase kFaults[] = {{kNewGroup, "GroupStore.AddGroup", "Add group failed!"},
                             {kNewGroup, "GroupStore.SetGroupSchedule", ""},
                             {kGroup, "GroupStore.UpdateGroup", "Update group failed!"},
                             {kGroup, "GroupStore.SetGroupSchedule", ""},
                             {kRoot, "GroupStore.SetDefaultSchedule", "Update group failed!"},
                             {kNewServer, "ServerStore.AddServer", "Add server failed!"},
                             {kServer, "ServerStore.UpdateServer", "Update server failed!"},
                             {kServer, "ServerStore.SetServerSchedule", ""},
                             {kServer, "ServerStore.SetFailThreshold", ""}};

void PrintTo(const FaultCase& fault, std::ostream* out) {
  *out << fault.way.key << ' ' << fault.operation;
}

class FaultTest : public DialogTest, public ::testing::WithParamInterface<FaultCase> {
 protected:
  // Every text and the schedule are changed, so that each write has something to say.
  void Run(const QList<::quarl::testing::ShownBox>& boxes) {
    Use(GetParam().way, [&](QDialog& dialog) {
      for (const char* field : {"groupName", "serverName"}) {
        auto* input = dialog.findChild<QLineEdit*>(Q(field));
        if (input != nullptr && input->isEnabled()) Type(dialog, field, Q("Beta"));
      }
      EnterSchedule(dialog);
      for (const auto& box : boxes) dialogs.ExpectBox(box);
    });
  }
};

TEST_P(FaultTest, RefusalAndErrorAreToldAndTheTreeFollowsTheStore) {
  const auto& [way, operation, refusal] = GetParam();
  const store::Configuration before = Stored();
  stores.RefuseFrom(Q(operation));
  if (*refusal != 0) {
    Run({Stop(Q(refusal))});
    EXPECT_TRUE(Stored() == before) << "nothing else is written";
  } else {
    Run({});
  }
  ExpectTreeLikeFresh();
  stores.ThrowFrom(Q(operation));
  Run({Plain(Q("store fault(%1:OKButton_Click)").arg(Q(way.dialog)))});
  ExpectTreeLikeFresh();
}

INSTANTIATE_TEST_SUITE_P(Dialogs, FaultTest, ::testing::ValuesIn(kFaults));

TEST_F(DialogTest, RecordThatCannotBeReadIsNotShown) {
  const std::tuple<Way, const char*, const char*> cases[] = {
      {kGroup, "GroupStore.GetGroup", "(pGroup:LoadGroup)"},
      {kGroup, "GroupStore.GetGroupSchedule", "(pGroup:LoadGroup)"},
      {kRoot, "GroupStore.GetDefaultSchedule", "(pGroup:LoadGroup)"},
      {kServer, "ServerStore.GetServer", "(pServer:LoadServer)"},
      {kServer, "ServerStore.GetServerSchedule", "(pServer:LoadServer)"},
      {kServer, "ServerStore.GetFailThreshold", "(pServer:LoadServer)"}};
  for (const auto& [way, operation, tag] : cases) {
    stores.Heal();
    stores.ThrowFrom(Q(operation));
    dialogs.ExpectBox(Plain(Q("store fault") + Q(tag)));
    Go(way);
  }
}

TEST_F(DialogTest, IntervalOutsideItsRangeKeepsTheNameAndTheOldSchedule) {
  std::ignore = sql.Groups().SetGroupSchedule(1, kEvery15);
  store::Configuration wanted = Stored();
  Use(kGroup, [this](QDialog& dialog) {
    Type(dialog, "groupName", Q("Bern"));
    Type(dialog, "deltaTime", Q("32768"));
    dialogs.ExpectBox(Plain(Q("Overflow(pGroup:OKButton_Click)")));
  });
  wanted.groups[0].name = Q("Bern");
  ExpectStored(wanted);
}

TEST_F(DialogTest, ThresholdThatIsNoNumberKeepsTheStoredOne) {
  std::ignore = sql.Servers().SetFailThreshold(3, 7);
  for (const char* text : {"", "many", "3x", "40000"}) {
    Use(kServer, [&](QDialog& dialog) {
      Type(dialog, "NFail", Q(text));
      EnterSchedule(dialog);
      dialogs.ExpectError(Q("(pServer:OKButton_Click)"));
    });
    EXPECT_EQ(sql.Servers().GetFailThreshold(3), 7) << text;
    EXPECT_EQ(sql.Servers().GetServerSchedule(3), kEvery15);
  }
}

TEST_F(DialogTest, ServerCannotBeAddedWithoutAGroup) {
  for (const char* key : {"_SERVER_3", "_LOG"}) {
    dialogs.ExpectError(Q("(pServer:LoadServer)"));
    Go({key, kNewServer.command, ""});
  }
  EXPECT_EQ(stores.Calls(), 0);
}

// --- Cancel, keys, schedule panel ---

TEST_F(DialogTest, CancelAndEscapeWriteNothing) {
  const store::Configuration before = Stored();
  for (const bool escape : {false, true}) {
    dialogs.Expect(Q("pServer"), [escape](QWidget& widget) {
      auto& dialog = *qobject_cast<QDialog*>(&widget);
      Type(dialog, "serverName", Q("other"));
      EnterSchedule(dialog);
      if (escape) {
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Escape);
      } else {
        ::quarl::testing::DialogDriver::Click(Q("CancelButton"))(dialog);
      }
    });
    Go(kServer);
  }
  EXPECT_TRUE(Stored() == before);
  ExpectTreeLikeFresh();
}

TEST_F(DialogTest, EnterInAnyFieldIsOk) {
  for (const char* field : {"serverName", "Octet2", "NFail", "deltaTime"}) {
    const QString name = Q("via ") + Q(field);
    dialogs.Expect(Q("pServer"), [&](QWidget& widget) {
      auto& dialog = *qobject_cast<QDialog*>(&widget);
      Type(dialog, "serverName", name);
      if (!In<QCheckBox>(dialog, "sEnabled").isChecked()) Tick(dialog);
      auto& input = In<QLineEdit>(dialog, field);
      input.setFocus();
      QTest::keyClick(&input, Qt::Key_Return);
    });
    Go(kServer);
    EXPECT_EQ(sql.Servers().GetServer(3)->name, name);
  }
}

TEST_F(DialogTest, TabGoesThroughTheFieldsFromTopToBottom) {
  Use(
      kServer,
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
        EXPECT_EQ(order.join(u' '), Q("serverName Octet1 TestIP NFailUpDown sEnabled StartDate StartTime deltaTime "
                                      "deltaType OKButton CancelButton serverName"));
      },
      "CancelButton");
}

TEST_F(DialogTest, InputsOfASwitchedOffScheduleAreGreyed) {
  QDialog dialog;
  SchedulePanel panel(Q("Schedule"), folder.clock, &dialog);
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
