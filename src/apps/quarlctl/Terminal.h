#pragma once

#include <QByteArray>
#include <QString>

namespace quarl::ctl {

/// The three standard streams. Output is kept until Flush(), so that a command that fails has printed nothing.
class Terminal {
 public:
  /// Adds a line; line feed is added.
  void PrintLine(const QString& line);
  void Print(const QByteArray& utf8) { output_ += utf8; }
  /// Writes what was printed. Throws CommandError when it cannot be written whole.
  void Flush();
  /// Writes "quarlctl: " and the text to standard error at once, as one line whatever the text holds.
  static void Complain(const QString& text);
  /// Asks a question that only a "y" or "yes" answers with true. Throws CommandError when nobody can be asked
  /// because standard input or error is no terminal.
  static bool Confirm(const QString& question);
  /// Standard input up to its end. Throws CommandError when it cannot be read or holds more than limit bytes.
  static QByteArray ReadInput(qint64 limit);

 private:
  QByteArray output_;
};

}  // namespace quarl::ctl
