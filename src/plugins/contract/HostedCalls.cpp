#include "plugins/contract/HostedCalls.h"

#include <QCoreApplication>

#include "base/Utf8.h"
#include "plugins/contract/HostCall.h"
#include "plugins/contract/ModuleError.h"

namespace quarl::plugins {
namespace {

std::string Narrow(const QString& text) {
  std::string narrow = text.toStdString();
  if (narrow.size() > kLargestText) {
    throw ModuleError(QStringLiteral("A text of %1 bytes cannot be handed to a module; %2 bytes are the limit.")
                          .arg(narrow.size())
                          .arg(kLargestText));
  }
  return narrow;
}

std::string NativePath(const QString& modulePath) {
  std::string path = Narrow(InstallPaths::Resolve(modulePath));
  if (path.find('\0') != std::string::npos) {
    throw ModuleError(QStringLiteral("The path of the module has a NUL character in it."));
  }
  return path;
}

QString FileName(const std::string& path) {
  return FromUtf8(std::string_view(path).substr(path.rfind('/') + 1));
}

// What the texts of a reply say, in the order of the request.
std::vector<QString> Wide(const HostRequest& request, const HostReply& reply, const QString& module) {
  bool good = reply.texts.size() == request.texts.size();
  for (std::size_t i = 0; good && i < reply.texts.size(); ++i) good = reply.texts[i].size() == request.texts[i].size();
  if (!good) throw ModuleError(QStringLiteral("The module %1 answered with what cannot be understood.").arg(module));
  std::vector<QString> texts;
  for (const std::string& text : reply.texts) {
    if (!QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())).isValidUtf8()) {
      throw ModuleError(QStringLiteral("The module %1 left a text that is not UTF-8.").arg(module));
    }
    texts.push_back(FromUtf8(text));
  }
  return texts;
}

}  // namespace

HostedCalls::HostedCalls(const InstallPaths& paths, ModuleWait& wait, HostLimits limits)
    : program_(paths.ApplicationFolder() + QStringLiteral("/quarl-modulehost")), wait_(wait), limits_(limits) {}

qint16 HostedCalls::About(ModuleKind kind, QString& modulePath) {
  return Run(HostOperation::About, kind, {&modulePath}, limits_.usual);
}

qint16 HostedCalls::GetBufferSize(ModuleKind kind, QString& modulePath) {
  return Run(HostOperation::GetBufferSize, kind, {&modulePath}, limits_.usual);
}

qint16 HostedCalls::SetProperties(ModuleKind kind, QString& modulePath, QString& serverName, QString& serverAddress,
                                  QString& properties) {
  return Run(HostOperation::SetProperties, kind, {&modulePath, &serverName, &serverAddress, &properties},
             limits_.usual);
}

qint16 HostedCalls::Alert(QString& modulePath, QString& serverName, QString& serverAddress, QString& subject,
                          QString& message, QString& properties, QString& resultText) {
  return Run(HostOperation::Alert, ModuleKind::Alert,
             {&modulePath, &serverName, &serverAddress, &subject, &message, &properties, &resultText}, limits_.alert);
}

qint16 HostedCalls::Run(HostOperation operation, ModuleKind kind, const std::vector<QString*>& texts,
                        std::chrono::milliseconds limit) {
  HostRequest request;
  request.operation = operation;
  request.kind = kind;
  request.ownerWindow = wait_.OwnerWindow();
  request.applicationTitle = QCoreApplication::applicationName().toStdString();
  request.texts.push_back(NativePath(*texts.front()));
  for (std::size_t i = 1; i < texts.size(); ++i) request.texts.push_back(Narrow(*texts[i]));
  const QString module = FileName(request.texts.front());

  HostCall call(program_, request, module, limit);
  wait_.Wait(call);
  if (!call.Done()) call.Cancel();
  const HostReply reply = call.Result();
  const std::vector<QString> left = Wide(request, reply, module);
  // The path that went out was the native one; the caller's stays as it writes it unless somebody changed it.
  if (reply.texts.front() != request.texts.front()) *texts.front() = left.front();
  for (std::size_t i = 1; i < texts.size(); ++i) *texts[i] = left[i];
  return reply.result;
}

}  // namespace quarl::plugins
