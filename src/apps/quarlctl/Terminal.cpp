#include "apps/quarlctl/Terminal.h"

#include <unistd.h>

#include <QFile>
#include <iostream>
#include <string>
#include <tuple>
#include <utility>

#include "apps/quarlctl/CommandError.h"
#include "apps/quarlctl/FileBytes.h"
#include "transfer/VisibleText.h"

namespace quarl::ctl {

void Terminal::PrintLine(const QString& line) {
  output_ += line.toUtf8() + '\n';
}

void Terminal::Flush() {
  const QByteArray output = std::exchange(output_, {});
  const QString fault = WriteAll(STDOUT_FILENO, output);
  if (!fault.isEmpty()) throw CommandError(QStringLiteral("Standard output cannot be written: %1.").arg(fault));
}

void Terminal::Complain(const QString& text) {
  const QByteArray line = QStringLiteral("quarlctl: %1\n").arg(transfer::VisibleText(text)).toUtf8();
  std::ignore = WriteAll(STDERR_FILENO, line);
}

bool Terminal::Confirm(const QString& question) {
  if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0) {
    throw CommandError(QStringLiteral("%1 Nobody can be asked here; --yes answers beforehand.").arg(question));
  }
  const QByteArray text = QStringLiteral("%1 [y/N] ").arg(transfer::VisibleText(question)).toUtf8();
  std::ignore = WriteAll(STDERR_FILENO, text);
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "Y" || answer == "yes";
}

QByteArray Terminal::ReadInput(qint64 limit) {
  QFile input;
  if (!input.open(STDIN_FILENO, QIODevice::ReadOnly)) {
    throw CommandError(QStringLiteral("Standard input cannot be read: %1.").arg(input.errorString()));
  }
  return ReadAtMost(input, QStringLiteral("Standard input"), limit);
}

}  // namespace quarl::ctl
