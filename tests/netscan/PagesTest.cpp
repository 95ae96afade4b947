#include "netscan/WizardRig.h"

namespace quarl::netscan {
namespace {

using Pages = WizardRig;

constexpr char kAllRows[] =
    "alpha|NT Server|10.0.0.1\n"
    "MIKE|NT Server|10.0.0.40\n"
    "november|Windows 98|10.0.0.3\n"
    "zulu|NT Workstation|10.0.0.2";

TEST_F(Pages, FollowEachOtherWithTheirButtons) {
  Use([](const WizardHands& user) {
    const auto state = [&] {
      const auto& next = user.Find<QPushButton>("Avanti");
      return Q("%1 %2 %3 %4")
          .arg(user.VisiblePage())
          .arg(next.text())
          .arg(next.isEnabled())
          .arg(user.Find<QPushButton>("Indietro").isEnabled())
          .toStdString();
    };
    EXPECT_EQ(user.Wizard().windowTitle(), Q("Scan Network"));
    EXPECT_EQ(state(), "0 Next > 1 0");
    user.Click("Avanti");
    EXPECT_EQ(state(), "1 Next > 0 1");
    user.Tick("OS2");
    user.Click("Avanti");
    user.AwaitScan();
    EXPECT_EQ(state(), "2 Next > 1 1");
    user.Click("Avanti");
    EXPECT_EQ(state(), "3 Next > 1 1");
    user.Click("Avanti");
    EXPECT_EQ(state(), "4 Finish 1 1");
    EXPECT_TRUE(user.Find<QLabel>("importState").text().startsWith(Q("No server is ticked")));
    user.Click("Indietro");
    EXPECT_EQ(state(), "3 Next > 1 1");
    for (int back = 0; back < 3; ++back) user.Click("Indietro");
    EXPECT_EQ(state(), "0 Next > 1 0");
    user.Click("Annulla");
    EXPECT_FALSE(user.Wizard().isVisible());
  });
  EXPECT_EQ(*network.searches, 1);
}

TEST_F(Pages, ChosenSystemsDecideWhatIsListed) {
  // Boxes that are clicked, one after another, and the rows of page 2; null: it cannot be reached.
  const std::pair<const char*, const char*> choices[] = {{"", nullptr},
                                                         {"OS1 OS3 OS1 OS3", nullptr},
                                                         {"OS1", "alpha|NT Server|10.0.0.1\nMIKE|NT Server|10.0.0.40"},
                                                         {"OS2", "zulu|NT Workstation|10.0.0.2"},
                                                         {"OS3", "november|Windows 98|10.0.0.3"},
                                                         {"OS1 OS2 OS3", kAllRows}};
  for (const auto& [boxes, rows] : choices) {
    SCOPED_TRACE(boxes);
    Use([&, boxes = boxes, rows = rows](const WizardHands& user) {
      user.Click("Avanti");
      user.Tick(boxes);
      ASSERT_EQ(user.Find<QPushButton>("Avanti").isEnabled(), rows != nullptr);
      if (rows == nullptr) return;
      user.Click("Avanti");
      user.AwaitScan();
      EXPECT_EQ(user.Rows("SERVERList"), rows);
    });
  }
}

TEST_F(Pages, SayWhatIsKnownOfAMachineAndWhyOthersAreMissing) {
  Use([](const WizardHands& user) {
    user.GoToServers("OS1 OS2");
    const auto& list = user.Find<QTreeWidget>("SERVERList");
    EXPECT_EQ(list.topLevelItem(0)->toolTip(2), Q("<qt>Seen by NetBIOS (workgroup &lt;b&gt;LAB&lt;/b&gt;)</qt>"));
    EXPECT_TRUE(list.topLevelItem(1)->toolTip(0).startsWith(
        Q("<qt>Already in the store: mike (10.0.0.4), in the group &quot;Lab&quot;.<br>Seen by")))
        << list.topLevelItem(1)->toolTip(0).toStdString();
    const auto& note = user.Find<QPlainTextEdit>("notListedText");
    EXPECT_FALSE(note.isVisible());
    EXPECT_EQ(user.Find<QToolButton>("notListed").text(), Q("Not listed (3)"));
    user.Click("notListed");
    EXPECT_TRUE(note.isVisible());
    EXPECT_EQ(note.toPlainText().toStdString(),
              "november (10.0.0.3) has an operating system that was not selected: Windows 98.\n"
              "nowhere was seen, but its address is not known.\n"
              "quiet (10.0.0.5) was seen, but did not answer the echo.\n"
              "The note of a source.");
  });
}

TEST_F(Pages, TickByKeyboardAllThatIsNew) {
  Use([](const WizardHands& user) {
    user.GoToServers();
    auto& list = user.Find<QTreeWidget>("SERVERList");
    const auto selectAll = [&] { QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier); };
    user.TickRow("SERVERList", "MIKE");
    selectAll();
    EXPECT_EQ(user.Rows("SERVERList"),
              "*alpha|NT Server|10.0.0.1\n*MIKE|NT Server|10.0.0.40\n*november|Windows 98|10.0.0.3\n"
              "*zulu|NT Workstation|10.0.0.2")
        << "what the user ticked himself stays";
    EXPECT_EQ(user.Find<QLabel>("scanState").text(), Q("4 machines listed, 4 ticked."));
    selectAll();
    EXPECT_EQ(user.Rows("SERVERList"), kAllRows);
    selectAll();
    EXPECT_EQ(user.Find<QLabel>("scanState").text(), Q("4 machines listed, 3 ticked."));
  });
}

TEST_F(Pages, ASearchCanBeStoppedLeftAndBegunAgain) {
  *network.held = true;
  Use([this](const WizardHands& user) {
    user.Click("Avanti");
    user.Tick("OS1 OS2 OS3");
    user.Click("Avanti");
    EXPECT_FALSE(user.Find<QPushButton>("Avanti").isEnabled());
    const auto& state = user.Find<QLabel>("scanState");
    EXPECT_TRUE(QTest::qWaitFor([&] { return state.text().endsWith(Q("5 machines seen.")); }, 4000))
        << state.text().toStdString();
    user.Click("Indietro");
    EXPECT_EQ(user.VisiblePage(), 1);
    EXPECT_TRUE(user.Find<QPushButton>("Avanti").isEnabled());
    user.Click("Avanti");
    EXPECT_EQ(user.Rows("SERVERList"), "");
    user.Click("scanStop");
    user.AwaitScan();
    EXPECT_TRUE(state.text().endsWith(Q("The search ended early."))) << state.text().toStdString();
    EXPECT_NE(user.Rows("SERVERList"), "");
    user.Click("Indietro");
    user.Click("Avanti");
    EXPECT_EQ(user.Rows("SERVERList"), "");
    user.Click("Annulla");
  });
  EXPECT_EQ(*network.searches, 3);
  EXPECT_EQ(Stored(), "mike 10.0.0.4");
}

TEST_F(Pages, AnEmptyNetworkChangesNothing) {
  network.machines.clear();
  Use([](const WizardHands& user) {
    user.GoToServers();
    EXPECT_EQ(user.Find<QLabel>("scanState").text(), Q("No machine was found that can be listed."));
    for (int page = 2; page < 5; ++page) user.Click("Avanti");
    EXPECT_FALSE(user.Wizard().isVisible());
  });
  EXPECT_EQ(Stored(), "mike 10.0.0.4");
  EXPECT_EQ(InTree(), "mike");
}

TEST_F(Pages, AStoreThatFailsIsReportedUnderTheProcedure) {
  stores.ThrowFrom(Q("SystemConfig.GetTestTypes"));
  stores.ThrowFrom(Q("ServerStore.GetAllServers"));
  dialogs.ExpectError(Q("store fault(ScanWizard:ShowTests)"));
  Use([&](const WizardHands& user) {
    EXPECT_EQ(user.Rows("TESTList"), "");
    dialogs.ExpectError(Q("store fault(ScanWizard:ScanNetwork)"));
    user.GoToServers();
    EXPECT_EQ(user.Rows("SERVERList"), "");
  });
  EXPECT_EQ(*network.searches, 0);
}

TEST_F(Pages, WithoutAGroupTheWizardDoesNotOpen) {
  tree.Select(Q("_SERVER_2"));
  dialogs.ExpectError(Q("No server group is selected.(ScanWizard:Form_Load)"));
  ScanWizard({&window, stores, tree, *this, paths, images, [this] { return network.Setup(); }}).Run();
}

}  // namespace
}  // namespace quarl::netscan
