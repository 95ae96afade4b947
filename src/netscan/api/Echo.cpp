#include "netscan/api/Echo.h"

#include <arpa/inet.h>

#include <QFile>
#include <QLoggingCategory>
#include <atomic>

#include "base/InstallPaths.h"
#include "netscan/api/EchoHelper.h"
#include "netscan/api/EchoSocket.h"

namespace quarl::netscan {
namespace {

Q_LOGGING_CATEGORY(logEcho, "quarl.netscan.echo")

void WarnOnce(const QString& helperProgram) {
  static std::atomic_flag warned;
  if (warned.test_and_set()) return;
  qCWarning(logEcho).noquote() << "Echoes cannot be sent: the kernel permits this user no ICMP socket, and"
                               << helperProgram
                               << "is missing or lacks the capability cap_net_raw. Every address counts as answering.";
}

}  // namespace

std::optional<in_addr_t> EchoAddress(const QString& text) {
  if (text.contains(QChar())) return std::nullopt;
  const in_addr_t address = inet_addr(text.toUtf8().constData());
  return address == INADDR_NONE ? std::nullopt : std::optional(address);
}

QString EchoHelperProgram() {
  return InstallPaths::OfThisProgram().ApplicationFolder() + QStringLiteral("/quarl-echo");
}

std::unique_ptr<EchoChannel> OpenEchoChannel(const QString& helperProgram) {
  for (const EchoMethod method : {EchoMethod::Datagram, EchoMethod::Raw})
    if (auto socket = EchoSocket::Open(method)) return socket;
  if (auto helper = EchoHelper::Start(QFile::encodeName(helperProgram).toStdString())) return helper;
  WarnOnce(helperProgram);
  return nullptr;
}

}  // namespace quarl::netscan
