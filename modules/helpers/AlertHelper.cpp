#include "GuardedText.h"
#include "HelperCalls.h"

namespace quarl::helpers {

ModuleTable& Modules() {
  static ModuleTable table(QUARL_MODULE_ALERT);
  return table;
}

namespace {

using AlertFunction = decltype(&QuarlAlert);

// The facts that fit the call without an event.
int16_t AlertWith(AlertFunction alert, const QuarlEvent& event, const char* properties, QuarlBuffer resultText) {
  const bool hasServer = event.serverName[0] != '\0';
  const GuardedText serverName(hasServer ? event.serverName : event.groupName);
  const GuardedText serverAddress(event.serverAddress);
  const GuardedText subject(event.subject);
  const GuardedText message(event.message);
  const GuardedText ownProperties(properties);
  return alert(serverName.Buffer(), serverAddress.Buffer(), subject.Buffer(), message.Buffer(), ownProperties.Buffer(),
               resultText);
}

}  // namespace
}  // namespace quarl::helpers

int16_t Alert(QuarlBuffer modulePath, QuarlBuffer serverName, QuarlBuffer serverAddress, QuarlBuffer subject,
              QuarlBuffer message, QuarlBuffer properties, QuarlBuffer resultText) {
  using namespace quarl::helpers;
  return Guarded([&] {
    const auto alert = Modules().At(modulePath).Get<AlertFunction>("QuarlAlert");
    return alert(serverName, serverAddress, subject, message, properties, resultText);
  });
}

int16_t AlertEvent(QuarlBuffer modulePath, const QuarlEvent* event, const char* properties, QuarlBuffer resultText) {
  using namespace quarl::helpers;
  return Guarded([&] {
    const Module& module = Modules().At(modulePath);
    const auto withEvent = module.Find<decltype(&QuarlAlertEvent)>("QuarlAlertEvent");
    if (withEvent != nullptr) return withEvent(event, properties, resultText);
    return AlertWith(module.Get<AlertFunction>("QuarlAlert"), *event, properties, resultText);
  });
}
