#pragma once

#include "store/Configuration.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlConfigurationStore final : public ConfigurationStore {
 public:
  explicit SqlConfigurationStore(Database& database) : database_(database) {}
  ConfigurationSnapshot Read() override;
  void Write(const Configuration& configuration, qint64 revision, const QString& storeId) override;

 private:
  Database& database_;
};

}  // namespace quarl::store::sql
