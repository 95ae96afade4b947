#include "store/StoreLocation.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <optional>

#include "store/StoreError.h"

namespace quarl::store {
namespace {

const QString kMemory = QStringLiteral(":memory:");

QString OfLine(const QString& file, int line) {
  return QStringLiteral("%1, line %2").arg(file).arg(line);
}

}  // namespace

StoreLocation StoreLocation::FromEnvironment(const QString& configFile) {
  const QString variable = qEnvironmentVariable("QUARL_STORE");
  if (!variable.isEmpty()) {
    try {
      return Parse(variable, QDir::currentPath());
    } catch (const StoreError& error) {
      throw StoreError(QStringLiteral("$QUARL_STORE: %1").arg(error.Description()));
    }
  }
  if (const auto configured = FromConfiguration(configFile)) return *configured;
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  if (folder.isEmpty()) throw StoreError(QStringLiteral("This user has no data folder for the store."));
  return {QDir::cleanPath(folder + QStringLiteral("/quarl/quarl.db")), true};
}

std::optional<StoreLocation> StoreLocation::FromConfiguration(const QString& path) {
  QFile file(path);
  if (!file.exists()) return std::nullopt;
  if (!file.open(QIODevice::ReadOnly)) {
    throw StoreError(QStringLiteral("The file %1 cannot be read: %2.").arg(path, file.errorString()));
  }
  std::optional<StoreLocation> found;
  for (int number = 1; !file.atEnd(); ++number) {
    const QString line = QString::fromUtf8(file.readLine()).trimmed();
    if (line.isEmpty() || line.startsWith(u'#')) continue;
    const qsizetype equals = line.indexOf(u'=');
    if (equals < 0 || line.left(equals).trimmed() != QLatin1String("store")) {
      throw StoreError(QStringLiteral("%1: \"%2\" is not of the form \"store = sqlite:/path\".")
                           .arg(OfLine(path, number), line.left(200)));
    }
    if (found) throw StoreError(QStringLiteral("%1: the store is set a second time.").arg(OfLine(path, number)));
    try {
      found = Parse(line.mid(equals + 1).trimmed(), QFileInfo(path).absolutePath());
    } catch (const StoreError& error) {
      throw StoreError(QStringLiteral("%1: %2").arg(OfLine(path, number), error.Description()));
    }
  }
  if (file.error() != QFileDevice::NoError) {
    throw StoreError(QStringLiteral("The file %1 cannot be read: %2.").arg(path, file.errorString()));
  }
  return found;
}

StoreLocation StoreLocation::Parse(const QString& text, const QString& baseFolder) {
  const QLatin1String sqlite("sqlite:");
  if (text.startsWith(QLatin1String("postgresql:")) || text.startsWith(QLatin1String("postgres:"))) {
    throw StoreError(QStringLiteral("PostgreSQL stores are not supported by this version."));
  }
  if (!text.startsWith(sqlite)) {
    throw StoreError(
        QStringLiteral("\"%1\" is no location of a store, which is written sqlite:/path.").arg(text.left(200)));
  }
  const QString path = text.mid(sqlite.size());
  if (path == kMemory) return InMemory();
  if (path.isEmpty() || path.contains(QChar::Null)) {
    throw StoreError(QStringLiteral("\"%1\" names no file.").arg(text.left(200)));
  }
  return {QDir::cleanPath(QDir(baseFolder).absoluteFilePath(path)), false};
}

StoreLocation StoreLocation::File(const QString& path) {
  return {QDir::cleanPath(QDir::current().absoluteFilePath(path)), false};
}

StoreLocation StoreLocation::InMemory() {
  return {kMemory, false};
}

bool StoreLocation::IsMemory() const {
  return path == kMemory;
}

QString StoreLocation::Text() const {
  return QStringLiteral("sqlite:") + path;
}

}  // namespace quarl::store
