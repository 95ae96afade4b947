#pragma once

#include <QWidget>
#include <functional>

#include "base/InstallPaths.h"
#include "netscan/api/HostScan.h"
#include "store/Stores.h"
#include "tree/ObjectTree.h"
#include "tree/SelectionPort.h"
#include "ui/ImageList.h"

namespace quarl::netscan {

/// What the wizard works on. Everything is borrowed and must outlive it.
struct WizardContext {
  QWidget* window;  ///< the owner of the wizard
  store::Stores& stores;
  tree::ObjectTree& tree;
  tree::SelectionPort& selection;
  const InstallPaths& paths;
  ui::ImageList& images;  ///< the tree's; gets the images of test types that were installed since it was filled
  std::function<ScanSetup()> setup = &ScanSetup::OfThisMachine;  ///< where and how each search looks
};

}  // namespace quarl::netscan
