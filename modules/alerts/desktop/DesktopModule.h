#pragma once

#include <string>

#include "kit/AlertModule.h"

namespace quarl::alerts {

/// Shows alerts as notes on the desktop of the user under whom the module runs.
class DesktopModule : public kit::AlertModule {
 public:
  const kit::Form& Fields() const override;
  std::string Send(const kit::Event& event, const kit::Properties& properties) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  std::string About() const override;
};

}  // namespace quarl::alerts
