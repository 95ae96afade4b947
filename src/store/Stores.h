#pragma once

#include <memory>

#include "store/AlertStore.h"
#include "store/GroupStore.h"
#include "store/InstallConfig.h"
#include "store/LogStore.h"
#include "store/ServerStore.h"
#include "store/SystemConfig.h"
#include "store/TestStore.h"
#include "store/TreeReader.h"

namespace quarl::store {

/// Operations that are kept all together or not at all: those of the same Stores from Stores::BeginChange() on until
/// this object goes. They see each other's changes, others do not yet; other writers wait, so it is not to be held
/// while a user is asked. A refused operation changes nothing and lets the others go on. The Stores must outlive it.
class Change {
 public:
  Change() = default;
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;
  virtual ~Change() = default;
  /// Keeps what was done. Throws StoreError, and then nothing is kept; so after an operation that threw.
  virtual void Commit() = 0;
};

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
  /// One at a time. Throws StoreError.
  [[nodiscard]] virtual std::unique_ptr<Change> BeginChange() = 0;
};

}  // namespace quarl::store
