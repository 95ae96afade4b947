// Copies of the store's content: backup, restore, the saved log.
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include "store/StoreFixture.h"

namespace quarl::store {
namespace {

class CopyTest : public ::testing::Test {
 protected:
  QString Groups() { return Column(stores_.Groups().GetGroups(0), "GroupName"); }
  QString RestoreError(const QString& backup) {
    return ErrorOf([&] { SqlStores::Restore(folder_.Setup(), backup); });
  }

  StoreFolder folder_;
  std::unique_ptr<SqlStores> owned_ = std::make_unique<SqlStores>(folder_.Setup());
  SqlStores& stores_ = *owned_;
  const QString backup_ = folder_.Path(Q("copy.db"));
};

TEST_F(CopyTest, ABackupIsRestoredUnderTheFeetOfItsUsers) {
  ASSERT_GT(stores_.Groups().AddGroup(Q("kept"), {}), 0);
  stores_.Backup(backup_);
  EXPECT_EQ(AskSql(backup_, "PRAGMA journal_mode"), Q("delete"));
  ASSERT_GT(stores_.Groups().AddGroup(Q("later"), {}), 0);
  const qint64 revision = stores_.Configurations().Read().revision;
  SqlStores other(folder_.Setup());
  EXPECT_EQ(Column(other.Groups().GetGroups(0), "GroupName"), Q("kept later"));

  SqlStores::Restore(folder_.Setup(), backup_);
  EXPECT_EQ(Groups(), Q("kept"));
  EXPECT_EQ(Column(other.Groups().GetGroups(0), "GroupName"), Q("kept"));
  EXPECT_GT(stores_.Configurations().Read().revision, revision);
  EXPECT_GT(other.Groups().AddGroup(Q("next"), {}), 0);
  EXPECT_EQ(Groups(), Q("kept next"));
}

TEST_F(CopyTest, ABackupIsWrittenWholeOrNotAtAll) {
  ASSERT_GT(stores_.Groups().AddGroup(Q("g"), {}), 0);
  const QString taken = folder_.Write(Q("taken"), "something");
  EXPECT_TRUE(ErrorOf([&] { stores_.Backup(taken); }).contains(taken));
  EXPECT_EQ(BytesOf(taken), QByteArray("something"));
  EXPECT_NE(ErrorOf([&] { stores_.Backup(folder_.Path(Q("no/folder"))); }), QString());
  EXPECT_NE(ErrorOf([&] { stores_.Backup(folder_.StorePath(), SqlStores::Existing::Replace); }), QString());
  stores_.Backup(taken, SqlStores::Existing::Replace);
  EXPECT_EQ(QDir(folder_.Path(QString())).entryList({Q(".quarl*")}, QDir::Files | QDir::Hidden).size(), 0);
  EXPECT_EQ(RestoreError(taken), QString());
  EXPECT_EQ(RestoreError(QDir::current().relativeFilePath(taken)), QString());
  EXPECT_EQ(Groups(), Q("g"));
}

TEST_F(CopyTest, WhatIsNoBackupLeavesTheStoreAsItWas) {
  ASSERT_GT(stores_.Groups().AddGroup(Q("g"), {}), 0);
  stores_.Backup(backup_);
  const QByteArray whole = BytesOf(backup_);
  QByteArray spoiled = whole;
  spoiled.replace(4 * 4096, 4096, QByteArray(4096, '\x7f'));
  QByteArray newer = whole;
  newer[63] = 3;
  for (const QByteArray& content :
       {QByteArray(), QByteArray("text"), whole.left(whole.size() - 4096), spoiled, newer}) {
    const QString bad = folder_.Write(Q("bad.db"), content);
    EXPECT_TRUE(RestoreError(bad).contains(bad));
    EXPECT_EQ(BytesOf(bad), content);
    EXPECT_EQ(Groups(), Q("g"));
  }
  EXPECT_NE(RestoreError(folder_.StorePath()), QString());
  EXPECT_NE(RestoreError(folder_.Path(Q("missing"))), QString());
}

TEST_F(CopyTest, AWholeFileThatIsNoStoreLeavesTheStoreAsItWas) {
  ASSERT_GT(stores_.Groups().AddGroup(Q("g"), {}), 0);
  ASSERT_TRUE(stores_.Groups().SetDefaultSchedule({}));
  stores_.Backup(backup_);
  const QByteArray whole = BytesOf(backup_);
  for (const char* spoil :
       {"DROP TABLE store_properties", "DROP TABLE log_records", "ALTER TABLE groups ADD COLUMN more TEXT",
        "DROP INDEX servers_tree", "UPDATE group_schedules SET start_date = 'some day'"}) {
    const QString bad = folder_.Write(Q("bad.db"), whole);
    RunSql(bad, spoil);
    EXPECT_TRUE(RestoreError(bad).contains(bad)) << spoil;
    EXPECT_EQ(Groups(), Q("g")) << spoil;
  }
}

TEST_F(CopyTest, ADamagedStoreIsPutAsideAndAMissingOneMade) {
  ASSERT_GT(stores_.Groups().AddGroup(Q("g"), {}), 0);
  stores_.Backup(backup_);
  owned_.reset();
  ASSERT_TRUE(QFile::resize(folder_.StorePath(), 4096));
  const QByteArray damaged = BytesOf(folder_.StorePath());
  ASSERT_EQ(RestoreError(backup_), QString());
  const QStringList aside = QDir(folder_.Path(QString())).entryList({Q("quarl.db.damaged-*")});
  ASSERT_EQ(aside.size(), 1);
  EXPECT_EQ(BytesOf(folder_.Path(aside[0])), damaged);
  EXPECT_EQ(Column(SqlStores(folder_.Setup()).Groups().GetGroups(0), "GroupName"), Q("g"));

  ASSERT_TRUE(QFile::remove(folder_.StorePath()));
  ASSERT_EQ(RestoreError(backup_), QString());
  EXPECT_EQ(Column(SqlStores(folder_.Setup()).Groups().GetGroups(0), "GroupName"), Q("g"));
}

TEST_F(CopyTest, ADamagedStoreBehindALinkIsReplacedWhereItIs) {
  ASSERT_GT(stores_.Groups().AddGroup(Q("g"), {}), 0);
  stores_.Backup(backup_);
  const qint64 revision = stores_.Configurations().Read().revision;
  owned_.reset();
  const QString file = folder_.Write(Q("real/store.db"), BytesOf(folder_.StorePath()).left(4096));
  ASSERT_TRUE(QFile::remove(folder_.StorePath()) && QFile::link(file, folder_.StorePath()));
  folder_.Write(Q("real/store.db-journal"), {});
  ASSERT_EQ(RestoreError(backup_), QString());
  EXPECT_TRUE(QFileInfo(folder_.StorePath()).isSymLink());
  EXPECT_FALSE(QFile::exists(file + Q("-journal")));
  EXPECT_EQ(QDir(folder_.Path(Q("real"))).entryList({Q("*.damaged-*")}).size(), 2);
  SqlStores restored(folder_.Setup());
  EXPECT_EQ(Column(restored.Groups().GetGroups(0), "GroupName"), Q("g"));
  EXPECT_EQ(restored.Configurations().Read().revision, revision + 1);
}

TEST_F(CopyTest, AStoreOfANewerVersionIsNotReplacedByABackup) {
  stores_.Open();
  stores_.Backup(backup_);
  RunSql(folder_.StorePath(), "PRAGMA user_version=3");
  EXPECT_TRUE(RestoreError(backup_).contains(Q("is of version 3")));
  EXPECT_EQ(AskSql(folder_.StorePath(), "PRAGMA user_version"), Q("3"));
}

TEST_F(CopyTest, TheSavedLogHasOneEscapedLineARecord) {
  folder_.clock.now = 1'700'000'000'123;
  ASSERT_TRUE(stores_.Log().AddLog(1, Q("a\tb\nc\r\\d\u0001\u0085\u2028\u00e9")));
  ASSERT_TRUE(stores_.Log().AddLog(3, {}));
  const QString path = folder_.Path(Q("saved.log"));
  ASSERT_TRUE(stores_.Log().SaveLog(path));
  const QStringList lines = QString::fromUtf8(BytesOf(path)).split(u'\n');
  ASSERT_EQ(lines.size(), 3);
  const QStringList fields = lines[0].split(u'\t');
  ASSERT_EQ(fields.size(), 3);
  EXPECT_EQ(QDateTime::fromString(fields[0], Qt::ISODateWithMs).toMSecsSinceEpoch(), folder_.clock.now);
  EXPECT_TRUE(fields[0].contains(QRegularExpression(Q("[+-]\\d\\d:\\d\\d$")))) << fields[0].toStdString();
  EXPECT_EQ(fields[1], Q("information"));
  EXPECT_EQ(fields[2], Q("a\\tb\\nc\\r\\\\d\\u0001\\u0085\\u2028\u00e9"));
  EXPECT_TRUE(lines[1].endsWith(Q("\terror\t")));
}

TEST_F(CopyTest, ALogThatCannotBeSavedLeavesWhatWasThere) {
  ASSERT_TRUE(stores_.Log().AddLog(1, Q("new")));
  EXPECT_FALSE(stores_.Log().SaveLog(QString()));
  EXPECT_FALSE(stores_.Log().SaveLog(folder_.Path(QString())));
  EXPECT_FALSE(stores_.Log().SaveLog(folder_.Path(Q("no/folder.log"))));
  const QString path = folder_.Write(Q("old.log"), "old");
  RunSql(folder_.StorePath(), "UPDATE log_records SET logged_ms = 9223372036854775807");
  EXPECT_THROW(std::ignore = stores_.Log().SaveLog(path), StoreError);
  EXPECT_EQ(BytesOf(path), QByteArray("old"));
}

}  // namespace
}  // namespace quarl::store
