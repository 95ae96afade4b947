#pragma once

#include <string>
#include <vector>

#include "alerts/webhook/HttpDelivery.h"
#include "kit/AlertModule.h"

namespace quarl::alerts {

/// Delivers alerts to a web service.
class WebhookModule : public kit::AlertModule {
 public:
  WebhookModule();
  /// @param wait between two attempts.
  explicit WebhookModule(Wait wait) : wait_(std::move(wait)) {}
  const kit::Form& Fields() const override;
  std::string Send(const kit::Event& event, const kit::Properties& properties) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  std::string About() const override;

 private:
  Wait wait_;
};

/// The request about an event. Throws kit::SettingsError.
HttpMessage ComposeRequest(const kit::Event& event, const kit::Properties& properties);

/// All facts of an event as the documented JSON object.
std::string EventJson(const kit::Event& event);

}  // namespace quarl::alerts
