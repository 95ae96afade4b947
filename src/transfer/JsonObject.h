#pragma once

#include <nlohmann/json.hpp>

#include <QString>
#include <QStringList>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace quarl::transfer {

/// Where a value stands in the file; printed as a JSON pointer. Refers to its parent, which must outlive it.
class Place {
 public:
  Place() = default;
  Place(const Place& parent, std::string key) : parent_(&parent), key_(std::move(key)) {}
  Place(const Place& parent, std::size_t index) : Place(parent, std::to_string(index)) {}
  QString Text() const;
  /// Throws TransferError: the place, a colon and what is wrong there.
  [[noreturn]] void Fail(const QString& what) const;

 private:
  const Place* parent_ = nullptr;
  std::string key_;
};

/// One object of a strict file: every value is asked for by its key, and Finish() refuses the keys that nobody asked
/// for. Every function throws TransferError, naming the place, for a value of another type or out of range.
class JsonObject {
 public:
  JsonObject(const nlohmann::json& value, const Place& place);

  QString Text(const char* key);
  std::optional<QString> OptionalText(const char* key);
  bool Boolean(const char* key);
  qint64 Integer(const char* key, qint64 least, qint64 most);
  std::optional<qint64> OptionalInteger(const char* key, qint64 least, qint64 most);
  /// Null when the key is not there.
  const nlohmann::json* Value(const char* key);
  /// The elements of a list; a list that is not there is empty.
  const nlohmann::json& List(const char* key);
  void Finish() const;

  Place At(const char* key) const { return {place_, key}; }
  const Place& Here() const { return place_; }

 private:
  const nlohmann::json& Required(const char* key);

  const nlohmann::json& value_;
  const Place& place_;
  std::vector<std::string> asked_;
};

}  // namespace quarl::transfer
