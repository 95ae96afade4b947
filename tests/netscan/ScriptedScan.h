#pragma once

#include <QStringList>
#include <atomic>
#include <memory>

#include "netscan/api/HostScan.h"
#include "support/Text.h"

namespace quarl::netscan {

/// A network 10.0.0.0/22 of machines that a test names. Answers at once, or holds the search open until it is released.
struct ScriptedScan {
  std::vector<Sighting> machines;
  std::vector<in_addr_t> silent{};  ///< do not answer the echo
  std::shared_ptr<std::atomic_bool> held = std::make_shared<std::atomic_bool>(false);
  std::shared_ptr<std::atomic_int> searches = std::make_shared<std::atomic_int>(0);

  std::shared_ptr<std::vector<in_addr_t>> heard = std::make_shared<std::vector<in_addr_t>>();  ///< by its source

  ScanSetup Setup() const;
};

/// What a source says of an address; "" is none.
Sighting Saw(const char* source, const char* address, const char* name = "", NameKind kind = NameKind::Computer);

enum class Family { Server, Workstation, Windows98 };
Sighting Machine(const QString& name, const char* address, Family family);

}  // namespace quarl::netscan
