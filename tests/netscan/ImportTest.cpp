#include <arpa/inet.h>

#include <QElapsedTimer>
#include <QTimer>

#include "netscan/WizardRig.h"

namespace quarl::netscan {
namespace {

class Import : public WizardRig {
 protected:
  /// Ticks machines (blank between) and test types on the open wizard and goes to the last page.
  static void Choose(const WizardHands& user, const char* machines, std::initializer_list<const char*> types) {
    user.GoToServers();
    for (const QString& machine : Q(machines).split(u' ')) user.TickRow("SERVERList", machine.toUtf8().constData());
    user.Click("Avanti");
    for (const char* type : types) user.TickRow("TESTList", type);
    user.Click("Avanti");
  }
};

TEST_F(Import, AddsWhatIsTickedWithItsTestsInOrderOfNames) {
  Use([](const WizardHands& user) {
    EXPECT_FALSE(user.Find<QTreeWidget>("TESTList").topLevelItem(0)->icon(0).isNull());
    Choose(user, "zulu alpha", {"http.dll", "ping.dll"});
    EXPECT_EQ(user.Find<QLabel>("importState").text(), Q("2 servers will be added, each with 2 tests."));
    user.Click("Avanti");
    EXPECT_FALSE(user.Wizard().isVisible());
  });
  EXPECT_EQ(Stored(), "alpha 10.0.0.1 1 2\nmike 10.0.0.4\nzulu 10.0.0.2 1 2");
  EXPECT_EQ(InTree(), "alpha ping.dll(iTEST1) http.dll(iTEST2)\nmike\nzulu ping.dll(iTEST1) http.dll(iTEST2)");
  EXPECT_EQ(clicked, Q("_GROUP_1")) << "the list is filled anew";
}

TEST_F(Import, WithoutTicksNothingIsAdded) {
  Use([](const WizardHands& user) {
    Choose(user, "alpha alpha", {"ping.dll"});
    user.Click("Avanti");
  });
  EXPECT_EQ(Stored(), "mike 10.0.0.4");
  EXPECT_EQ(clicked, QString());
}

TEST_F(Import, ServersGoWithoutTestsAndIntoTheRootGroup) {
  tree.Select(Q("_GROUP_0"));
  Use([](const WizardHands& user) {
    Choose(user, "MIKE", {});
    EXPECT_EQ(user.Find<QLabel>("importState").text(), Q("1 server will be added, with no test."));
    user.Click("Avanti");
  });
  EXPECT_EQ(Stored(0), "MIKE 10.0.0.40");
  EXPECT_EQ(nodes.ChildrenOf(Q("_GROUP_0")).size(), 2);
}

TEST_F(Import, CancellingChangesNothing) {
  Use([](const WizardHands& user) {
    Choose(user, "alpha", {"ping.dll"});
    user.Click("Annulla");
    EXPECT_FALSE(user.Wizard().isVisible());
  });
  EXPECT_EQ(Stored(), "mike 10.0.0.4");
  EXPECT_EQ(InTree(), "mike");
}

TEST_F(Import, AModuleWithoutPictureHasTheGeneralOne) {
  ASSERT_TRUE(QFile::remove(InstallPaths::Resolve(paths.ApplicationFolder() + Q("/plugins/tests/ping.dll"))));
  Use([](const WizardHands& user) {
    Choose(user, "alpha", {"ping.dll"});
    user.Click("Avanti");
  });
  EXPECT_EQ(InTree(), "alpha ping.dll(iTEST1)\nmike");
}

// What the store does from a call on, and what is there in the end.
struct Fault {
  const char* operation;
  int call;
  int refusals;  ///< of it, each told; 0: it throws, and the wizard stays open
  const char* stored;
  const char* inTree;
};
void PrintTo(const Fault& fault, std::ostream* out) {
  *out << fault.operation << ' ' << fault.call;
}
class FaultyImport : public Import, public ::testing::WithParamInterface<Fault> {};

constexpr char kFirst[] = "alpha 10.0.0.1 1\nmike 10.0.0.4";
constexpr char kFirstInTree[] = "alpha ping.dll(iTEST1)\nmike";
const Fault kFaults[] = {
    {"ServerStore.AddServer", 1, 2, "mike 10.0.0.4", "mike"},
    {"ServerStore.AddServer", 2, 1, kFirst, kFirstInTree},
    {"TestStore.AddTest", 1, 2, "alpha 10.0.0.1\nmike 10.0.0.4\nzulu 10.0.0.2", "alpha\nmike\nzulu"},
    {"ServerStore.AddServer", 2, 0, kFirst, kFirstInTree},
    {"TestStore.AddTest", 2, 0, kFirst, kFirstInTree},
    {"TestStore.GetTestsByServer", 2, 0, kFirst, kFirstInTree},
    {"Stores.BeginChange", 1, 0, "mike 10.0.0.4", "mike"},
    {"Change.Commit", 2, 0, kFirst, kFirstInTree},
};
INSTANTIATE_TEST_SUITE_P(Faults, FaultyImport, ::testing::ValuesIn(kFaults));

TEST_P(FaultyImport, LeavesStoreAndTreeAlike) {
  const Fault& fault = GetParam();
  const QString operation = Q(fault.operation);
  const bool stays = fault.refusals == 0;
  Use([&](const WizardHands& user) {
    Choose(user, "alpha zulu", {"ping.dll"});
    stays ? stores.ThrowFrom(operation, fault.call) : stores.RefuseFrom(operation, fault.call);
    if (stays) dialogs.ExpectError(Q("store fault(ScanWizard:Avanti_Click)"));
    const QString refusal = operation.startsWith(Q("Server")) ? Q("Add server failed!") : Q("Add test failed!");
    for (int i = 0; i < fault.refusals; ++i) dialogs.ExpectBox({Q("critical"), Q("Quarl Console"), refusal});
    user.Click("Avanti");
    EXPECT_EQ(user.Wizard().isVisible(), stays);
    EXPECT_EQ(Stored(), fault.stored);
    EXPECT_EQ(InTree(), fault.inTree);
    if (!stays) return;
    stores.Heal();
    user.Click("Avanti");
  });
  if (!stays) return;
  EXPECT_EQ(Stored(), "alpha 10.0.0.1 1\nmike 10.0.0.4\nzulu 10.0.0.2 1") << "none twice";
}

/// The longest time between two turns of the event loop while it lives.
class PaintingGap {
 public:
  PaintingGap() {
    since_.start();
    timer_.callOnTimeout([this] {
      longest_ = std::max(longest_, since_.restart());
      ++turns_;
    });
    timer_.start(0);
  }
  qint64 Longest() const { return longest_; }
  int Turns() const { return turns_; }

