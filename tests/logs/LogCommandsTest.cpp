#include <sys/resource.h>

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <csignal>

#include "shell/MainFixture.h"
#include "store/StoreFixture.h"

namespace quarl::shell {
namespace {

/// While it lives, no file can grow past some bytes, as on a full disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::ignore = std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  void (*handler_)(int);
};

class LogCommandsTest : public MainFixture {
 protected:
  LogCommandsTest() {
    QDir(Folder()).mkpath(Q("saved"));
    WriteOld();
    for (int i = 1; i <= 3; ++i) stores_.Log().AddLog(static_cast<qint16>(i), Q("record %1\nnext").arg(i));
    Start();
    ClickNode(Q("_LOG"));
  }
  void WriteOld() const {
    QFile file(Saved("old.log"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("old\n") == 4);
  }
  QString Saved(const char* name) const { return Folder("/saved/") + Q(name); }
  /// The user chooses the command and answers its question.
  void Clear(const char* answer = "YesButton") {
    ExpectQuestion("Are you sure to delete definitely the logs?", answer);
    Choose("mLogClear");
  }
  void Save() { Choose("mLogSave"); }
  QString Log() { return store::Column(stores_.Log().GetLogs(), "LogDescription"); }
  /// The user types a name into the file dialog and ends it with a button.
  void AnswerFileDialog(const QString& name, QDialogButtonBox::StandardButton button = QDialogButtonBox::Save) {
    dialogs_.Expect(Q("CommonDialog"), [=](QWidget& widget) {
      auto& dialog = static_cast<QFileDialog&>(widget);
      EXPECT_EQ(dialog.windowTitle(), Q("Save log file"));
      EXPECT_EQ(dialog.nameFilters(), QStringList{Q("Log (*.log)")});
      dialog.findChild<QLineEdit*>(Q("fileNameEdit"))->setText(name);
      dialog.findChild<QDialogButtonBox*>()->button(button)->click();
    });
  }
  /// The user answers whether a file is to be overwritten.
  void AnswerOverwrite(QMessageBox::StandardButton button) {
    dialogs_.Expect(QString(), [=](QWidget& widget) {
      auto* box = qobject_cast<QMessageBox*>(&widget);
      ASSERT_NE(box, nullptr);
      box->button(button)->click();
    });
  }
  void ExpectFailure() {
    dialogs_.ExpectBox({Q("critical"), Q("Quarl Console"), Q("An error occured. The log has not been saved.")});
  }
  QStringList Files() const { return QDir(Folder("/saved")).entryList(QDir::Files | QDir::Hidden); }
};

TEST_F(LogCommandsTest, ClearingLeavesItsOwnRecord) {
  EXPECT_LE(Statements([&] { Clear(); }), 3U);
  EXPECT_EQ(Log(), Q("The log has been cleared successfully."));
  EXPECT_EQ(store::Column(stores_.Log().GetLogs(), "IDSeverity"), Q("1"));
  ASSERT_EQ(Rows().rowCount(), 1);
  EXPECT_EQ(Rows().index(0, 0).data().toString(), Q("The log has been cleared successfully."));
}

TEST_F(LogCommandsTest, ClearingShowsTheNodeOfTheSelectedKey) {
  Click("_GROUP_0");
  AddServer("late");
  Clear();
  EXPECT_EQ(Rows().rowCount(), 1);
  EXPECT_EQ(Window().SelectedKey(), Q("_GROUP_0"));
  stores_.Log().AddLog(1, Q("more"));
  Click("_LOG");
  ClickRow(0);
  EXPECT_EQ(Window().SelectedKey(), QString());
  Clear();
  EXPECT_EQ(Window().SelectedKey(), Q("_LOG"));
  EXPECT_EQ(Rows().rowCount(), 1);
}

TEST_F(LogCommandsTest, NoChangesNothing) {
  EXPECT_EQ(Statements([&] { Clear("NoButton"); }), 0U);
}

TEST_F(LogCommandsTest, FailuresOfClearingAreSilent) {
  const QString before = Log();
  const int refills = Refills();
  faulty_.ThrowFrom(Q("LogStore.ClearLogs"));
  Clear();
  EXPECT_EQ(Log(), before);
  EXPECT_EQ(faulty_.Calls(Q("LogStore.AddLog")), 0);
  EXPECT_EQ(Refills(), refills);
  EXPECT_EQ(Rows().rowCount(), 3);
  faulty_.Heal();
  faulty_.RefuseFrom(Q("LogStore.ClearLogs"));
  Clear();
  EXPECT_EQ(faulty_.Calls(Q("LogStore.AddLog")), 1);
}

TEST_F(LogCommandsTest, SavesUnderTheNameAsTyped) {
  AnswerFileDialog(Saved("tägliches"));
  Save();
  EXPECT_EQ(Files(), (Words("old.log tägliches")));
  const QString text = QString::fromUtf8(store::BytesOf(Saved("tägliches")));
  const QStringList lines = text.split(u'\n');
  ASSERT_EQ(lines.size(), 4);
  const QRegularExpression line(
      Q("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}(Z|[+-]\\d\\d:\\d\\d)\t\\w+\trecord \\d\\\\nnext$"));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(line.match(lines[i]).hasMatch()) << lines[i].toStdString();
}

TEST_F(LogCommandsTest, AsksBeforeItOverwrites) {
  const QString old = Saved("old.log");
  AnswerFileDialog(old);
  AnswerOverwrite(QMessageBox::Yes);
  Save();
  EXPECT_NE(store::BytesOf(old), "old\n");
  EXPECT_EQ(store::BytesOf(old).count('\n'), 3);
}

TEST_F(LogCommandsTest, CancelSavesNothing) {
  AnswerFileDialog(Saved("new.log"), QDialogButtonBox::Cancel);
  Save();
  EXPECT_EQ(faulty_.Calls(Q("LogStore.SaveLog")), 0);
  EXPECT_EQ(Files(), QStringList{Q("old.log")});
}

TEST_F(LogCommandsTest, FullDiskLeavesTheOldFile) {
  {
    const auto change = stores_.BeginChange();
    for (int i = 0; i < 2000; ++i) stores_.Log().AddLog(1, QString(40, u'x'));
    change->Commit();
  }
  const QString old = Saved("old.log");
  AnswerFileDialog(old);
  AnswerOverwrite(QMessageBox::Yes);
  ExpectFailure();
  {
    const FullDisk disk(8192);
    Save();
  }
  EXPECT_EQ(store::BytesOf(old), "old\n");
  EXPECT_EQ(Files(), QStringList{Q("old.log")});
}

TEST_F(LogCommandsTest, FailedSaveIsReportedAndAnErrorIsNot) {
  faulty_.RefuseFrom(Q("LogStore.SaveLog"));
  AnswerFileDialog(Saved("new.log"));
  ExpectFailure();
  Save();
  dialogs_.Verify();
  faulty_.ThrowFrom(Q("LogStore.SaveLog"));
  AnswerFileDialog(Saved("new.log"));
  Save();
  EXPECT_EQ(Files(), QStringList{Q("old.log")});
}

}  // namespace
}  // namespace quarl::shell
