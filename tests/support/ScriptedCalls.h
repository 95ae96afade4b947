#pragma once

#include <QStringList>

#include "plugins/contract/ModuleCalls.h"
#include "plugins/contract/ModuleError.h"

namespace quarl::testing {

/// Calls of modules that answer as a test says and keep what they were given, one line a call, arguments joined by
/// "|" and NULs as "~". All string arguments are overwritten, as a module may do.
class ScriptedCalls : public plugins::ModuleCalls {
 public:
  QStringList calls;
  qint16 size = 0;    ///< the answer of GetBufferSize
  qint16 result = 0;  ///< the answer of the others
  QString returned;   ///< left in the buffer of the properties or of the result text; "~" stands for NUL
  QString failing;    ///< the operation that throws ModuleError, "module fault"

  qint16 About(ModuleKind kind, QString& modulePath) override {
    Take(QStringLiteral("About"), Name(kind), {&modulePath});
    return result;
  }
  qint16 GetBufferSize(ModuleKind kind, QString& modulePath) override {
    Take(QStringLiteral("GetBufferSize"), Name(kind), {&modulePath});
    return size;
  }
  qint16 SetProperties(ModuleKind kind, QString& modulePath, QString& serverName, QString& serverAddress,
                       QString& properties) override {
    Take(QStringLiteral("SetProperties"), Name(kind), {&modulePath, &serverName, &serverAddress, &properties});
    properties = Returned();
    return result;
  }
  qint16 Alert(QString& modulePath, QString& serverName, QString& serverAddress, QString& subject, QString& message,
               QString& properties, QString& resultText) override {
    Take(QStringLiteral("Alert"), QStringLiteral("alert"),
         {&modulePath, &serverName, &serverAddress, &subject, &message, &properties, &resultText});
    resultText = Returned();
    return result;
  }

 private:
  static QString Name(ModuleKind kind) {
    return kind == ModuleKind::Test ? QStringLiteral("test") : QStringLiteral("alert");
  }
  QString Returned() const { return QString(returned).replace(u'~', QChar(0)); }
  void Take(const QString& operation, const QString& kind, std::initializer_list<QString*> arguments) {
    QString line = operation + u'|' + kind;
    for (const QString* argument : arguments) line += u'|' + QString(*argument).replace(QChar(0), u'~');
    calls.append(line);
    if (operation == failing) throw plugins::ModuleError(QStringLiteral("module fault"));
    for (QString* argument : arguments) *argument = QStringLiteral("overwritten");
  }
};

}  // namespace quarl::testing
