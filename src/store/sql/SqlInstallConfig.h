#pragma once

#include "base/InstallPaths.h"
#include "store/InstallConfig.h"

namespace quarl::store::sql {

class SqlInstallConfig final : public InstallConfig {
 public:
  explicit SqlInstallConfig(const InstallPaths& paths) : paths_(paths) {}
  QString GetInstallPath() override { return paths_.InstallFolder(); }

 private:
  const InstallPaths& paths_;
};

}  // namespace quarl::store::sql
