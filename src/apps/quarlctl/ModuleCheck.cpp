#include "apps/quarlctl/ModuleCheck.h"

#include <QFileInfo>

#include "plugins/contract/ModuleFile.h"

namespace quarl::ctl {
namespace {

void AddFaults(const std::vector<store::TypeConfiguration>& types, const QString& folder, QStringList& faults) {
  for (const store::TypeConfiguration& type : types) {
    const QString path = InstallPaths::Resolve(folder + QLatin1Char('/') + type.module);
    if (!QFileInfo::exists(path)) {
      faults << QStringLiteral("The plug-in module %1 is not in %2.").arg(type.module, folder);
    } else if (const QString fault = plugins::InspectModule(path); !fault.isEmpty()) {
      faults << QStringLiteral("The plug-in module %1: %2").arg(path, fault);
    }
  }
}

}  // namespace

QStringList ModuleFaults(const store::Configuration& configuration, const InstallPaths& paths) {
  QStringList faults;
  AddFaults(configuration.testTypes, paths.ModuleFolder(ModuleKind::Test), faults);
  AddFaults(configuration.alertTypes, paths.ModuleFolder(ModuleKind::Alert), faults);
  return faults;
}

}  // namespace quarl::ctl
