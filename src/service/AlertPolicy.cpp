#include "service/AlertPolicy.h"

#include "service/MessageText.h"

namespace quarl::service {

std::vector<store::OutgoingMessage> DirectPolicy::MessagesFor(const StateChange& change, const PlanIndex& plan) {
  const std::vector<const store::PlannedAlert*> alerts = plan.AlertsFor(*change.server);
  if (alerts.empty()) return {};
  const store::PlannedServer& server = *change.server;
  store::OutgoingMessage message;
  message.idServer = server.id;
  message.serverName = server.name;
  message.address = server.address;
  message.thread = ThreadOf(plan.All().storeId, change);
  message.subject = SubjectOf(change);
  message.text = TextOf(change, plan, zone_);
  message.recovery = !change.failed;
  const store::PlannedGroup* const group = server.idGroup != 0 ? plan.Group(server.idGroup) : nullptr;
  if (group != nullptr) message.groupName = group->name;
  if (change.test != nullptr) message.testName = change.test->name;
  message.resultText = change.text;
  message.outageSinceMs = change.sinceMs;
  message.createdMs = message.notBeforeMs = change.timeMs;
  std::vector<store::OutgoingMessage> messages;
  for (const store::PlannedAlert* alert : alerts) {
    message.idAlert = alert->id;
    message.alertName = alert->name;
    messages.push_back(message);
  }
  return messages;
}

}  // namespace quarl::service
