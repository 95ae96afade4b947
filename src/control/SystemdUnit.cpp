#include "control/SystemdUnit.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QLoggingCategory>
#include <QUuid>
#include <QVariantMap>

namespace quarl::control {
namespace {

constexpr int kLongestCall = 2000;  // milliseconds

Q_LOGGING_CATEGORY(lcControl, "quarl.control")

QDBusMessage ManagerCall(const QString& method) {
  return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.systemd1"),
                                        QStringLiteral("/org/freedesktop/systemd1"),
                                        QStringLiteral("org.freedesktop.systemd1.Manager"), method);
}

QDBusMessage PropertiesCall(const QString& path) {
  QDBusMessage call =
      QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.systemd1"), path,
                                     QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
  call << QStringLiteral("org.freedesktop.systemd1.Unit");
  return call;
}

}  // namespace

ServiceState StateOfUnit(const QString& load, const QString& active, const QString& freezer) {
  if (load == QLatin1String("not-found") || load == QLatin1String("masked")) return ServiceState::NotInstalled;
  if (active == QLatin1String("activating") || active == QLatin1String("reloading")) return ServiceState::StartPending;
  if (active == QLatin1String("deactivating")) return ServiceState::StopPending;
  if (active != QLatin1String("active")) return ServiceState::Stopped;
  if (freezer == QLatin1String("thawing")) return ServiceState::ContinuePending;
  if (freezer == QLatin1String("freezing")) return ServiceState::PausePending;
  if (freezer == QLatin1String("frozen")) return ServiceState::Paused;
  return ServiceState::Running;
}

SystemdUnit::SystemdUnit(QString unit)
    : unit_(std::move(unit)),
      name_(QStringLiteral("quarl-control-") + QUuid::createUuid().toString(QUuid::WithoutBraces)),
      bus_(name_) {}

SystemdUnit::~SystemdUnit() {
  QDBusConnection::disconnectFromBus(name_);
}

bool SystemdUnit::Connect() {
  if (bus_.isConnected()) return true;
  QDBusConnection::disconnectFromBus(name_);
  bus_ = QDBusConnection::connectToBus(QDBusConnection::SystemBus, name_);
  return bus_.isConnected();
}

ServiceState SystemdUnit::State() {
  if (!Connect()) return ServiceState::NotInstalled;
  ReportRefusals();
  QDBusMessage load = ManagerCall(QStringLiteral("LoadUnit"));
  load << unit_;
  load.setAutoStartService(false);
  const QDBusMessage loaded = bus_.call(load, QDBus::Block, kLongestCall);
  if (loaded.type() != QDBusMessage::ReplyMessage || loaded.arguments().isEmpty()) return ServiceState::NotInstalled;
  const auto path = loaded.arguments().constFirst().value<QDBusObjectPath>();
  if (path.path().isEmpty()) return ServiceState::NotInstalled;
  const QDBusMessage answer = bus_.call(PropertiesCall(path.path()), QDBus::Block, kLongestCall);
  if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return ServiceState::NotInstalled;
  const auto properties = qdbus_cast<QVariantMap>(answer.arguments().constFirst());
  const auto text = [&](const char* key) { return properties.value(QLatin1String(key)).toString(); };
  return StateOfUnit(text("LoadState"), text("ActiveState"), text("FreezerState"));
}

void SystemdUnit::Request(const QString& method) {
  if (!Connect()) return;
  QDBusMessage call = ManagerCall(method);
  call << unit_ << QStringLiteral("replace");
  call.setInteractiveAuthorizationAllowed(true);
  constexpr int kLongestAuthorisation = 120'000;
  requests_.push_back(bus_.asyncCall(call, kLongestAuthorisation));
}

void SystemdUnit::ReportRefusals() {
  std::erase_if(requests_, [](const QDBusPendingCall& call) {
    if (!call.isFinished()) return false;
    if (call.isError()) qCWarning(lcControl).noquote() << "The service manager refused:" << call.error().message();
    return true;
  });
}

}  // namespace quarl::control
