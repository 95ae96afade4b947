#pragma once

#include <QByteArray>
#include <QString>

#include "store/Configuration.h"

namespace quarl::transfer {

/// What an exported file holds. A type that the file gives without id has a provisional id below 0 here, which the
/// tests and alerts of that type refer to; every other record without id has id 0.
struct ConfigurationFile {
  store::Configuration configuration;
  QString storeId;  ///< the store that the ids are of; empty: a file written by hand, without any id
  bool operator==(const ConfigurationFile&) const = default;
};

inline constexpr int kFormatVersion = 1;
inline constexpr const char* kFormatName = "quarl-configuration";
/// Larger files are refused; a configuration of a million tests is smaller.
inline constexpr qint64 kLargestFile = qint64{1} << 29;

/// The file's text: UTF-8, two blanks a level, keys in one order, lists in the order of the configuration, a line
/// feed at the end. The same configuration always gives the same bytes, and ReadConfiguration() gives it back
/// exactly. All ids must be those of a store. Throws TransferError for a date that no four-digit year can say.
QByteArray WriteConfiguration(const ConfigurationFile& file);

/// Reads a whole file or nothing: throws TransferError, naming the place, for whatever is not as
/// docs/export-format.md says - JSON faults, unknown keys, wrong types, numbers out of range, ids given twice, tests
/// and alerts of a type that is not in the file, module names with a folder, a newer version.
ConfigurationFile ReadConfiguration(const QByteArray& text);

}  // namespace quarl::transfer
