#pragma once

#include <cstdint>

#include "plugins/contract/HostCall.h"

namespace quarl::plugins {

/// How a program waits for a call of a module.
class ModuleWait {
 public:
  virtual ~ModuleWait() = default;
  /// The window over which the module's dialogs are to stand, an X11 window; 0 for none.
  virtual std::uint64_t OwnerWindow() const { return 0; }
  /// Returns when the call is done, or when it is to be given up.
  virtual void Wait(HostCall& call) = 0;
};

/// Waits and does nothing else.
class PlainWait final : public ModuleWait {
 public:
  void Wait(HostCall& call) override;
};

}  // namespace quarl::plugins
