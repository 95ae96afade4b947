#pragma once

#include <optional>
#include <string>

#include "store/TreeReader.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlTreeReader final : public TreeReader {
 public:
  explicit SqlTreeReader(Database& database) : database_(database) {}
  TreeRows ReadTree() override;
  /// Reads the tree for the next ReadTree(), which gives these rows if the store has not changed by then. Throws
  /// StoreError when the store cannot be opened.
  void ReadAhead();

 private:
  struct Ahead {
    quint64 opening;  // of the database
    std::string mark;
    TreeRows tree;
  };
  TreeRows ReadNow();
  bool IsCurrent(const Ahead& ahead);

  Database& database_;
  std::optional<Ahead> ahead_;
};

}  // namespace quarl::store::sql