 private:
  QTimer timer_;
  QElapsedTimer since_;
  qint64 longest_ = 0;
  int turns_ = 0;
};

TEST_F(Import, FiveHundredServersLeaveTheWindowAlive) {
  network.machines.clear();
  for (int number = 0; number < 500; ++number) {
    in_addr address{htonl(0x0a000100U + static_cast<quint32>(number))};
    network.machines.push_back(
        Machine(Q("HOST%1").arg(number, 3, 10, QLatin1Char('0')), inet_ntoa(address), Family::Server));
  }
  qint64 scanning = 0, importing = 0;
  int turns = 0;
  QElapsedTimer time;
  Use([&](const WizardHands& user) {
    user.Click("Avanti");
    user.Tick("OS1");
    {
      const PaintingGap gap;
      user.Click("Avanti");
      user.AwaitScan();
      scanning = gap.Longest();
    }
    auto& list = user.Find<QTreeWidget>("SERVERList");
    ASSERT_EQ(list.topLevelItemCount(), 500);
    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    user.Click("Avanti");
    user.TickRow("TESTList", "ping.dll");
    user.TickRow("TESTList", "http.dll");
    user.Click("Avanti");
    const PaintingGap gap;
    time.start();
    user.Click("Avanti");
    importing = gap.Longest();
    turns = gap.Turns();
  });
  std::printf("longest gap: scanning %lld ms, importing %lld ms; import took %lld ms\n",
              static_cast<long long>(scanning), static_cast<long long>(importing),
              static_cast<long long>(time.elapsed()));
  EXPECT_EQ(nodes.ChildrenOf(Q("_GROUP_1")).size(), 501);
  EXPECT_EQ(store::Column(sql.Servers().GetServersByGroup(1), "IDServer").split(u' ').size(), 501);
  EXPECT_LT(std::max(scanning, importing), 500) << "far below on a machine with nothing else to do";
  EXPECT_GT(turns, 500) << "the event loop turns between the servers";
}

TEST_F(Import, ALongImportCanBeStoppedBetweenServers) {
  Use([this](const WizardHands& user) {
    Choose(user, "alpha zulu", {"ping.dll"});
    QTimer::singleShot(0, &user.Wizard(), [&user] { user.Click("Annulla"); });
    user.Click("Avanti");
    EXPECT_TRUE(user.Wizard().isVisible());
    EXPECT_EQ(Stored(), kFirst);
    EXPECT_EQ(InTree(), kFirstInTree);
    EXPECT_EQ(user.Find<QPushButton>("Avanti").text(), Q("Finish"));
    user.Click("Indietro");
    user.Click("Indietro");
    QTest::keyClick(&user.Find<QTreeWidget>("SERVERList"), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(user.Rows("SERVERList").substr(0, 5), "alpha") << "what was added is not ticked with the others";
    user.Click("Annulla");
    EXPECT_FALSE(user.Wizard().isVisible());
  });
  EXPECT_EQ(clicked, Q("_GROUP_1"));
}

}  // namespace
}  // namespace quarl::netscan
