#include <nlohmann/json.hpp>

#include <QUuid>
#include <algorithm>
#include <limits>
#include <map>
#include <set>

#include "transfer/ConfigurationFile.h"
#include "transfer/JsonObject.h"
#include "transfer/ScheduleWords.h"
#include "transfer/StrictJson.h"

namespace quarl::transfer {
namespace {

using Json = nlohmann::json;

constexpr qint64 kLargestId = std::numeric_limits<qint32>::max();
constexpr qint64 kLeast16 = std::numeric_limits<qint16>::min();
constexpr qint64 kMost16 = std::numeric_limits<qint16>::max();

/// The types of one kind, as tests or alerts name them. Module names that differ in case only are the same.
class TypeNames {
 public:
  std::vector<store::TypeConfiguration> types;

  bool HasModule(const QString& module) const { return byModule_.contains(module.toCaseFolded()); }
  void Add(const store::TypeConfiguration& type) {
    byModule_[type.module.toCaseFolded()] = type.id;
    ids_.insert(type.id);
    types.push_back(type);
  }
  bool HasId(qint32 id) const { return ids_.contains(id); }
  /// The id of the type with that module, which is made when the file has not listed it.
  qint32 OfModule(const QString& module) {
    if (!HasModule(module)) Add({NextProvisionalId(), {}, module});
    return byModule_.at(module.toCaseFolded());
  }
  qint32 NextProvisionalId() const { return -1 - static_cast<qint32>(types.size()); }

 private:
  std::map<QString, qint32> byModule_;
  std::set<qint32> ids_;
};

class Reader {
 public:
  ConfigurationFile Read(const Json& json);

 private:
  void ReadHead(JsonObject& file);
  void ReadTypes(const Json& list, const Place& place, TypeNames& names);
  store::GroupConfiguration ReadGroup(const Json& json, const Place& place, bool root);
  store::ServerConfiguration ReadServer(const Json& json, const Place& place);
  store::TestConfiguration ReadTest(const Json& json, const Place& place);
  store::AlertConfiguration ReadAlert(const Json& json, const Place& place);
  qint32 ReadId(JsonObject& object, std::set<qint32>& taken);

  template <typename Record>
  Record ReadTyped(const Json& json, const Place& place, std::set<qint32>& ids, qint32 Record::*idType,
                   TypeNames& types);
  template <typename Record>
  std::vector<Record> ReadList(JsonObject& owner, const char* key, Record (Reader::*read)(const Json&, const Place&));

