#pragma once

#include <QtGlobal>
#include <optional>
#include <string>
#include <vector>

#include "store/StoreError.h"

namespace quarl::store {

/// One record of the object tree; its text is a piece of TreeRows::texts.
struct TreeRow {
  qint32 owner = 0;  ///< servers: group; tests and server alerts: server; group alerts: group; groups: 0
  qint32 id = 0;
  qint32 type = 0;  ///< tests and alerts: type id; else 0
  quint32 textLength = 0;
  quint64 textOffset = 0;
};

/// Everything that the object tree shows, as five record sets would give it. Groups are in the order of GetGroups.
/// The other four are ordered by owner (ascending), then in the order of the owner's own query.
struct TreeRows {
  enum class Part { Groups, Servers, Tests, ServerAlerts, GroupAlerts };

  std::vector<TreeRow> groups, servers, tests, serverAlerts, groupAlerts;
  std::string texts;  ///< UTF-8, one text after another

  /// Where reading ended early: the part that could not be read whole, and why. What was read before is above.
  struct Failure {
    Part part;
    StoreError error;
  };
  std::optional<Failure> failure;
};

/// The bulk read behind the object tree: five statements in one read transaction, whatever the size of the store.
class TreeReader {
 public:
  virtual ~TreeReader() = default;
  /// Never throws StoreError: a store that cannot be reached is a failure of the first part.
  [[nodiscard]] virtual TreeRows ReadTree() = 0;
};

}  // namespace quarl::store
