#include <sys/resource.h>

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <csignal>

#include "logs/LogCommands.h"
#include "tree/InteractionsRig.h"

namespace quarl::logs {
namespace {

using tree::Q;

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

class LogCommandsTest : public tree::InteractionsRig {
 protected:
  LogCommandsTest() {
    folder.Write(Q("saved/old.log"), "old\n");
    for (int i = 1; i <= 3; ++i) sql.Log().AddLog(static_cast<qint16>(i), Q("record %1\nnext").arg(i));
    Click("_LOG");
    calls.clear();
  }
  void Clear() {
    trap.Quiet("mLogClear_Click", [&] { commands.Clear(); });
  }
  void Save() {
    trap.Quiet("mLogSave_Click", [&] { commands.Save(); });
  }
  QString Log() { return store::Column(sql.Log().GetLogs(), "LogDescription"); }
  void AnswerClear(const char* button) {
    dialogs.ExpectBox({Q("warning"), Q("Warning"), Q("Are you sure to delete definitely the logs?")}, Q(button));
  }
  /// The user types a name into the file dialog and ends it with a button.
  void AnswerFileDialog(const QString& name, QDialogButtonBox::StandardButton button = QDialogButtonBox::Save) {
    dialogs.Expect(Q("CommonDialog"), [=](QWidget& widget) {
      auto& dialog = static_cast<QFileDialog&>(widget);
      EXPECT_EQ(dialog.windowTitle(), Q("Save log file"));
      EXPECT_EQ(dialog.nameFilters(), QStringList{Q("Log (*.log)")});
      dialog.findChild<QLineEdit*>(Q("fileNameEdit"))->setText(name);
      dialog.findChild<QDialogButtonBox*>()->button(button)->click();
    });
  }
  /// The user answers whether a file is to be overwritten.
  void AnswerOverwrite(QMessageBox::StandardButton button) {
    dialogs.Expect(QString(), [=](QWidget& widget) {
      auto* box = qobject_cast<QMessageBox*>(&widget);
      ASSERT_NE(box, nullptr);
      box->button(button)->click();
    });
  }
  void ExpectFailure() {
    dialogs.ExpectBox({Q("critical"), Q("Quarl Console"), Q("An error occured. The log has not been saved.")},
                      Q("OKButton"));
  }
  QStringList Files() const { return QDir(folder.Path(Q("saved"))).entryList(QDir::Files | QDir::Hidden); }

  LogCommands commands{stores, tree, *this, window};
};

TEST_F(LogCommandsTest, ClearingLeavesItsOwnRecord) {
  AnswerClear("YesButton");
  EXPECT_LE(Statements([&] { Clear(); }), 3U);
  EXPECT_EQ(Log(), Q("The log has been cleared successfully."));
  EXPECT_EQ(store::Column(sql.Log().GetLogs(), "IDSeverity"), Q("1"));
  EXPECT_EQ(Calls(), Q("options:_LOG+"));
  EXPECT_EQ(rows.rowCount(), 1);
}

TEST_F(LogCommandsTest, ClearingShowsTheNodeOfTheSelectedKey) {
  Click("_GROUP_1");
  calls.clear();
  AnswerClear("YesButton");
  Clear();
  EXPECT_EQ(Calls(), Q("options:_GROUP_1+"));
  Click("_LOG");
  selected.clear();  // as after a click on a log row
  calls.clear();
  AnswerClear("YesButton");
  Clear();
  EXPECT_EQ(Calls(), Q("options:_LOG+"));
  EXPECT_EQ(rows.rowCount(), 1);
}

TEST_F(LogCommandsTest, NoChangesNothing) {
  AnswerClear("NoButton");
  EXPECT_EQ(Statements([&] { Clear(); }), 0U);
  EXPECT_EQ(Calls(), QString());
}

TEST_F(LogCommandsTest, FailuresOfClearingAreSilent) {
  const QString before = Log();
  stores.ThrowFrom(Q("LogStore.ClearLogs"));
  AnswerClear("YesButton");
  Clear();
  EXPECT_EQ(Log(), before);
  EXPECT_EQ(stores.Calls(Q("LogStore.AddLog")), 0);
  EXPECT_EQ(Calls(), QString());
  EXPECT_EQ(rows.rowCount(), 3);
  stores.Heal();
  stores.RefuseFrom(Q("LogStore.ClearLogs"));
  AnswerClear("YesButton");
  Clear();
  EXPECT_EQ(stores.Calls(Q("LogStore.AddLog")), 1);
}

TEST_F(LogCommandsTest, SavesUnderTheNameAsTyped) {
  AnswerFileDialog(folder.Path(Q("saved/tägliches")));
  Save();
  EXPECT_EQ(Files(), (QStringList{Q("old.log"), Q("tägliches")}));
  const QString text = QString::fromUtf8(store::BytesOf(folder.Path(Q("saved/tägliches"))));
  const QStringList lines = text.split(u'\n');
  ASSERT_EQ(lines.size(), 4);
  const QRegularExpression line(
      Q("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}(Z|[+-]\\d\\d:\\d\\d)\t\\w+\trecord \\d\\\\nnext$"));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(line.match(lines[i]).hasMatch()) << lines[i].toStdString();
  EXPECT_EQ(Calls(), QString());
}

TEST_F(LogCommandsTest, AsksBeforeItOverwrites) {
  const QString old = folder.Path(Q("saved/old.log"));
  AnswerFileDialog(old);
  AnswerOverwrite(QMessageBox::Yes);
  Save();
  EXPECT_NE(store::BytesOf(old), "old\n");
  EXPECT_EQ(store::BytesOf(old).count('\n'), 3);
}

TEST_F(LogCommandsTest, CancelSavesNothing) {
  AnswerFileDialog(folder.Path(Q("saved/new.log")), QDialogButtonBox::Cancel);
  Save();
  EXPECT_EQ(stores.Calls(Q("LogStore.SaveLog")), 0);
  EXPECT_EQ(Files(), QStringList{Q("old.log")});
}

TEST_F(LogCommandsTest, FullDiskLeavesTheOldFile) {
  for (int i = 0; i < 2000; ++i) sql.Log().AddLog(1, QString(40, u'x'));
  const QString old = folder.Path(Q("saved/old.log"));
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
  stores.RefuseFrom(Q("LogStore.SaveLog"));
  AnswerFileDialog(folder.Path(Q("saved/new.log")));
  ExpectFailure();
  Save();
  dialogs.Verify();
  stores.ThrowFrom(Q("LogStore.SaveLog"));
  AnswerFileDialog(folder.Path(Q("saved/new.log")));
  Save();
  EXPECT_EQ(Files(), QStringList{Q("old.log")});
  EXPECT_EQ(Calls(), QString());
}

}  // namespace
}  // namespace quarl::logs