  QString storeId_;
  TypeNames testTypes_, alertTypes_;
  std::set<qint32> testTypeIds_, alertTypeIds_, nodeIds_, testIds_, alertIds_;
};

/// A plain file name: the console and the service look it up in the module folder and must not be led out of it.
void CheckModuleName(const QString& module, const Place& place) {
  const bool plain = !module.isEmpty() && module != QLatin1String(".") && module != QLatin1String("..") &&
                     module.toUtf8().size() <= 255 && std::none_of(module.begin(), module.end(), [](QChar c) {
                       return c == QLatin1Char('/') || c == QLatin1Char('\\') || c.category() == QChar::Other_Control;
                     });
  if (!plain) place.Fail(QStringLiteral("must be a file name without a folder"));
}

qint32 ReadType(JsonObject& object, TypeNames& names) {
  const Json* value = object.Value("type");
  if (value != nullptr && value->is_string()) {
    const QString module = object.Text("type");
    CheckModuleName(module, object.At("type"));
    return names.OfModule(module);
  }
  const auto id = static_cast<qint32>(object.Integer("type", 1, kLargestId));
  if (!names.HasId(id)) object.At("type").Fail(QStringLiteral("the file has no type %1").arg(id));
  return id;
}

/// A text that a new record need not have. For a record of the store its absence would mean to erase it.
QString ReadPlainText(JsonObject& object, const char* key, qint32 id) {
  return id != 0 ? object.Text(key) : object.OptionalText(key).value_or(QString());
}

QDate ReadDate(JsonObject& object) {
  if (const Json* value = object.Value("startDate"); value != nullptr && value->is_null()) return {};
  const QString text = object.Text("startDate");
  const QDate date = QDate::fromString(text, Qt::ISODate);
  if (!date.isValid() || date.year() < 1 || date.toString(Qt::ISODate) != text) {
    object.At("startDate").Fail(QStringLiteral("must be a day as \"2026-01-31\""));
  }
  return date;
}

QTime ReadTime(JsonObject& object) {
  if (const Json* value = object.Value("startTime"); value != nullptr && value->is_null()) return {};
  const QString text = object.Text("startTime");
  const QTime time = QTime::fromString(text, Qt::ISODateWithMs);
  if (!time.isValid() || TimeText(time) != text) {
    object.At("startTime").Fail(QStringLiteral("must be a time of day as \"23:59:59\""));
  }
  return time;
}

qint16 ReadUnit(JsonObject& object) {
  const Json* value = object.Value("deltaType");
  if (value == nullptr || !value->is_string())
    return static_cast<qint16>(object.Integer("deltaType", kLeast16, kMost16));
  const QString word = object.Text("deltaType");
  for (const auto& [unit, unitWord] : kUnitWords) {
    if (word == QLatin1String(unitWord)) return static_cast<qint16>(unit);
  }
  object.At("deltaType").Fail(QStringLiteral("must be \"minutes\", \"hours\", \"days\" or a number"));
}

std::optional<ScheduleRecord> ReadSchedule(JsonObject& owner) {
  const Json* value = owner.Value("schedule");
  if (value == nullptr) return std::nullopt;
  const Place place = owner.At("schedule");
  JsonObject object(*value, place);
  ScheduleRecord schedule;
  schedule.enabled = object.Boolean("enabled");
  schedule.startDate = ReadDate(object);
  schedule.startTime = ReadTime(object);
  schedule.deltaTime = static_cast<qint16>(object.Integer("deltaTime", kLeast16, kMost16));
  schedule.deltaType = ReadUnit(object);
  object.Finish();
  return schedule;
}

qint32 Reader::ReadId(JsonObject& object, std::set<qint32>& taken) {
  const auto id = object.OptionalInteger("id", 1, kLargestId);
  if (!id) return 0;
  if (storeId_.isEmpty()) {
    object.At("id").Fail(
        QStringLiteral("ids need the \"storeId\" of the store that gave them; leave them out for new records"));
  }
  if (!taken.insert(static_cast<qint32>(*id)).second) {
    object.At("id").Fail(QStringLiteral("the id %1 is used twice").arg(*id));
  }
  return static_cast<qint32>(*id);
}

template <typename Record>
std::vector<Record> Reader::ReadList(JsonObject& owner, const char* key,
                                     Record (Reader::*read)(const Json&, const Place&)) {
  const Json& list = owner.List(key);
  const Place place = owner.At(key);
  std::vector<Record> records;
  records.reserve(list.size());
  for (std::size_t i = 0; i < list.size(); ++i) records.push_back((this->*read)(list[i], Place(place, i)));
  return records;
}

void Reader::ReadTypes(const Json& list, const Place& place, TypeNames& names) {
  std::set<qint32>& taken = &names == &testTypes_ ? testTypeIds_ : alertTypeIds_;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const Place here(place, i);
    JsonObject object(list[i], here);
    store::TypeConfiguration type;
    type.id = ReadId(object, taken);
    type.module = object.Text("module");
    CheckModuleName(type.module, object.At("module"));
    if (names.HasModule(type.module)) object.At("module").Fail(QStringLiteral("two types have this module"));
    if (type.id == 0) {
      type.id = names.NextProvisionalId();
      type.name = object.OptionalText("name").value_or(QString());
    } else {
      type.name = object.Text("name");
    }
    object.Finish();
    names.Add(type);
  }
}

/// A test or an alert.
template <typename Record>
Record Reader::ReadTyped(const Json& json, const Place& place, std::set<qint32>& ids, qint32 Record::*idType,
                         TypeNames& types) {
  JsonObject object(json, place);
  Record record;
  record.id = ReadId(object, ids);
  record.*idType = ReadType(object, types);
  record.name = object.Text("name");
  record.properties = ReadPlainText(object, "properties", record.id);
  object.Finish();
  return record;
}

store::TestConfiguration Reader::ReadTest(const Json& json, const Place& place) {
  return ReadTyped(json, place, testIds_, &store::TestConfiguration::idTestType, testTypes_);
}

store::AlertConfiguration Reader::ReadAlert(const Json& json, const Place& place) {
  return ReadTyped(json, place, alertIds_, &store::AlertConfiguration::idAlertType, alertTypes_);
}

store::ServerConfiguration Reader::ReadServer(const Json& json, const Place& place) {
  JsonObject object(json, place);
  store::ServerConfiguration server;
  server.id = ReadId(object, nodeIds_);
  server.name = object.Text("name");
  server.ipAddress = object.Text("ipAddress");
  if (const auto count = object.OptionalInteger("failThreshold", kLeast16, kMost16)) {
    server.failThreshold = static_cast<qint16>(*count);
  }
  server.schedule = ReadSchedule(object);
  server.tests = ReadList(object, "tests", &Reader::ReadTest);
  server.alerts = ReadList(object, "alerts", &Reader::ReadAlert);
  object.Finish();
  return server;
}

store::GroupConfiguration Reader::ReadGroup(const Json& json, const Place& place, bool root) {
  JsonObject object(json, place);
  store::GroupConfiguration group;
  if (!root) {
    group.id = ReadId(object, nodeIds_);
    group.name = object.Text("name");
    group.description = ReadPlainText(object, "description", group.id);
  }
  group.schedule = ReadSchedule(object);
  group.servers = ReadList(object, "servers", &Reader::ReadServer);
  group.alerts = ReadList(object, "alerts", &Reader::ReadAlert);
  object.Finish();
  return group;
}

void Reader::ReadHead(JsonObject& file) {
  if (file.Text("format") != QLatin1String(kFormatName)) {
    file.At("format").Fail(QStringLiteral("must be \"%1\"").arg(QLatin1String(kFormatName)));
  }
  const qint64 version = file.Integer("version", 1, kLargestId);
  if (version > kFormatVersion) {
    file.At("version").Fail(QStringLiteral("the file has version %1 of the format; this program reads up to %2")
                                .arg(version)
                                .arg(kFormatVersion));
  }
  if (const auto id = file.OptionalText("storeId")) {
    if (QUuid::fromString(*id).toString(QUuid::WithoutBraces) != *id || QUuid::fromString(*id).isNull()) {
      file.At("storeId").Fail(QStringLiteral("must be the UUID of a store"));
    }
    storeId_ = *id;
  }
}

ConfigurationFile Reader::Read(const Json& json) {
  const Place top;
  JsonObject file(json, top);
  ReadHead(file);
  ReadTypes(file.List("testTypes"), file.At("testTypes"), testTypes_);
  ReadTypes(file.List("alertTypes"), file.At("alertTypes"), alertTypes_);
  ConfigurationFile result;
  result.storeId = storeId_;
  if (const Json* root = file.Value("root")) result.configuration.root = ReadGroup(*root, file.At("root"), true);
  const Json& groups = file.List("groups");
  const Place place = file.At("groups");
  for (std::size_t i = 0; i < groups.size(); ++i) {
    result.configuration.groups.push_back(ReadGroup(groups[i], Place(place, i), false));
  }
  file.Finish();
  result.configuration.testTypes = std::move(testTypes_.types);
  result.configuration.alertTypes = std::move(alertTypes_.types);
  return result;
}

}  // namespace

ConfigurationFile ReadConfiguration(const QByteArray& text) {
  return Reader().Read(ParseStrictJson(text));
}

}  // namespace quarl::transfer
