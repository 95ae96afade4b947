#pragma once

#include <QString>
#include <optional>

namespace quarl::store {

/// Where a store is. Written as "sqlite:PATH"; "sqlite::memory:" is a store that lives as long as its user.
struct StoreLocation {
  QString path;               ///< absolute path of the file; ":memory:" for a store in memory
  bool createFolder = false;  ///< make the missing folders of the path, for this user only, when the store is made

  /// $QUARL_STORE, else the configuration file, else quarl/quarl.db in the user's data folder. An empty variable
  /// counts as none. Throws StoreError for a location that cannot be understood, with the place where it stands.
  /// @param configFile a text file with the line "store = LOCATION", blank lines and lines that begin with "#";
  ///        it may be missing or set nothing.
  static StoreLocation FromEnvironment(const QString& configFile = QStringLiteral("/etc/quarl/store.conf"));
  /// What the configuration file alone sets; nothing when it is missing or sets none. Throws StoreError.
  static std::optional<StoreLocation> FromConfiguration(
      const QString& configFile = QStringLiteral("/etc/quarl/store.conf"));
  /// @param text "sqlite:PATH"; a relative path is one below baseFolder. Throws StoreError.
  static StoreLocation Parse(const QString& text, const QString& baseFolder);
  static StoreLocation File(const QString& path);
  static StoreLocation InMemory();

  bool IsMemory() const;
  /// As Parse() reads it.
  QString Text() const;
  bool operator==(const StoreLocation&) const = default;
};

}  // namespace quarl::store
