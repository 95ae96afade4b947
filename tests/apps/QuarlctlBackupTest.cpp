#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <cstdlib>

#include "apps/QuarlctlRun.h"
#include "store/sql/SqlStores.h"

namespace quarl::test {
namespace {

TEST_F(QuarlctlTest, BackupOfAStoreInUseHoldsItsLastChange) {
  MustCtl("init --starter");
  store::SqlStores inUse(store::SqlSetup{.location = store::StoreLocation::File(Path(Q("store.db"))),
                                         .paths = InstallPaths(Path(Q("."))),
                                         .inspector = nullptr});
  ASSERT_GT(inUse.Groups().AddGroup(Q("only in the log"), QString()), 0);
  ASSERT_TRUE(QFileInfo::exists(Path(Q("store.db-wal")))) << "the store is not in use";
  const QByteArray before = MustCtl("export");

  EXPECT_TRUE(MustCtl("backup copy.db").contains("copy.db"));
  EXPECT_EQ(QFileInfo(Path(Q("copy.db"))).permissions() & ~(QFile::ReadOwner | QFile::WriteOwner),
            QFile::ReadUser | QFile::WriteUser);
  ASSERT_GT(inUse.Groups().AddGroup(Q("later"), QString()), 0);

  // Into the store that is still in use, and into a new one.
  MustCtl("restore copy.db --yes");
  EXPECT_EQ(MustCtl("export"), before);
  EXPECT_EQ(inUse.Groups().GetGroups(0).RowCount(), 1U);
  MustCtl({Q("--store"), Store(Q("new.db")), Q("restore"), Q("copy.db")});
  EXPECT_EQ(MustCtl({Q("--store"), Store(Q("new.db")), Q("export")}), before);
}

TEST_F(QuarlctlTest, BackupKeepsWhatIsThere) {
  MustCtl("init");
  WriteFile(Q("old"), "precious");
  ASSERT_TRUE(QDir(Path(Q("."))).mkdir(Q("folder")));
  for (const char* target : {"old", "folder", "missing/x.db", "store.db", "/dev/full", "old/x.db"}) {
    SCOPED_TRACE(target);
    const Ended run = Ctl({Q("backup"), Q(target)});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.startsWith("quarlctl: ")) << run.err.toStdString();
  }
  EXPECT_EQ(Ctl("backup store.db --force").code, 1) << "the store is no place for its backup";
  EXPECT_EQ(Content(Q("old")), "precious");
  EXPECT_EQ(FilesBeside(), Words("folder old store.db"));
  MustCtl("backup old --force");
  MustCtl("restore old --yes");
}

TEST_F(QuarlctlTest, RestoreRefusesWhatIsNoBackup) {
  MustCtl("init --starter");
  MustCtl("backup good.db");
  const QByteArray good = Content(Q("good.db"));
  const QByteArray before = MustCtl("export");
  // More of what is no backup is in the tests of the store.
  const QByteArray foreign = QByteArray(good).replace(68, 4, "\0\0\0\x01", 4);
  for (const QByteArray& bytes : {QByteArray(), before, good.left(good.size() / 2), foreign}) {
    SCOPED_TRACE(bytes.left(20).toStdString());
    WriteFile(Q("bad.db"), bytes);
    for (const QString& store : {Store(Q("store.db")), Store(Q("none.db"))}) {
      ExpectFailure(Ctl({Q("--store"), store, Q("restore"), Q("bad.db"), Q("--yes")}), "bad.db");
    }
    EXPECT_EQ(MustCtl("export"), before);
    EXPECT_EQ(Content(Q("bad.db")), bytes);
    EXPECT_FALSE(FilesBeside().contains(Q("none.db")));
  }
  EXPECT_EQ(Ctl("restore missing.db --yes").code, 1);
  EXPECT_EQ(MustCtl("export"), before);
}

TEST_F(QuarlctlTest, RestoreAsksBeforeItReplaces) {
  MustCtl("init --starter");
  MustCtl("backup copy.db");
  MustCtl("import -", R"({"format":"quarl-configuration","version":1,"groups":[{"name":"new"}]})");
  const QByteArray before = MustCtl("export");
  const Ended refused = Ctl("restore copy.db", "y\n");
  EXPECT_EQ(refused.code, 1) << "nobody can be asked through a pipe";
  EXPECT_TRUE(refused.err.contains("--yes")) << refused.err.toStdString();
  EXPECT_EQ(MustCtl("export"), before);
}

TEST_F(QuarlctlTest, RestoreTakesItsAnswerFromATerminal) {
  MustCtl("init --starter");
  MustCtl("backup copy.db");
  const QByteArray saved = MustCtl("export");
  MustCtl("import -", R"({"format":"quarl-configuration","version":1,"groups":[{"name":"new"}]})");
  const QByteArray changed = MustCtl("export");
  const struct {
    QByteArray answer;
    int code;
    QByteArray expected;
  } cases[] = {{"n\n", 1, changed}, {"\n", 1, changed}, {"\x04", 1, changed}, {"yes\n", 0, saved}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.answer.toStdString());
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const QByteArray name = ptsname(terminal);
    const int user = open(name.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(write(terminal, each.answer.constData(), static_cast<std::size_t>(each.answer.size())),
              each.answer.size());
    beforeStart_ = [user] {
      if (dup2(user, STDIN_FILENO) < 0 || dup2(user, STDERR_FILENO) < 0) _exit(99);
    };
    EXPECT_EQ(Ctl("restore copy.db").code, each.code);
    beforeStart_ = nullptr;
    EXPECT_EQ(MustCtl("export"), each.expected);
    close(user);
    close(terminal);
  }
}

TEST_F(QuarlctlTest, RestoreTakesTheStoreOfADamagedFile) {
  MustCtl("init --starter");
  const QByteArray before = MustCtl("export");
  MustCtl("backup copy.db");
  WriteFile(Q("store.db"), Content(Q("copy.db")).replace(4096, 8192, QByteArray(8192, '\xa5')));
  EXPECT_EQ(Ctl("list").code, 1);
  MustCtl("restore copy.db --yes");
  EXPECT_EQ(MustCtl("export"), before);
  EXPECT_EQ(FilesBeside().filter(Q(".damaged-")).size(), 1);
}

}  // namespace
}  // namespace quarl::test
