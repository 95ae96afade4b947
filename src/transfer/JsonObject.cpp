#include "transfer/JsonObject.h"

#include <algorithm>

#include "base/Utf8.h"
#include "transfer/TransferError.h"

namespace quarl::transfer {
namespace {

using Json = nlohmann::json;

qint64 IntegerOf(const Json& value, const Place& place, qint64 least, qint64 most) {
  const bool fits = value.is_number_integer() && (!value.is_number_unsigned() || value.get<quint64>() <= INT64_MAX) &&
                    value.get<qint64>() >= least && value.get<qint64>() <= most;
  if (!fits) place.Fail(QStringLiteral("must be a whole number from %1 to %2").arg(least).arg(most));
  return value.get<qint64>();
}

}  // namespace

QString Place::Text() const {
  if (parent_ == nullptr) return QStringLiteral("/");
  std::string key = key_.substr(0, 100);
  for (std::size_t i = 0; i < key.size(); ++i) {
    if (key[i] == '~') key.replace(i++, 1, "~0");
    if (key[i] == '/') key.replace(i++, 1, "~1");
  }
  const QString owner = parent_->Text();
  return (owner.size() == 1 ? QString() : owner) + QLatin1Char('/') + QString::fromStdString(key);
}

void Place::Fail(const QString& what) const {
  throw TransferError(QStringLiteral("%1: %2.").arg(Text(), what));
}

JsonObject::JsonObject(const Json& value, const Place& place) : value_(value), place_(place) {
  if (!value.is_object()) place.Fail(QStringLiteral("must be an object"));
}

const Json* JsonObject::Value(const char* key) {
  asked_.emplace_back(key);
  const auto found = value_.find(key);
  return found == value_.end() ? nullptr : &*found;
}

const Json& JsonObject::Required(const char* key) {
  const Json* value = Value(key);
  if (value == nullptr) place_.Fail(QStringLiteral("\"%1\" is missing").arg(QLatin1String(key)));
  return *value;
}

QString JsonObject::Text(const char* key) {
  const Json& value = Required(key);
  if (!value.is_string()) At(key).Fail(QStringLiteral("must be a text"));
  return FromUtf8(value.get_ref<const std::string&>());
}

std::optional<QString> JsonObject::OptionalText(const char* key) {
  if (!value_.contains(key)) {
    asked_.emplace_back(key);
    return std::nullopt;
  }
  return Text(key);
}

bool JsonObject::Boolean(const char* key) {
  const Json& value = Required(key);
  if (!value.is_boolean()) At(key).Fail(QStringLiteral("must be true or false"));
  return value.get<bool>();
}

qint64 JsonObject::Integer(const char* key, qint64 least, qint64 most) {
  return IntegerOf(Required(key), At(key), least, most);
}

std::optional<qint64> JsonObject::OptionalInteger(const char* key, qint64 least, qint64 most) {
  const Json* value = Value(key);
  if (value == nullptr) return std::nullopt;
  return IntegerOf(*value, At(key), least, most);
}

const Json& JsonObject::List(const char* key) {
  static const Json none = Json::array();
  const Json* value = Value(key);
  if (value == nullptr) return none;
  if (!value->is_array()) At(key).Fail(QStringLiteral("must be a list"));
  return *value;
}

void JsonObject::Finish() const {
  for (const auto& [key, value] : value_.items()) {
    if (std::find(asked_.begin(), asked_.end(), key) == asked_.end()) {
      Place(place_, key).Fail(QStringLiteral("this key is not known here"));
    }
  }
}

}  // namespace quarl::transfer
