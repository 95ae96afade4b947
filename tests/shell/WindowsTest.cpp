#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>

#include "shell/MainFixture.h"
#include "shell/frmSplash.h"

namespace quarl::shell {
namespace {

class WindowsTest : public MainFixture {
 protected:
  WindowsTest() { QCoreApplication::setApplicationVersion(Q("12.3.45")); }

  void WriteGuide(const char* text) {
    QDir(Folder()).mkpath(Q("docs"));
    QFile guide(Folder("/docs/user-guide.md"));
    ASSERT_TRUE(guide.open(QIODevice::WriteOnly));
    guide.write(text);
  }
  QString LabelText(const QWidget& window, const char* name) { return window.findChild<QLabel*>(Q(name))->text(); }
  QWidget* Help() { return Window().findChild<QWidget*>(Q("frmHelp")); }
};

TEST_F(WindowsTest, SplashShowsVersionAndGoesAtAKeyOrAfterItsTime) {
  for (const bool byKey : {true, false}) {
    QPointer<frmSplash> splash = new frmSplash;
    splash->ShowAtOnce();
    ASSERT_TRUE(splash->isVisible());
    EXPECT_EQ(LabelText(*splash, "lblVersion"), Q("Version 12.3.45"));
    EXPECT_TRUE(LabelText(*splash, "lblCopyright").startsWith(Q("Copyright")));
    EXPECT_FALSE(splash->findChild<QLabel*>(Q("imgLogo"))->pixmap().isNull());
    auto* timer = splash->findChild<QTimer*>(Q("closeTimer"));
    EXPECT_EQ(timer->interval(), 4000);
    EXPECT_TRUE(timer->isActive());
    if (byKey) {
      QTest::keyClick(splash.data(), Qt::Key_Space);
    } else {
      timer->start(0);
    }
    QTRY_VERIFY_WITH_TIMEOUT(splash.isNull(), 2000);
  }
}

TEST_F(WindowsTest, StartUpShowsTheSplashOverTheWindow) {
  Start();
  auto* splash = Window().findChild<QWidget*>(Q("frmSplash"));
  ASSERT_NE(splash, nullptr);
  EXPECT_TRUE(splash->isVisible());
  EXPECT_FALSE(splash->isModal());
}

TEST_F(WindowsTest, TheScanWizardOpensForTheSelectedGroup) {
  InstallTypes();
  Start();
  dialogs_.Expect(Q("ScanWizard"), [this](QWidget& wizard) {
    EXPECT_EQ(wizard.parentWidget(), &Window());
    EXPECT_EQ(wizard.findChild<QTreeWidget*>(Q("TESTList"))->topLevelItemCount(), 2);
    testing::DialogDriver::Click(Q("Annulla"))(wizard);
  });
  Action(Q("mGroupScanNet"))->trigger();
  dialogs_.Verify();
}

TEST_F(WindowsTest, AboutNamesTheProgramAndItsPages) {
  Start();
  dialogs_.Expect(Q("frmAbout"), [&](QWidget& about) {
    EXPECT_EQ(LabelText(about, "lblName"), Q("Quarl Console"));
    EXPECT_EQ(LabelText(about, "lblVersion"), Q("Version 12.3.45"));
    for (const char* link : {"lblSupport", "lblWeb"}) {
      EXPECT_TRUE(LabelText(about, link).contains(Q("href=\"https://"))) << link;
      EXPECT_TRUE(about.findChild<QLabel*>(Q(link))->openExternalLinks());
    }
    testing::DialogDriver::Click(Q("OKButton"))(about);
  });
  Action(Q("mAbout"))->trigger();
}

TEST_F(WindowsTest, HelpShowsTheInstalledGuideOnceAndFindsInIt) {
  WriteGuide(
      "# Guide\n\nSee [the store](#where-the-store-is).\n\n"
      "## Where the store is\n\nIn a *file*.\n");
  Start();
  Action(Q("mHelpGuide"))->trigger();
  ASSERT_NE(Help(), nullptr);
  QPointer<QWidget> help = Help();
  auto* guide = help->findChild<QTextBrowser*>(Q("txtGuide"));
  EXPECT_TRUE(guide->toPlainText().contains(Q("Where the store is")));
  EXPECT_FALSE(guide->toPlainText().contains(u'#'));
  Action(Q("mHelpGuide"))->trigger();
  EXPECT_EQ(Window().findChildren<QWidget*>(Q("frmHelp")).size(), 1);

  QTest::keyClicks(help->findChild<QLineEdit*>(Q("txtFind")), Q("FILE"));
  QTest::keyClick(help->findChild<QLineEdit*>(Q("txtFind")), Qt::Key_Return);
  EXPECT_EQ(guide->textCursor().selectedText(), Q("file"));
  EXPECT_EQ(LabelText(*help, "lblFound"), QString());
  QTest::keyClicks(help->findChild<QLineEdit*>(Q("txtFind")), Q("xyz"));
  QTest::mouseClick(help->findChild<QPushButton*>(Q("FindNextButton")), Qt::LeftButton);
  EXPECT_EQ(LabelText(*help, "lblFound"), Q("Not found"));

  Q_EMIT guide->anchorClicked(QUrl(Q("#where-the-store-is")));
  EXPECT_EQ(guide->textCursor().block().text(), Q("Where the store is"));
  QTest::mouseClick(help->findChild<QPushButton*>(Q("CloseButton")), Qt::LeftButton);
  QTRY_VERIFY_WITH_TIMEOUT(help.isNull(), 2000);
}

TEST_F(WindowsTest, AGuideThatIsNotThereIsReported) {
  Start();
  dialogs_.ExpectError(Q("(Main:mHelpGuide_Click)"));
  Action(Q("mHelpGuide"))->trigger();
  ASSERT_EQ(dialogs_.Boxes().size(), 1U);
  EXPECT_TRUE(dialogs_.Boxes()[0].text.contains(Folder("/docs/user-guide.md")));
  EXPECT_EQ(Help(), nullptr);
}

TEST_F(WindowsTest, QuitAndCloseEndTheProgramAtOnce) {
  WriteGuide("# Guide\n");
  const std::function<void()> ways[] = {[&] { Action(Q("mQuit"))->trigger(); }, [&] { Window().close(); }};
  for (const auto& way : ways) {
    Start();
    Action(Q("mHelpGuide"))->trigger();
    QTimer::singleShot(0, &Window(), way);
    QTimer::singleShot(5000, &Window(), [] { QCoreApplication::exit(99); });
    EXPECT_EQ(QApplication::exec(), 0);
    for (const QWidget* window : QApplication::topLevelWidgets()) EXPECT_FALSE(window->isVisible());
  }
}

}  // namespace
}  // namespace quarl::shell
