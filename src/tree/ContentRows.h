#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "base/NodeKey.h"

namespace quarl::tree {

/// A column of the detail list; the width is in logical pixels.
struct ContentColumn {
  QString caption;
  int width = 0;
  bool operator==(const ContentColumn&) const = default;
};

/// The columns and rows of a detail list, 40 bytes a row and one buffer for the texts. A row is filled in the order
/// key, image, texts by column; what is not set stays empty.
class ContentRows {
 public:
  static constexpr std::size_t kColumns = 3;
  static constexpr quint16 kNoImage = std::numeric_limits<quint16>::max();

  void AddColumn(const QString& caption, int width) { columns_.push_back({caption, width}); }
  /// Room for so many rows and bytes of text.
  void Reserve(std::size_t rows, std::size_t textBytes);
  /// Begins the next row.
  void AddRow() { rows_.emplace_back().textOffset = texts_.size(); }
  void SetKey(NodeKey::Parts key);
  void SetImage(quint16 image) { rows_.back().image = image; }
  /// The texts of a row are set in the order of their columns; several for one column follow one another.
  void AppendText(std::size_t column, std::string_view utf8);
  /// A time (milliseconds since the epoch) at the beginning of a cell; at most one a row, always in the same column.
  void SetDate(std::size_t column, qint64 msSinceEpoch);

  const std::vector<ContentColumn>& Columns() const { return columns_; }
  std::size_t RowCount() const { return rows_.size(); }
  QString Text(std::size_t row, std::size_t column) const;
  /// Empty for a row without key.
  QString Key(std::size_t row) const;
  quint16 Image(std::size_t row) const { return rows_[row].image; }

 private:
  static constexpr qint64 kNoDate = std::numeric_limits<qint64>::min();
  struct Row {
    quint64 textOffset = 0;
    qint64 date = kNoDate;
    std::array<quint32, kColumns> lengths{};
    qint32 id = 0;
    quint16 image = kNoImage;
    NodeKind kind = NodeKind::Other;
  };

  std::vector<ContentColumn> columns_;
  std::vector<Row> rows_;
  std::string texts_;
  std::size_t dateColumn_ = 0;
};

}  // namespace quarl::tree
