#pragma once

#include "store/AlertStore.h"
#include "store/GroupStore.h"
#include "store/InstallConfig.h"
#include "store/LogStore.h"
#include "store/ServerStore.h"
#include "store/SystemConfig.h"
#include "store/TestStore.h"
#include "store/TreeReader.h"

namespace quarl::store {

/// All store objects of one store. They keep nothing between two operations, so a handler asks for the one that it
/// needs, uses it and lets it go. One thread at a time uses a Stores; each thread or program opens its own.
class Stores {
 public:
  virtual ~Stores() = default;
  virtual SystemConfig& System() = 0;
  virtual ServerStore& Servers() = 0;
  virtual GroupStore& Groups() = 0;
  virtual TestStore& Tests() = 0;
  virtual AlertStore& Alerts() = 0;
  virtual LogStore& Log() = 0;
  virtual InstallConfig& Install() = 0;
  virtual TreeReader& Tree() = 0;
};

}  // namespace quarl::store
