#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <functional>

#include "base/Clock.h"
#include "store/sql/SqlStores.h"
#include "support/Text.h"

namespace quarl::store {

class SteppedClock : public Clock {
 public:
  qint64 NowMs() const override { return now; }
  qint64 now = 1'700'000'000'000;
};

/// A folder with the layout of an installation, and stores in it. Files that begin with "MODULE" count as modules.
class StoreFolder {
 public:
  StoreFolder();
  QString Path(const QString& name) const { return folder_.filePath(name); }
  QString StorePath() const { return Path(Q("quarl.db")); }
  SqlSetup Setup(const StoreLocation& location) const;
  SqlSetup Setup() const { return Setup(StoreLocation::File(StorePath())); }
  InstallPaths Paths() const { return InstallPaths(Path(Q("app"))); }
  /// Writes a file, in folders that are made, and gives its path.
  QString Write(const QString& name, const QByteArray& content) const;
  /// Installs a type whose module lies in no module folder yet; the type's id.
  qint32 AddTestType(Stores& stores, const QString& name) const;
  qint32 AddAlertType(Stores& stores, const QString& name) const;

  mutable SteppedClock clock;

 private:
  QTemporaryDir folder_;
};

/// What a store lies in, and whether what one user writes is read by another.
enum class Engine { Memory, File, TwoUsers };

/// Tests that hold over every engine.
class EngineTest : public ::testing::TestWithParam<Engine> {
 public:
  static std::string NameOf(const ::testing::TestParamInfo<Engine>& engine);

 protected:
  EngineTest();
  /// The one who reads what writer_ wrote.
  SqlStores& Reader() { return GetParam() == Engine::TwoUsers ? second_ : writer_; }

  StoreFolder folder_;
  SqlStores writer_, second_;
};

/// The values of a field, row by row, joined by blanks; "-" for Null. Rows from the cursor's place on.
QString Column(RecordSet rows, const char* field);
QByteArray BytesOf(const QString& path);
/// Runs SQL on a store file past the store, as the service or a broken program would.
void RunSql(const QString& path, const QByteArray& sql);
/// The first value of a query on a store file.
QString AskSql(const QString& path, const QByteArray& sql);
/// Writes over a part of a file.
void Patch(const QString& path, qint64 at, const QByteArray& bytes);
/// Where a store file has the records of its log, which neither the tree nor a list of groups reads.
qint64 PlaceOfLog(const QString& path);
/// The text of the StoreError that an operation throws; "" when it throws none.
QString ErrorOf(const std::function<void()>& operation);

}  // namespace quarl::store
