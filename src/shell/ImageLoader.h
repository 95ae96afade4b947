#pragma once

#include <QString>

#include "base/InstallPaths.h"
#include "store/RecordSet.h"

namespace quarl::store {
class Stores;
}

namespace quarl::shell {

struct MainControls;

/// Fills the main window's image lists.
class ImageLoader {
 public:
  ImageLoader(MainControls& controls, store::Stores& stores, InstallPaths paths);

  /// The toolbar's pictures and their greyed variants; what has no picture is left out.
  void LoadToolbarImages();
  /// The images of tree and list: the program's own, and one for each installed plug-in type from its module file.
  /// Throws Error at the first one that cannot be had; those before it are in the list then.
  void LoadImages();

 private:
  void AddPicture(const QString& key);
  void AddStates(const QString& prefix);
  void AddTestTypes();
  void AddAlertTypes();
  void AddType(const QString& key, ModuleKind kind, const QVariant& module);
  void RequireToolbarImages() const;

  MainControls& controls_;
  store::Stores& stores_;
  InstallPaths paths_;
};

}  // namespace quarl::shell
