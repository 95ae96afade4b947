#include "apps/quarlctl/Table.h"

#include <algorithm>
#include <clocale>
#include <cwchar>

#include "transfer/VisibleText.h"

namespace quarl::ctl {
namespace {

constexpr int kWidestColumn = 40;

/// The C library's table of widths, of a locale of our own: the user's may not know Unicode.
class WidthTable {
 public:
  WidthTable() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {}
  ~WidthTable() {
    if (locale_ != nullptr) freelocale(locale_);
  }
  WidthTable(const WidthTable&) = delete;
  WidthTable& operator=(const WidthTable&) = delete;

  int Width(const QString& text) const {
    const locale_t before = locale_ != nullptr ? uselocale(locale_) : nullptr;
    int width = 0;
    for (const char32_t c : text.toUcs4())
      width += locale_ != nullptr ? std::max(0, wcwidth(static_cast<wchar_t>(c))) : 1;
    if (before != nullptr) uselocale(before);
    return width;
  }

 private:
  locale_t locale_;
};

}  // namespace

int DisplayWidth(const QString& text) {
  static const WidthTable table;
  return table.Width(text);
}

void Table::AddRow(const QStringList& cells) {
  QStringList row;
  row.reserve(cells.size());
  for (const QString& cell : cells) row << transfer::VisibleText(cell);
  rows_.push_back(std::move(row));
}

QString Table::Text() const {
  std::vector<int> widths(static_cast<std::size_t>(rows_.front().size()), 0);
  for (const QStringList& row : rows_) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const int width = DisplayWidth(row[static_cast<qsizetype>(i)]);
      if (width <= kWidestColumn) widths[i] = std::max(widths[i], width);
    }
  }
  QString text;
  for (const QStringList& row : rows_) {
    QString line;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const QString& cell = row[static_cast<qsizetype>(i)];
      line += cell + QString(std::max(0, widths[i] - DisplayWidth(cell)) + 2, QLatin1Char(' '));
    }
    while (line.endsWith(QLatin1Char(' '))) line.chop(1);
    text += line + QLatin1Char('\n');
  }
  return text;
}

}  // namespace quarl::ctl
