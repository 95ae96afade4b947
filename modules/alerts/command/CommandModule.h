#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kit/AlertModule.h"
#include "kit/ProcessRunner.h"

namespace quarl::alerts {

/// Hands alerts to a program of the user's.
class CommandModule : public kit::AlertModule {
 public:
  const kit::Form& Fields() const override;
  std::string Send(const kit::Event& event, const kit::Properties& properties) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  std::string About() const override;
};

/// The run about an event, with its facts in the environment. Throws kit::SettingsError.
kit::ProcessRequest ComposeRun(const kit::Event& event, const kit::Properties& properties);

}  // namespace quarl::alerts
