#pragma once

#include <QString>
#include <QTemporaryDir>

#include "base/InstallPaths.h"

namespace quarl::plugins {

/// An application folder with the host, both helper libraries, a stand-in for the library of dialogs and the probe
/// modules, from which single files can be taken away.
class HostFolder {
 public:
  HostFolder();

  QString Path(const QString& name) const { return folder_.filePath(name); }
  InstallPaths Paths() const { return InstallPaths(folder_.path()); }
  /// The path of a probe as the console writes it: backslashes, and letters of the wrong case.
  QString Module(const char* name) const;
  void Remove(const QString& name) const;
  /// Puts a file in the place of a module.
  void WriteModule(const char* name, const QByteArray& bytes) const;
  /// A new named pipe.
  QString MakePipe();

 private:
  QTemporaryDir folder_;
  int pipes_ = 0;
};

}  // namespace quarl::plugins
