#pragma once

#include <QString>

namespace quarl::store {

class InstallConfig {
 public:
  virtual ~InstallConfig() = default;
  /// The product's installation folder, without a trailing separator.
  [[nodiscard]] virtual QString GetInstallPath() = 0;
};

}  // namespace quarl::store
