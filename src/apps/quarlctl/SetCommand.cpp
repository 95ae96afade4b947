#include <memory>
#include <optional>

#include "apps/quarlctl/CommandError.h"
#include "apps/quarlctl/Commands.h"

namespace quarl::ctl {
namespace {

struct SetOptions {
  std::string name;
  std::optional<int> value;
};

void Set(Session& session, const SetOptions& options) {
  const auto stores = session.store.OpenExisting();
  store::ServiceStore& service = stores->Service();
  if (options.value && !service.SetLogRetention(*options.value)) {
    throw CommandError(QStringLiteral("%1 is out of range for log-retention.").arg(*options.value));
  }
  session.terminal.PrintLine(QStringLiteral("log-retention = %1").arg(service.LogRetention()));
}

}  // namespace

Command AddSet(CLI::App& app) {
  CLI::App* command = app.add_subcommand("set", "Change a setting of the store, or show it");
  auto options = std::make_shared<SetOptions>();
  command->add_option("NAME", options->name, "log-retention: how many log records are kept, 1 to 10000000")
      ->required()
      ->check(CLI::IsMember({"log-retention"}));
  command->add_option("VALUE", options->value, "The new value; without one the setting is shown");
  command->footer(
      "The oldest log records beyond the new number are removed at once, and the running service\n"
      "follows it from its next record on.\n"
      "\n"
      "Example: quarlctl set log-retention 50000");
  return {command, [options](Session& session) { Set(session, *options); }};
}

}  // namespace quarl::ctl
