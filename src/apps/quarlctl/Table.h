#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace quarl::ctl {

/// Columns of a text on a terminal: wide characters count twice, combining ones not at all, whatever the locale is.
int DisplayWidth(const QString& text);

/// A table for people: a line of titles, then one line a row, columns two blanks apart. A column grows with its
/// cells up to a bound; a longer cell stays whole and pushes the rest of its own line aside.
class Table {
 public:
  explicit Table(QStringList titles) : rows_{std::move(titles)} {}
  /// One cell a title. Cells are escaped here, so that none can end its line or reach the terminal's controls.
  void AddRow(const QStringList& cells);
  /// All lines, each with its line feed; none ends in blanks.
  QString Text() const;

 private:
  std::vector<QStringList> rows_;
};

}  // namespace quarl::ctl
