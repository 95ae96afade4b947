#include "transfer/StrictJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <vector>

#include "transfer/TransferError.h"

namespace quarl::transfer {
namespace {

using Json = nlohmann::json;

/// Builds the value from the parser's events, which is where a second key of one name can still be seen.
class StrictBuilder : public nlohmann::json_sax<Json> {
 public:
  StrictBuilder(const QByteArray& text, Json& result) : text_(text), result_(result) {}

  bool null() override { return Put(nullptr); }
  bool boolean(bool value) override { return Put(value); }
  bool number_integer(number_integer_t value) override { return Put(value); }
  bool number_unsigned(number_unsigned_t value) override { return Put(value); }
  bool number_float(number_float_t value, const string_t&) override { return Put(value); }
  bool string(string_t& value) override { return Put(std::move(value)); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return Open(Json::object()); }
  bool start_array(std::size_t) override { return Open(Json::array()); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }

  bool key(string_t& name) override {
    Json& object = *open_.back();
    if (object.contains(name)) {
      throw TransferError(
          QStringLiteral("%1: the key \"%2\" stands here twice.").arg(Place(), QString::fromStdString(name).left(100)));
    }
    key_ = std::move(name);
    return true;
  }

  bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& fault) override {
    const QByteArray before = text_.left(static_cast<qsizetype>(position == 0 ? 0 : position - 1));
    const auto line = before.count('\n') + 1;
    const auto column = QString::fromUtf8(before.mid(before.lastIndexOf('\n') + 1)).size() + 1;
    throw TransferError(QStringLiteral("Line %1, column %2: no valid JSON: %3.")
                            .arg(QString::number(line), QString::number(column), Reason(fault.what())));
  }

 private:
  /// The library's words without its own places and without the text that it read, which may be very long.
  static QString Reason(const std::string& what) {
    QString reason = QString::fromStdString(what);
    reason.remove(0, reason.indexOf(QLatin1Char(']')) + 1);
    if (const qsizetype column = reason.indexOf(QLatin1String("column ")); column >= 0) {
      reason.remove(0, reason.indexOf(QLatin1Char(':'), column) + 1);
    }
    const qsizetype lastRead = reason.indexOf(QLatin1String("; last read"));
    if (lastRead >= 0) {
      const qsizetype expected = reason.indexOf(QLatin1String("; expected"), lastRead);
      const QString tail = expected >= 0 ? reason.mid(expected) : QString();
      reason = reason.left(lastRead) + tail;
    }
    return reason.trimmed().left(300);
  }

  template <typename Value>
  bool Put(Value&& value) {
    Add(Json(std::forward<Value>(value)));
    return true;
  }

  Json* Add(Json value) {
    if (open_.empty()) {
      result_ = std::move(value);
      return &result_;
    }
    Json& owner = *open_.back();
    if (owner.is_array()) {
      owner.push_back(std::move(value));
      return &owner.back();
    }
    return &(owner[key_] = std::move(value));
  }

  bool Open(Json value) {
    if (open_.size() >= kDeepestNesting) {
      throw TransferError(QStringLiteral("%1: nested more than %2 deep.").arg(Place()).arg(kDeepestNesting));
    }
    const bool named = !open_.empty() && open_.back()->is_object();
    Json* opened = Add(std::move(value));
    names_.push_back(named ? key_ : std::string());
    open_.push_back(opened);
    return true;
  }

  bool Close() {
    open_.pop_back();
    names_.pop_back();
    return true;
  }

  /// JSON pointer of the innermost open value.
  QString Place() const {
    QString place;
    for (std::size_t i = 1; i < open_.size(); ++i) {
      const bool inArray = open_[i - 1]->is_array();
      place += QLatin1Char('/') +
               (inArray ? QString::number(open_[i - 1]->size() - 1) : QString::fromStdString(names_[i]).left(100));
    }
    return place.isEmpty() ? QStringLiteral("/") : place;
  }

  const QByteArray& text_;
  Json& result_;
  std::vector<Json*> open_;
  std::vector<std::string> names_;
  std::string key_;
};

}  // namespace

nlohmann::json ParseStrictJson(const QByteArray& text) {
  const bool blank =
      std::all_of(text.begin(), text.end(), [](char c) { return std::isspace(static_cast<unsigned char>(c)); });
  if (blank) throw TransferError(QStringLiteral("The file is empty."));
  Json result;
  StrictBuilder builder(text, result);
  Json::sax_parse(text.begin(), text.end(), &builder);
  return result;
}

}  // namespace quarl::transfer
