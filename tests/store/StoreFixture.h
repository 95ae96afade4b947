#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "base/Clock.h"
#include "store/sql/SqlStores.h"

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
  QString StorePath() const { return Path(QStringLiteral("quarl.db")); }
  SqlSetup Setup(const StoreLocation& location) const;
  SqlSetup Setup() const { return Setup(StoreLocation::File(StorePath())); }
  InstallPaths Paths() const { return InstallPaths(Path(QStringLiteral("app"))); }
  /// Writes a file, in folders that are made, and gives its path.
  QString Write(const QString& name, const QByteArray& content) const;
  /// Installs a type whose module lies in no module folder yet; the type's id.
  qint32 AddTestType(Stores& stores, const QString& name) const;
  qint32 AddAlertType(Stores& stores, const QString& name) const;

  mutable SteppedClock clock;

 private:
  QTemporaryDir folder_;
};

/// The values of a field, row by row, joined by blanks; "-" for Null. Rows from the cursor's place on.
QString Column(RecordSet rows, const char* field);
QByteArray BytesOf(const QString& path);
/// Runs SQL on a store file past the store, as the service or a broken program would.
void RunSql(const QString& path, const QByteArray& sql);
/// The first value of a query on a store file.
QString AskSql(const QString& path, const QByteArray& sql);
/// The text of the StoreError that an operation throws; "" when it throws none.
QString ErrorOf(const std::function<void()>& operation);

}  // namespace quarl::store
