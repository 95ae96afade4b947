#include "apps/StoreComposition.h"

#include <optional>
#include <system_error>
#include <tuple>

#include "apps/ServiceFiles.h"
#include "control/HostControl.h"
#include "control/SystemdControl.h"
#include "plugins/contract/ModuleFile.h"
#include "store/StoreError.h"

namespace quarl::apps {
namespace {

/// Whether the service that this host's service manager would start serves a store: the unit takes the configured one,
/// else the one in its state folder.
bool IsUnitsStore(const store::StoreLocation& location) {
  try {
    const auto configured = store::StoreLocation::FromConfiguration();
    return location.path == (configured ? configured->path : QStringLiteral("/var/lib/quarl/quarl.db"));
  } catch (const store::StoreError&) {
    return false;
  }
}

}  // namespace

StoreComposition::StoreComposition(InstallPaths paths) : paths_(std::move(paths)) {}

store::SqlSetup StoreComposition::Setup() {
  return Setup(store::StoreLocation::FromEnvironment());
}

store::SqlSetup StoreComposition::Setup(store::StoreLocation location) {
  control::ServiceControl* const service = ServiceOf(location);
  store::SqlSetup setup{.location = std::move(location),
                        .paths = paths_,
                        .inspector = plugins::InspectModule,
                        .service = service,
                        .clock = &clock_,
                        .pause = pause_};
  return setup;
}

control::ServiceControl* StoreComposition::ServiceOf(const store::StoreLocation& location) {
  control::LocalControl::Setup local{.program = paths_.ApplicationFolder() + QStringLiteral("/quarld"),
                                     .lockFile = ServiceLockFile(location),
                                     .store = location.Text(),
                                     .errorLog = ServiceMessagesFile(location)};
  auto unit = IsUnitsStore(location) ? std::make_unique<control::SystemdControl>() : nullptr;
  services_.push_back(std::make_unique<control::HostControl>(std::move(local), std::move(unit)));
  return services_.back().get();
}

void StoreComposition::OpenAhead() {
  try {
    opening_ = std::async(std::launch::async, [this] { Made().ReadAhead(); });
  } catch (const std::system_error&) {
    // Without a thread to spare, the first use opens the store.
  }
}

bool StoreComposition::CheckAside() {
  if (opening_.valid()) std::ignore = Sql();
  return sql_ && sql_->CheckAside();
}

store::SqlStores& StoreComposition::Sql() {
  if (opening_.valid()) opening_.get();
  return Made();
}

store::SqlStores& StoreComposition::Made() {
  if (!sql_) sql_ = std::make_unique<store::SqlStores>(Setup());
  return *sql_;
}

}  // namespace quarl::apps
