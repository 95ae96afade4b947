#pragma once

#include "store/TreeReader.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlTreeReader final : public TreeReader {
 public:
  explicit SqlTreeReader(Database& database) : database_(database) {}
  TreeRows ReadTree() override;

 private:
  Database& database_;
};

}  // namespace quarl::store::sql
