#pragma once

#include <QString>
#include <QVariant>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quarl::store {

enum class FieldType : quint8 { Integer, Text, DateTime };

/// One field of a query: its name as the caller knows it, and what its values are.
struct Field {
  std::string name;
  FieldType type = FieldType::Integer;
};
using FieldList = std::vector<Field>;

/// A forward cursor over the rows of a query. It owns a copy of all rows, so it holds no lock and no statement; the
/// rows are those of the moment of the query. Every value may be Null. Values are kept in one buffer, 16 bytes a
/// value plus the bytes of texts. Reading past the end, an unknown field or a closed set throws StoreError.
/// Not thread-safe; movable between threads.
class RecordSet {
 public:
  /// @param fields shared by all results of one query, so that a result of few rows costs little.
  explicit RecordSet(std::shared_ptr<const FieldList> fields);

  // --- The cursor -----------------------------------------------------------------------------------------------
  bool Eof() const;
  void MoveNext();
  /// The value of a field in the current row: an invalid QVariant for Null, qint64, QString or QDateTime (local).
  QVariant Value(std::string_view field) const;
  /// Moves to the first row, from the current one on, that satisfies "[field] = number"; to the end if none does.
  /// Throws StoreError for a criterion of another form or an unknown field.
  void Find(const QString& criterion);
  /// Frees the rows. Closing twice is harmless.
  void Close();

  // --- The same by column, for whoever reads many rows ------------------------------------------------------------
  /// The position of a field, to be asked once before the loop.
  int Column(std::string_view field) const;
  bool IsNull(int column) const;
  /// An Integer value, or a DateTime in milliseconds since the epoch. Throws StoreError for Null.
  qint64 Integer(int column) const;
  /// A Text value in UTF-8, valid until the set is closed. Throws StoreError for Null.
  std::string_view Utf8(int column) const;
  QVariant Value(int column) const;
  const FieldList& Fields() const { return *fields_; }
  /// Rows in all, whatever the cursor's place.
  std::size_t RowCount() const;

  // --- Filling, for stores: the values of a row one after another, in the order of the fields ---------------------
  void AppendNull();
  void AppendInteger(qint64 value);
  void AppendText(std::string_view utf8);

 private:
  struct Cell {
    qint64 value;    // the number, or the offset of the text
    quint32 length;  // of the text, in bytes
    bool null;
  };
  const Cell& At(int column) const;
  void RequireOpen() const;

  std::shared_ptr<const FieldList> fields_;
  std::vector<Cell> cells_;
  std::string texts_;
  std::size_t row_ = 0;
  bool closed_ = false;
};

}  // namespace quarl::store
