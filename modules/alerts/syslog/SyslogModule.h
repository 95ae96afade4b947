#pragma once

#include <string>

#include "kit/AlertModule.h"

namespace quarl::alerts {

/// Writes alerts to the system's log, over its socket: syslog(3) keeps one state for a whole process, which many
/// threads with settings of their own cannot share.
class SyslogModule : public kit::AlertModule {
 public:
  const kit::Form& Fields() const override;
  std::string Send(const kit::Event& event, const kit::Properties& properties) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  std::string About() const override;
};

/// The line as it goes to the socket: "<27>Jan 31 23:59:59 quarl: text". Throws kit::SettingsError.
std::string ComposeLine(const kit::Event& event, const kit::Properties& properties);

}  // namespace quarl::alerts
