#pragma once

#include "store/Configuration.h"
#include "transfer/ConfigurationFile.h"

namespace quarl::transfer {

enum class ImportMode {
  /// What the file holds is added to the store or changes it; nothing is removed.
  Merge,
  /// The store comes to hold exactly what the file holds, under the file's ids.
  Replace,
};

/// The configuration that the store is to hold after the import, ready for ConfigurationStore::Write().
/// Types are the same when their module is. Every other record is the same when its id is, which counts only where
/// the file's ids are this store's (or the store has no records yet); records without id are new. A record that the
/// file moves to another owner keeps what it has below it. In Merge a schedule or threshold that the file does not
/// mention stays.
/// Throws TransferError when the file cannot be merged: it is of another store, or an id is a group here and a
/// server there.
store::Configuration PlanImport(const ConfigurationFile& file, const store::ConfigurationSnapshot& target,
                                ImportMode mode);

/// A store that has no groups, servers, alerts or types, so that no id in it means anything yet.
bool IsEmpty(const store::Configuration& configuration);

}  // namespace quarl::transfer
