#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStringList>
#include <QThread>
#include <mutex>

namespace quarl::test {

/// A bus daemon of its own with a service manager on it that knows one unit; $DBUS_SYSTEM_BUS_ADDRESS points to it
/// while it lives. States stay until the test changes them.
class FakeServiceManager final : public QDBusVirtualObject {
 public:
  FakeServiceManager();
  ~FakeServiceManager() override;

  /// The bus goes away with everything on it.
  void EndBus() {
    daemon_.kill();
    daemon_.waitForFinished();
  }

  bool IsUp() const { return up_; }
  void SetUnit(const QString& load, const QString& active, const QString& freezer);
  /// Requests are refused as by a user who gave no password.
  void Refuse(bool refuse);
  /// Calls are not answered any more.
  void FallSilent();
  /// "StartUnit quarld.service replace" and the like.
  QStringList Requests() const;

  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  QProcess daemon_;
  QThread thread_;
  mutable std::mutex mutex_;
  QString load_ = QStringLiteral("loaded");
  QString active_ = QStringLiteral("inactive");
  QString freezer_;
  QStringList requests_;
  bool refuse_ = false;
  bool silent_ = false;
  bool up_ = false;
};

}  // namespace quarl::test
