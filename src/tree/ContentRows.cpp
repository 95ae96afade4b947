#include "tree/ContentRows.h"

#include "base/DateTimeText.h"
#include "base/Utf8.h"

namespace quarl::tree {

void ContentRows::Reserve(std::size_t rows, std::size_t textBytes) {
  rows_.reserve(rows);
  texts_.reserve(textBytes);
}

void ContentRows::SetKey(NodeKey::Parts key) {
  rows_.back().kind = key.kind;
  rows_.back().id = key.id;
}

void ContentRows::AppendText(std::size_t column, std::string_view utf8) {
  Row& row = rows_.back();
  row.lengths.at(column) += static_cast<quint32>(utf8.size());
  texts_.append(utf8);
}

void ContentRows::SetDate(std::size_t column, qint64 msSinceEpoch) {
  dateColumn_ = column;
  rows_.back().date = msSinceEpoch;
}

QString ContentRows::Text(std::size_t row, std::size_t column) const {
  const Row& cells = rows_[row];
  std::size_t offset = cells.textOffset;
  for (std::size_t i = 0; i < column; ++i) offset += cells.lengths.at(i);
  const QString text = FromUtf8(std::string_view(texts_).substr(offset, cells.lengths.at(column)));
  return column == dateColumn_ && cells.date != kNoDate ? DateTimeText(cells.date) + text : text;
}

QString ContentRows::Key(std::size_t row) const {
  return NodeKey::Make(rows_[row].kind, rows_[row].id);
}

}  // namespace quarl::tree
