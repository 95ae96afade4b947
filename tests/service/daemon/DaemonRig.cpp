#include "service/daemon/DaemonRig.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <set>

namespace quarl::test {
namespace {

void Copy(const QString& from, const QString& to) {
  ASSERT_TRUE(QFile::copy(from, to)) << from.toStdString();
}

bool Within(int limitMs, const std::function<bool()>& so) {
  QElapsedTimer elapsed;
  for (elapsed.start(); elapsed.elapsed() < limitMs; QThread::msleep(2)) {
    if (so()) return true;
  }
  return so();
}

}  // namespace

DaemonRig::DaemonRig() {
  Install();
  Answer(true);
  store::SqlSetup setup{.location = store::StoreLocation::File(File(QStringLiteral("q.db"))),
                        .paths = InstallPaths(File(QStringLiteral("app"))),
                        .inspector = [](const QString&) { return QString(); },
                        .pause =
                            [this](int ms) {
                              if (meanwhile_) meanwhile_();
                              QThread::msleep(static_cast<unsigned long>(ms));
                            }};
  stores_ = std::make_unique<store::SqlStores>(setup);
  Fill();
}

DaemonRig::~DaemonRig() {
  Kill();
}

void DaemonRig::Install() {
  const QString layout = QStringLiteral(QUARL_LAYOUT_DIR) + u'/';
  QDir folder(folder_.path());
  folder.mkpath(QStringLiteral("app/plugins/tests"));
  folder.mkpath(QStringLiteral("app/plugins/alerts"));
  for (const char* program : {"quarld", "quarlctl", "quarl-modulehost", "TestHelper.dll", "AlertHelper.dll"}) {
    Copy(layout + QLatin1String(program), File(QStringLiteral("app/")) + QLatin1String(program));
  }
  for (const char* kind : {"tests", "alerts"}) {
    Copy(QStringLiteral(MOODY_FOLDER "/%1/moody.dll").arg(QLatin1String(kind)),
         File(QStringLiteral("app/plugins/%1/moody.dll").arg(QLatin1String(kind))));
  }
}

void DaemonRig::Fill() {
  const auto module = [&](const char* kind) {
    return File(QStringLiteral("app/plugins/%1/moody.dll").arg(QLatin1String(kind)));
  };
  ASSERT_TRUE(stores_->System().AddTestType(module("tests"), QStringLiteral("Moody")));
  ASSERT_TRUE(stores_->System().AddAlertType(module("alerts"), QStringLiteral("Moody")));
  idServer = stores_->Servers().AddServer(QStringLiteral("web"), QStringLiteral("10.0.0.1"), 0);
  ASSERT_TRUE(stores_->Servers().SetFailThreshold(idServer, 1));
  idTest = stores_->Tests().AddTest(idServer, 1, QStringLiteral("file ") + File(QStringLiteral("answer")));
  idAlert = stores_->Alerts().AddServerAlert(idServer, 1, QStringLiteral("append ") + File(QStringLiteral("messages")));
  ASSERT_GT(idTest, 0);
  ASSERT_GT(idAlert, 0);
}

bool DaemonRig::Start(const QProcessEnvironment& environment) {
  QProcessEnvironment own = environment;
  own.insert(QStringLiteral("QUARL_STORE"), StoreText());
  process_.setProcessEnvironment(own);
  process_.setProcessChannelMode(QProcess::MergedChannels);
  process_.start(Program(), {QStringLiteral("--foreground")});
  if (!process_.waitForStarted()) return false;
  return Within(20'000, [&] {
    const auto instance = stores_->Service().Instance();
    return instance && instance->process.pid == process_.processId() && instance->state == 4;
  });
}

void DaemonRig::Kill() {
  if (process_.state() == QProcess::NotRunning) return;
  process_.kill();
  process_.waitForFinished();
}

int DaemonRig::Stop() {
  process_.terminate();
  return process_.waitForFinished(20'000) && process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
}

void DaemonRig::Answer(bool passed) const {
  QFile answer(File(QStringLiteral("answer")));
  ASSERT_TRUE(answer.open(QIODevice::WriteOnly));
  answer.write(passed ? "p" : "f");
}

bool DaemonRig::Check(std::function<void()> meanwhile) {
  meanwhile_ = std::move(meanwhile);
  const bool done = stores_->Servers().CheckServer(idServer);
  meanwhile_ = nullptr;
  return done;
}

std::vector<Delivered> DaemonRig::Messages() const {
  std::vector<Delivered> messages;
  QFile file(File(QStringLiteral("messages")));
  if (!file.open(QIODevice::ReadOnly)) return messages;
  for (const QByteArray& line : file.readAll().split('\n')) {
    const auto words = QString::fromUtf8(line).split(u'\t');
    if (words.size() == 3) messages.push_back({words[0], words[1], words[2]});
  }
  return messages;
}

bool DaemonRig::WaitForMessages(std::size_t count) const {
  return Within(30'000, [&] {
    std::set<QString> different;
    for (const Delivered& message : Messages()) different.insert(message.message);
    return different.size() >= count;
  });
}

}  // namespace quarl::test
