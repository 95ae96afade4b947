#pragma once

#include <QString>

namespace quarl {

enum class ModuleKind { Test, Alert };

/// The folders of an installation and the one place that resolves the product's own path texts
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

  /// The native path of a text made of a base folder and the product's path texts: "\" separates like "/", and a
  /// part that does not exist as written stands for the one entry that differs from it in case only.
  /// A path that leads nowhere comes back with the parts that could not be found as written.
  static QString Resolve(const QString& path);

 private:
  QString applicationFolder_;
};

}  // namespace quarl
