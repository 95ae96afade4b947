#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <optional>

#include "store/sql/SqlStores.h"

namespace quarl::test {

/// A message as the alert module wrote it down.
struct Delivered {
  QString outage;
  QString message;
  QString subject;
  bool operator==(const Delivered&) const = default;
};

/// An installation of the real service and its helpers in a folder of its own, with a test module whose answer stands
/// in a file and an alert module that writes messages to a file, and a store with one server, one test and one alert.
class DaemonRig {
 public:
  DaemonRig();
  ~DaemonRig();
  DaemonRig(const DaemonRig&) = delete;
  DaemonRig& operator=(const DaemonRig&) = delete;

  QString File(const QString& name) const { return folder_.filePath(name); }
  QString Program() const { return File(QStringLiteral("app/quarld")); }
  QString StoreText() const { return QStringLiteral("sqlite:") + File(QStringLiteral("q.db")); }
  /// The store as the console has it.
  store::SqlStores& Stores() { return *stores_; }

  /// Starts the service and waits until it serves the store.
  [[nodiscard]] bool Start(const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
  /// The running or ended process.
  QProcess& Process() { return process_; }
  void Kill();
  /// The request to stop; the exit code.
  int Stop();

  void Answer(bool passed) const;
  /// Has the server tested now. In the waits for the answer, meanwhile is called.
  bool Check(std::function<void()> meanwhile = {});
  std::vector<Delivered> Messages() const;
  /// Waits until so many different messages have been delivered.
  bool WaitForMessages(std::size_t count) const;

  qint32 idServer = 0;
  qint32 idTest = 0;
  qint32 idAlert = 0;

 private:
  void Install();
  void Fill();

  QTemporaryDir folder_;
  std::function<void()> meanwhile_;
  std::unique_ptr<store::SqlStores> stores_;
  QProcess process_;
};

}  // namespace quarl::test
