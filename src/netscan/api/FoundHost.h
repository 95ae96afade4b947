#pragma once

#include <QStringList>
#include <optional>
#include <vector>

#include "netscan/api/EchoStatus.h"
#include "netscan/api/ServerList.h"

namespace quarl::netscan {

/// Why a machine that was seen is not offered.
enum class Unlisted { No, NoAddress, NoEcho };

/// One machine after everything that was seen has been put together.
struct FoundHost {
  MachineRecord machine;  ///< its name holds no control character, "," or "|" and is never empty; the dotted address
                          ///< stands for a machine that nobody named
  SystemLabel label;      ///< given after all machines were put in order
  QString address;        ///< dotted, or empty
  std::optional<EchoStatus> echo;  ///< nothing when it was not asked
  Unlisted unlisted = Unlisted::No;
  QString finding;  ///< one line for a tool tip: "Seen by NetBIOS (workgroup LAB), SMB (10.0 build 19041), echo"

  /// Sentence for "Not listed": "ALPHA (10.0.0.7) did not answer the echo." Empty for a machine that is listed.
  QString Reason() const;
};

/// How far a scan has come. Counts never fall.
struct ScanProgress {
  int sourcesDone = 0;
  int sources = 0;
  int addressesProbed = 0;
  int addresses = 0;  ///< that the sweeps ask
  int hosts = 0;      ///< machines seen so far
  bool finished = false;

  friend bool operator==(const ScanProgress&, const ScanProgress&) = default;
};

struct ScanResult {
  std::vector<FoundHost> hosts;  ///< by name (case ignored), then address; listed and unlisted ones
  QStringList notes;             ///< sentences on what this user or machine could not do
  bool complete = false;         ///< false: cancelled, or the time was up
};

/// The machines that are listed and whose class is in the filter, in order.
std::vector<FoundHost> ListedHosts(const ScanResult& result, quint32 filter);

}  // namespace quarl::netscan
