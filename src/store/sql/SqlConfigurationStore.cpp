#include "store/sql/SqlConfigurationStore.h"

#include <tuple>

#include "store/sql/ConfigurationReader.h"
#include "store/sql/ConfigurationRules.h"
#include "store/sql/ConfigurationWriter.h"

namespace quarl::store::sql {
namespace {

/// From here on the store's ids are those of another store. False when they are already.
bool TakeIds(Connection& connection, const QString& storeId) {
  if (Change(connection, "UPDATE store_properties SET store_id = $1 WHERE store_id <> $1", storeId) == 0) return false;
  std::ignore = Change(connection, "DELETE FROM test_results");
  std::ignore = Change(connection, "DELETE FROM server_states");
  std::ignore = Change(connection, "DELETE FROM check_requests");
  std::ignore = Change(connection, "DELETE FROM outbox");
  return true;
}

}  // namespace

ConfigurationSnapshot SqlConfigurationStore::Read() {
  return database_.ReadAtOnce([](Connection& connection) {
    ConfigurationSnapshot snapshot;
    snapshot.configuration = ReadConfiguration(connection);
    Query query(connection, "SELECT store_id, revision FROM store_properties");
    if (!query.Next()) ThrowDamaged(QStringLiteral("its properties are missing"));
    snapshot.storeId = query.Text(0);
    snapshot.revision = query.Integer(1);
    return snapshot;
  });
}

void SqlConfigurationStore::Write(const Configuration& configuration, qint64 revision, const QString& storeId) {
  CheckConfiguration(configuration);
  database_.Write([&](Connection& connection) {
    if (!Exists(connection, "SELECT 1 FROM store_properties WHERE revision = $1", revision)) {
      throw StoreError(QStringLiteral("The store was changed by someone else in the meantime."));
    }
    const bool foreign = !storeId.isEmpty() && TakeIds(connection, storeId);
    const bool changed = ConfigurationWriter(connection).Write(configuration);
    return foreign || changed;
  });
}

}  // namespace quarl::store::sql
