#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <tuple>

#include "apps/quarlctl/CommandLine.h"
#include "apps/quarlctl/Terminal.h"

namespace {

void ReportQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtDebugMsg && type != QtInfoMsg) quarl::ctl::Terminal::Complain(text);
}

}  // namespace

int main(int argc, char** argv) {
  std::ignore = setenv("LC_ALL", "C.UTF-8", 1);  // the same texts, in UTF-8, for every user
  qInstallMessageHandler(ReportQtMessage);
  std::ignore = std::signal(SIGPIPE, SIG_IGN);  // a reader that went away is an error like any other
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("quarlctl"));
  return quarl::ctl::RunCommandLine(argc, argv);
}
