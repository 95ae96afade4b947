#pragma once

#include <QString>
#include <span>
#include <vector>

namespace quarl::netscan {

/// Classes of operating systems; a filter is several of them combined by OR.
enum SystemClass : quint32 { kNtServer = 1, kNtWorkstation = 2, kWindows9x = 4 };

inline constexpr quint32 kNtPlatform = 500;
inline constexpr quint32 kDosPlatform = 400;  ///< Windows 95, 98 and ME
/// Bits of the server-type word.
inline constexpr quint32 kServesFiles = 0x2, kDomainController = 0x8, kBackupController = 0x10, kNtServerType = 0x8000,
                         kDosWindowsType = 0x400000;

/// What is known of one machine, in the shape in which machines announce themselves.
struct MachineRecord {
  quint32 platform = kNtPlatform;
  qint32 major = 0;
  qint32 minor = 0;
  quint32 type = 0;  ///< server-type word
  QString name;

  friend bool operator==(const MachineRecord&, const MachineRecord&) = default;
};

struct SystemLabel {
  QString text;             ///< "2000 Server", "NT Workstation", "Windows 98" ...
  quint32 systemClass = 0;  ///< one SystemClass
};

/// The label of each machine, in the order given. The order matters: a machine of the DOS family with a minor version
/// outside 0 to 90 repeats the label before it.
std::vector<SystemLabel> LabelMachines(std::span<const MachineRecord> machines);

/// "NAME|label,NAME|label ..." of the machines whose class is in the filter, in the order given.
QString ServerListText(std::span<const MachineRecord> machines, quint32 filter);

}  // namespace quarl::netscan
