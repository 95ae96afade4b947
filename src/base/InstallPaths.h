#pragma once

#include <QString>

#include "base/ModuleKind.h"

namespace quarl {

/// Who forms the path of a module. The product writes the folders differently from one to the other.
enum class ModuleCallSite {
  About,       ///< the manager dialogs
  BufferSize,  ///< the property commands, asking for the size
  Properties,  ///< the property commands, showing the dialog
  AlertTest,   ///< the alert test
  Picture,     ///< the main window, loading the pictures of the types
};

/// The folders of an installation and the one place that forms and resolves the product's own path texts
/// ("\plugins\Tests\ping.dll" below a base folder) on the file system of this machine.
class InstallPaths {
 public:
  /// @param applicationFolder the folder of the running program, absolute, no trailing separator; it holds the
  ///        plug-in folders and is the installation folder as well.
  explicit InstallPaths(QString applicationFolder);
  /// The folders of the running program.
  static InstallPaths OfThisProgram();

  const QString& ApplicationFolder() const { return applicationFolder_; }
  const QString& InstallFolder() const { return applicationFolder_; }
  /// The native folder of the modules of a kind: plugins/tests or plugins/alerts.
  QString ModuleFolder(ModuleKind kind) const;

  /// A base folder, the path text of the call site ("\plugins\Tests\") and a module's file name, one after the other.
  /// Throws Error for a name that is no plain file name: empty, "." or "..", or with a separator or a NUL in it.
  static QString ModulePath(const QString& baseFolder, ModuleCallSite site, ModuleKind kind, const QString& moduleFile);
  /// The native path of a text made of a base folder and the product's path texts: "\" separates like "/", and a
  /// part that does not exist as written stands for the one entry that differs from it in case only.
  /// A path that leads nowhere comes back with the parts that could not be found as written.
  static QString Resolve(const QString& path);

 private:
  QString applicationFolder_;
};

}  // namespace quarl
