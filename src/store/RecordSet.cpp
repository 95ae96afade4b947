#include "store/RecordSet.h"

#include <QDateTime>
#include <QRegularExpression>
#include <limits>

#include "base/Utf8.h"
#include "store/StoreError.h"

namespace quarl::store {

RecordSet::RecordSet(std::shared_ptr<const FieldList> fields) : fields_(std::move(fields)) {}

std::size_t RecordSet::RowCount() const {
  return fields_->empty() ? 0 : cells_.size() / fields_->size();
}

void RecordSet::RequireOpen() const {
  if (closed_) throw StoreError(QStringLiteral("The record set is closed."));
}

bool RecordSet::Eof() const {
  RequireOpen();
  return row_ * fields_->size() >= cells_.size();
}

void RecordSet::MoveNext() {
  if (Eof()) throw StoreError(QStringLiteral("The record set has no further record."));
  ++row_;
}

int RecordSet::Column(std::string_view field) const {
  for (std::size_t i = 0; i < fields_->size(); ++i) {
    if ((*fields_)[i].name == field) return static_cast<int>(i);
  }
  throw StoreError(QStringLiteral("The record set has no field \"%1\".")
                       .arg(QString::fromUtf8(field.data(), static_cast<qsizetype>(field.size()))));
}

const RecordSet::Cell& RecordSet::At(int column) const {
  if (column < 0 || static_cast<std::size_t>(column) >= fields_->size()) {
    throw StoreError(QStringLiteral("The record set has no column %1.").arg(column));
  }
  if (Eof()) throw StoreError(QStringLiteral("The record set has no current record."));
  return cells_[row_ * fields_->size() + static_cast<std::size_t>(column)];
}

bool RecordSet::IsNull(int column) const {
  return At(column).null;
}

qint64 RecordSet::Integer(int column) const {
  const Cell& cell = At(column);
  const Field& field = (*fields_)[static_cast<std::size_t>(column)];
  if (cell.null || field.type == FieldType::Text) {
    throw StoreError(QStringLiteral("The field \"%1\" holds no number.").arg(QString::fromStdString(field.name)));
  }
  return cell.value;
}

std::string_view RecordSet::Utf8(int column) const {
  const Cell& cell = At(column);
  const Field& field = (*fields_)[static_cast<std::size_t>(column)];
  if (cell.null || field.type != FieldType::Text) {
    throw StoreError(QStringLiteral("The field \"%1\" holds no text.").arg(QString::fromStdString(field.name)));
  }
  return std::string_view(texts_).substr(static_cast<std::size_t>(cell.value), cell.length);
}

QVariant RecordSet::Value(int column) const {
  const Cell& cell = At(column);
  if (cell.null) return {};
  switch ((*fields_)[static_cast<std::size_t>(column)].type) {
    case FieldType::Integer:
      return cell.value;
    case FieldType::DateTime:
      return QDateTime::fromMSecsSinceEpoch(cell.value);
    case FieldType::Text:
      break;
  }
  const std::string_view text = Utf8(column);
  return FromUtf8(text);
}

QVariant RecordSet::Value(std::string_view field) const {
  return Value(Column(field));
}

void RecordSet::Find(const QString& criterion) {
  RequireOpen();
  static const QRegularExpression form(QStringLiteral("^\\s*\\[([^\\]]+)\\]\\s*=\\s*([+-]?\\d+)\\s*$"));
  const QRegularExpressionMatch match = form.match(criterion);
  bool ok = false;
  const qint64 wanted = match.captured(2).toLongLong(&ok);
  if (!match.hasMatch() || !ok) {
    throw StoreError(QStringLiteral("\"%1\" is no criterion of the form [Field] = number.").arg(criterion.left(200)));
  }
  const int column = Column(match.captured(1).toStdString());
  for (; !Eof(); MoveNext()) {
    if (!IsNull(column) && Integer(column) == wanted) return;
  }
}

void RecordSet::Close() {
  closed_ = true;
  cells_ = {};
  texts_ = {};
}

void RecordSet::AppendNull() {
  cells_.push_back({0, 0, true});
}

void RecordSet::AppendInteger(qint64 value) {
  cells_.push_back({value, 0, false});
}

void RecordSet::AppendText(std::string_view utf8) {
  if (utf8.size() > std::numeric_limits<quint32>::max()) throw StoreError(QStringLiteral("A text is too long."));
  cells_.push_back({static_cast<qint64>(texts_.size()), static_cast<quint32>(utf8.size()), false});
  texts_.append(utf8);
}

}  // namespace quarl::store
