#include "apps/quarlctl/Starter.h"

#include <QDateTime>
#include <QDir>
#include <QSysInfo>

#include "apps/quarlctl/CommandError.h"
#include "plugins/contract/CFileVersionInfo.h"
#include "plugins/contract/ModuleFile.h"

namespace quarl::ctl {
namespace {

constexpr qint16 kMinutesBetweenTests = 5;

const QString kPingModule = QStringLiteral("ping.dll");

[[noreturn]] void Refuse() {
  throw CommandError(QStringLiteral("The new store refused a record of the starter."));
}

void AddTypes(store::SystemConfig& system, const InstallPaths& paths, ModuleKind kind) {
  const QDir folder(paths.ModuleFolder(kind));
  const QStringList files = folder.entryList({QStringLiteral("*.dll")}, QDir::Files, QDir::Name);
  for (const QString& file : files) {
    const QString path = folder.filePath(file);
    const QString fault = plugins::InspectModule(path);
    if (!fault.isEmpty()) throw CommandError(QStringLiteral("The plug-in module %1: %2").arg(path, fault));
    plugins::CFileVersionInfo version;
    version.SetFullPathName(path);
    const bool added = kind == ModuleKind::Test ? system.AddTestType(path, version.ProductName())
                                                : system.AddAlertType(path, version.ProductName());
    if (!added) throw CommandError(QStringLiteral("The plug-in module %1 was not accepted.").arg(path));
  }
}

qint32 PingType(store::SystemConfig& system, const InstallPaths& paths) {
  store::RecordSet types = system.GetTestTypes();
  for (; !types.Eof(); types.MoveNext()) {
    if (types.Value("Module").toString() == kPingModule) return types.Value("IDTestType").toInt();
  }
  throw CommandError(QStringLiteral("The ping module is not in %1.").arg(paths.ModuleFolder(ModuleKind::Test)));
}

}  // namespace

void FillStarter(store::Stores& stores, const InstallPaths& paths, const Clock& clock) {
  const QDate today = QDateTime::fromMSecsSinceEpoch(clock.NowMs()).date();
  const ScheduleRecord schedule{true, today, QTime(0, 0), kMinutesBetweenTests,
                                static_cast<qint16>(DeltaType::Minutes)};
  if (!stores.Groups().SetDefaultSchedule(schedule)) Refuse();
  AddTypes(stores.System(), paths, ModuleKind::Test);
  AddTypes(stores.System(), paths, ModuleKind::Alert);
  const qint32 ping = PingType(stores.System(), paths);
  const qint32 server = stores.Servers().AddServer(QSysInfo::machineHostName(), QStringLiteral("127.0.0.1"), 0);
  if (server < 1 || stores.Tests().AddTest(server, ping, QString()) < 1) Refuse();
}

}  // namespace quarl::ctl
