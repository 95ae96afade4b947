#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <cstdlib>

#include "apps/QuarlctlRun.h"
#include "store/sql/SqlStores.h"

namespace quarl::test {
namespace {

QString S(const char* text) {
  return QString::fromUtf8(text);
}

TEST_F(QuarlctlTest, BackupOfAStoreInUseHoldsItsLastChange) {
  MustCtl({S("init"), S("--starter")});
  store::SqlStores inUse(store::SqlSetup{.location = store::StoreLocation::File(Path(S("store.db"))),
                                         .paths = InstallPaths(Path(S("."))),
                                         .inspector = nullptr});
  ASSERT_GT(inUse.Groups().AddGroup(S("only in the log"), QString()), 0);
  ASSERT_TRUE(QFileInfo::exists(Path(S("store.db-wal")))) << "the store is not in use";
  const QByteArray before = MustCtl({S("export")});

  EXPECT_TRUE(MustCtl({S("backup"), S("copy.db")}).contains("copy.db"));
  EXPECT_EQ(QFileInfo(Path(S("copy.db"))).permissions() & ~(QFile::ReadOwner | QFile::WriteOwner),
            QFile::ReadUser | QFile::WriteUser);
  ASSERT_GT(inUse.Groups().AddGroup(S("later"), QString()), 0);

  // Into the store that is still in use, and into a new one.
  MustCtl({S("restore"), S("copy.db"), S("--yes")});
  EXPECT_EQ(MustCtl({S("export")}), before);
  EXPECT_EQ(inUse.Groups().GetGroups(0).RowCount(), 1U);
  MustCtl({S("--store"), Store(S("new.db")), S("restore"), S("copy.db")});
  EXPECT_EQ(MustCtl({S("--store"), Store(S("new.db")), S("export")}), before);
}

TEST_F(QuarlctlTest, BackupKeepsWhatIsThere) {
  MustCtl({S("init")});
  WriteFile(S("old"), "precious");
  ASSERT_TRUE(QDir(Path(S("."))).mkdir(S("folder")));
  for (const char* target : {"old", "folder", "missing/x.db", "store.db", "/dev/full", "old/x.db"}) {
    SCOPED_TRACE(target);
    const Ended run = Ctl({S("backup"), S(target)});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.startsWith("quarlctl: ")) << run.err.toStdString();
  }
  EXPECT_EQ(Ctl({S("backup"), S("store.db"), S("--force")}).code, 1) << "the store is no place for its backup";
  EXPECT_EQ(Content(S("old")), "precious");
  EXPECT_EQ(FilesBeside(), (QStringList{S("folder"), S("old"), S("store.db")}));
  MustCtl({S("backup"), S("old"), S("--force")});
  MustCtl({S("restore"), S("old"), S("--yes")});
}

TEST_F(QuarlctlTest, RestoreRefusesWhatIsNoBackup) {
  MustCtl({S("init"), S("--starter")});
  MustCtl({S("backup"), S("good.db")});
  const QByteArray good = Content(S("good.db"));
  const QByteArray before = MustCtl({S("export")});
  const auto patched = [&](qsizetype offset, const char* bytes) {
    return QByteArray(good).replace(offset, 4, bytes, 4);
  };
  const struct {
    const char* name;
    QByteArray bytes;
  } cases[] = {
      {"Empty", ""},
      {"Text", "this is a text\n"},
      {"Export", before},
      {"Truncated", good.left(good.size() / 2)},
      {"NewerVersion", patched(60, "\0\0\0\x63")},
      {"ForeignDatabase", patched(68, "\0\0\0\x01")},
      {"DamagedPage", QByteArray(good).replace(4096, 8192, QByteArray(8192, '\xa5'))},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    WriteFile(S("bad.db"), each.bytes);
    for (const QString& store : {Store(S("store.db")), Store(S("none.db"))}) {
      const Ended run = Ctl({S("--store"), store, S("restore"), S("bad.db"), S("--yes")});
      EXPECT_EQ(run.code, 1);
      EXPECT_EQ(run.out, "");
      EXPECT_TRUE(run.err.contains("bad.db")) << run.err.toStdString();
    }
    EXPECT_EQ(MustCtl({S("export")}), before);
    EXPECT_EQ(Content(S("bad.db")), each.bytes);
    EXPECT_FALSE(FilesBeside().contains(S("none.db")));
  }
  EXPECT_EQ(Ctl({S("restore"), S("missing.db"), S("--yes")}).code, 1);
  EXPECT_EQ(MustCtl({S("export")}), before);
}

TEST_F(QuarlctlTest, RestoreAsksBeforeItReplaces) {
  MustCtl({S("init"), S("--starter")});
  MustCtl({S("backup"), S("copy.db")});
  MustCtl({S("import"), S("-")}, R"({"format":"quarl-configuration","version":1,"groups":[{"name":"new"}]})");
  const QByteArray before = MustCtl({S("export")});
  const Ended refused = Ctl({S("restore"), S("copy.db")}, "y\n");
  EXPECT_EQ(refused.code, 1) << "nobody can be asked through a pipe";
  EXPECT_TRUE(refused.err.contains("--yes")) << refused.err.toStdString();
  EXPECT_EQ(MustCtl({S("export")}), before);
}

TEST_F(QuarlctlTest, RestoreTakesItsAnswerFromATerminal) {
  MustCtl({S("init"), S("--starter")});
  MustCtl({S("backup"), S("copy.db")});
  const QByteArray saved = MustCtl({S("export")});
  MustCtl({S("import"), S("-")}, R"({"format":"quarl-configuration","version":1,"groups":[{"name":"new"}]})");
  const QByteArray changed = MustCtl({S("export")});
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
    EXPECT_EQ(Ctl({S("restore"), S("copy.db")}).code, each.code);
    beforeStart_ = nullptr;
    EXPECT_EQ(MustCtl({S("export")}), each.expected);
    close(user);
    close(terminal);
  }
}

TEST_F(QuarlctlTest, RestoreTakesTheStoreOfADamagedFile) {
  MustCtl({S("init"), S("--starter")});
  const QByteArray before = MustCtl({S("export")});
  MustCtl({S("backup"), S("copy.db")});
  WriteFile(S("store.db"), Content(S("copy.db")).replace(4096, 8192, QByteArray(8192, '\xa5')));
  EXPECT_EQ(Ctl({S("list")}).code, 1);
  MustCtl({S("restore"), S("copy.db"), S("--yes")});
  EXPECT_EQ(MustCtl({S("export")}), before);
  EXPECT_EQ(FilesBeside().filter(S(".damaged-")).size(), 1);
}

}  // namespace
}  // namespace quarl::test
