#pragma once

#include <QString>

namespace quarl {

/// Names one process so that another one, on this machine or elsewhere, can tell whether it still runs. Numbers of
/// processes come again; together with the time of its start one does not.
struct ProcessIdentity {
  QString host;     ///< the machine's name, for people
  QString machine;  ///< the installation of the system, as it names itself; may be empty
  QString boot;     ///< the run of the system
  QString scope;    ///< where the number counts: containers number their processes themselves
  qint64 pid = 0;
  qint64 startTicks = 0;  ///< since the system's start
  bool operator==(const ProcessIdentity&) const = default;

  /// That of this process.
  static ProcessIdentity Current();
  /// That of a process whose number counts in this process's scope; startTicks 0: there is none.
  static ProcessIdentity Of(qint64 pid);
  /// True when the process is known to run no more: it was of this scope and its number is free or another's, or it
  /// was of an earlier run of this machine. False says nothing: it runs, or nobody here can tell.
  bool IsGone() const;
};

}  // namespace quarl
