#include "netscan/api/ServerList.h"

#include <QStringList>

#include "netscan/api/HostName.h"

namespace quarl::netscan {
namespace {

constexpr quint32 kServerBits = kDomainController | kBackupController | kNtServerType;

bool IsNt(const MachineRecord& machine) {
  return (machine.platform & kNtPlatform) == kNtPlatform;
}

QString NtVersion(const MachineRecord& machine) {
  if (machine.major != 5) return QStringLiteral("NT");
  return machine.minor > 0 ? QStringLiteral("XP") : QStringLiteral("2000");
}

SystemLabel NtLabel(const MachineRecord& machine) {
  const bool server = (machine.type & kServerBits) != 0;
  return {NtVersion(machine) + (server ? QStringLiteral(" Server") : QStringLiteral(" Workstation")),
          server ? kNtServer : kNtWorkstation};
}

QString DosFamilyText(qint32 minor, const QString& before) {
  if (minor == 0) return QStringLiteral("Windows 95");
  if (minor == 90) return QStringLiteral("Windows ME");
  return minor >= 1 && minor <= 89 ? QStringLiteral("Windows 98") : before;
}

// The list text is single-byte text: of each UTF-16 unit it has the low byte, up to the first that is 0.
QString SingleByteName(const QString& name) {
  QString text;
  for (const QChar unit : name) {
    const char16_t low = unit.unicode() & 0xff;
    if (low == 0) break;
    text += QChar(low);
  }
  return CleanName(text);
}

}  // namespace

std::vector<SystemLabel> LabelMachines(std::span<const MachineRecord> machines) {
  std::vector<SystemLabel> labels;
  labels.reserve(machines.size());
  QString before;
  for (const MachineRecord& machine : machines) {
    labels.push_back(IsNt(machine) ? NtLabel(machine) : SystemLabel{DosFamilyText(machine.minor, before), kWindows9x});
    before = labels.back().text;
  }
  return labels;
}

QString ServerListText(std::span<const MachineRecord> machines, quint32 filter) {
  const std::vector<SystemLabel> labels = LabelMachines(machines);
  QStringList entries;
  for (std::size_t index = 0; index < machines.size(); ++index) {
    if ((filter & labels[index].systemClass) == 0) continue;
    entries += SingleByteName(machines[index].name) + QLatin1Char('|') + labels[index].text;
  }
  return entries.join(QLatin1Char(','));
}

}  // namespace quarl::netscan
