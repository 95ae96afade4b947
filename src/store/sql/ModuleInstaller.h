#pragma once

#include <QString>
#include <optional>

#include "store/ModuleInspector.h"
#include "store/sql/WholeFile.h"

namespace quarl::store::sql {

/// Why a text cannot be the file name of a module; "" when it can.
QString ModuleNameFault(const QString& name);

/// Brings one module file into the module folder of its kind, in two steps: the slow one needs no lock, the quick one
/// belongs under the store's write lock. Until Keep() is called, a copy that this object made is removed again when it
/// goes.
class ModuleInstaller {
 public:
  ModuleInstaller(QString folder, const ModuleInspector& inspector);
  ~ModuleInstaller();
  ModuleInstaller(const ModuleInstaller&) = delete;
  ModuleInstaller& operator=(const ModuleInstaller&) = delete;

  /// Reads and inspects the file, and copies it under a hidden name when the folder has none of its name. False: it
  /// cannot be read, is no whole module, or the folder has a different file of its name. Throws SqlError when the copy
  /// cannot be written.
  bool Prepare(const QString& moduleFile);
  /// Gives a copy its name. What the inspector saw is what the folder holds afterwards. False: somebody else brought a
  /// file of that name meanwhile. Throws SqlError.
  bool Install();
  /// The name that the module has in the folder.
  const QString& ModuleName() const { return name_; }
  void Keep() { copy_.clear(); }

 private:
  bool Copy(const QString& source);

  QString folder_;
  const ModuleInspector& inspector_;
  QString name_;
  std::optional<WholeFile> pending_;  // copied, under its hidden name
  QString copy_;                      // the file that Install() made
};

}  // namespace quarl::store::sql
