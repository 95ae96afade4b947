#include "modules/Peer.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <set>

namespace quarl::testing {
namespace {

constexpr int kPatience = 20000;

}  // namespace

Peer::Peer(const QString& script, const QStringList& arguments) {
  // A port that comes again would be the same server to a module that remembers.
  static std::set<int> used;
  process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  do {
    process_.kill();
    process_.waitForFinished();
    process_.start(
        QStringLiteral("/usr/bin/python3"),
        QStringList{QStringLiteral("-u"), QStringLiteral(QUARL_SOURCE_DIR "/tests/modules/") + script} + arguments);
    port_ = Line().toInt();
    EXPECT_GT(port_, 0) << script.toStdString() << " does not listen";
  } while (port_ > 0 && !used.insert(port_).second);
}

Peer::~Peer() {
  process_.kill();
  process_.waitForFinished();
}

QByteArray Peer::Line() {
  QElapsedTimer timer;
  timer.start();
  while (!process_.canReadLine() && timer.elapsed() < kPatience) {
    if (!process_.waitForReadyRead(static_cast<int>(kPatience - timer.elapsed()))) break;
  }
  return process_.readLine();
}

nlohmann::json Peer::Next() {
  const QByteArray line = Line();
  EXPECT_FALSE(line.isEmpty()) << "nothing was received";
  return line.isEmpty() ? nlohmann::json() : nlohmann::json::parse(line.toStdString());
}

int Peer::CountRest() {
  process_.terminate();
  process_.waitForFinished();
  return static_cast<int>(process_.readAll().count('\n'));
}

QuarlEvent ProblemEvent() {
  return {sizeof(QuarlEvent),
          QUARL_EVENT_PROBLEM,
          "Düsseldorf: Port 443 failed",
          "The test \"Port 443\" failed.\r\n.\r\n..two dots\r\nFrom here: 100 %\r\n",
          "www1",
          "192.0.2.10",
          "Web",
          "Port 443",
          "No answer within 3 s",
          1767225600,
          1767225300,
          "problem-7",
          "message-8"};
}

}  // namespace quarl::testing
