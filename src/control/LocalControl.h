#pragma once

#include <QElapsedTimer>
#include <QString>

#include "control/ServiceControl.h"

namespace quarl::control {

/// A service process of this user for one store: the program quarld, started detached from the caller and found again
/// by the lock that it holds.
class LocalControl final : public ServiceControl {
 public:
  struct Setup {
    QString program;   ///< absolute path of quarld; a missing one counts as not installed
    QString lockFile;  ///< of the store; "" for a store that no other process can open, which counts as not installed
    QString store;     ///< handed to the program as $QUARL_STORE
    QString errorLog;  ///< where the program's messages go, begun anew at each start and after a megabyte; "": nowhere
  };

  explicit LocalControl(Setup setup) : setup_(std::move(setup)) {}

  ServiceState State() override;
  bool Start() override;
  /// Asks the process to finish what is running and to end.
  bool Stop() override;
  /// Whether a process holds the lock.
  bool Runs() const;

 private:
  bool StartsStill();

  Setup setup_;
  qint64 started_ = 0;  ///< process that has not taken the lock yet, 0 for none
  QElapsedTimer sinceStart_;
};

}  // namespace quarl::control
