#include "apps/quarlctl/StoreAccess.h"

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <cerrno>

#include "apps/quarlctl/CommandError.h"
#include "store/StoreError.h"
#include "store/sql/WholeFile.h"

namespace quarl::ctl {
namespace {

/// True also for what cannot be looked at: opening it tells why.
bool IsThere(const QString& path) {
  struct stat status {};
  return ::lstat(QFile::encodeName(path).constData(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

QString ExistsAlready(const QString& path) {
  return QStringLiteral("%1 exists already; nothing was changed.").arg(path);
}

/// A name beside the store's that nothing has, not even the rest of a run that was killed.
QString DraftOf(const QString& path) {
  QString draft;
  do {
    draft = QStringLiteral("%1.new-%2").arg(path).arg(QRandomGenerator::system()->generate(), 8, 16, QLatin1Char('0'));
  } while (IsThere(draft));
  return draft;
}

}  // namespace

store::StoreLocation StoreAccess::Location() const {
  auto location = location_ ? store::StoreLocation::Parse(*location_, QDir::currentPath())
                            : store::StoreLocation::FromEnvironment();
  if (location.IsMemory()) {
    throw store::StoreError(QStringLiteral("A store in memory ends with its program; name a file with --store."));
  }
  return location;
}

bool StoreAccess::Exists() const {
  return IsThere(Location().path);
}

std::unique_ptr<store::SqlStores> StoreAccess::OpenExisting() {
  const store::StoreLocation location = Location();
  if (!IsThere(location.path)) {
    throw store::StoreError(QStringLiteral("There is no store at %1; \"quarlctl init\" makes one.").arg(location.path));
  }
  auto stores = std::make_unique<store::SqlStores>(Setup(location));
  stores->Open();
  return stores;
}

NewStore::NewStore(StoreAccess& access) {
  store::StoreLocation location = access.Location();
  path_ = location.path;
  if (IsThere(path_)) throw CommandError(ExistsAlready(path_));
  store::SqlStores::CheckPlace(access.Setup(location));
  draft_ = DraftOf(path_);
  location.path = draft_;
  stores_ = std::make_unique<store::SqlStores>(access.Setup(location));
  try {
    stores_->Open();
  } catch (const store::StoreError&) {
    stores_.reset();
    QFile::remove(draft_);
    throw;
  }
}

NewStore::~NewStore() {
  stores_.reset();
  if (draft_.isEmpty()) return;
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) QFile::remove(draft_ + QLatin1String(suffix));
}

void NewStore::Keep() {
  stores_.reset();
  if (QFile::exists(draft_ + QLatin1String("-wal"))) {
    throw CommandError(QStringLiteral("The new store %1 could not be completed.").arg(path_));
  }
  const int fault = store::sql::MoveToFreeName(draft_, path_);
  if (fault == EEXIST) throw CommandError(ExistsAlready(path_));
  if (fault != 0) {
    throw CommandError(QStringLiteral("%1 cannot be written: %2.").arg(path_, store::sql::SystemText(fault)));
  }
  draft_.clear();
}

}  // namespace quarl::ctl
