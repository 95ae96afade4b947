#include "apps/StoreComposition.h"

#include <system_error>

#include "plugins/contract/ModuleFile.h"

namespace quarl::apps {

StoreComposition::StoreComposition(InstallPaths paths) : paths_(std::move(paths)) {}

store::SqlSetup StoreComposition::Setup() {
  return Setup(store::StoreLocation::FromEnvironment());
}

store::SqlSetup StoreComposition::Setup(store::StoreLocation location) {
  store::SqlSetup setup{.location = std::move(location),
                        .paths = paths_,
                        .inspector = plugins::InspectModule,
                        .service = &service_,
                        .clock = &clock_};
  return setup;
}

void StoreComposition::OpenAhead() {
  try {
    opening_ = std::async(std::launch::async, [this] { Made().ReadAhead(); });
  } catch (const std::system_error&) {
    // Without a thread to spare, the first use opens the store.
  }
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
