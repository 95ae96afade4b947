#pragma once

#include <QHash>
#include <QString>

#include "netscan/api/FoundHost.h"
#include "store/Stores.h"

namespace quarl::netscan {

/// The servers of the store, by which machines are recognised that it has already.
class KnownServers {
 public:
  KnownServers() = default;
  /// Reads them. Throws StoreError.
  explicit KnownServers(store::Stores& stores);

  /// A sentence on the server with the host's address or, failing that, its name (case ignored); empty when the store
  /// has neither.
  QString NoteOn(const FoundHost& host) const;

 private:
  QHash<QString, QString> byAddress_;
  QHash<QString, QString> byName_;  ///< folded names
};

}  // namespace quarl::netscan
