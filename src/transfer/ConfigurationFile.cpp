#include "transfer/ConfigurationFile.h"

#include <nlohmann/json.hpp>

#include "transfer/ScheduleWords.h"
#include "transfer/VisibleText.h"

namespace quarl::transfer {
namespace {

using Json = nlohmann::ordered_json;

std::string Utf8(const QString& text) {
  return text.toStdString();
}

template <typename Record, typename ToJson>
Json ListOf(const std::vector<Record>& records, ToJson toJson) {
  Json list = Json::array();
  for (const Record& record : records) list.push_back(toJson(record));
  return list;
}

void AddSchedule(Json& owner, const std::optional<ScheduleRecord>& schedule) {
  if (schedule) owner["schedule"] = ScheduleJson(*schedule);
}

Json TypeOf(const store::TypeConfiguration& type) {
  return {{"id", type.id}, {"name", Utf8(type.name)}, {"module", Utf8(type.module)}};
}

Json TestOf(const store::TestConfiguration& test) {
  return {{"id", test.id}, {"type", test.idTestType}, {"name", Utf8(test.name)}, {"properties", Utf8(test.properties)}};
}

Json AlertOf(const store::AlertConfiguration& alert) {
  return {{"id", alert.id},
          {"type", alert.idAlertType},
          {"name", Utf8(alert.name)},
          {"properties", Utf8(alert.properties)}};
}

Json ServerOf(const store::ServerConfiguration& server) {
  Json json = {{"id", server.id}, {"name", Utf8(server.name)}, {"ipAddress", Utf8(server.ipAddress)}};
  if (server.failThreshold) json["failThreshold"] = *server.failThreshold;
  AddSchedule(json, server.schedule);
  json["tests"] = ListOf(server.tests, TestOf);
  json["alerts"] = ListOf(server.alerts, AlertOf);
  return json;
}

Json GroupOf(const store::GroupConfiguration& group) {
  Json json = Json::object();
  if (group.id != 0) {
    json = {{"id", group.id}, {"name", Utf8(group.name)}, {"description", Utf8(group.description)}};
  }
  AddSchedule(json, group.schedule);
  json["servers"] = ListOf(group.servers, ServerOf);
  json["alerts"] = ListOf(group.alerts, AlertOf);
  return json;
}

}  // namespace

QByteArray WriteConfiguration(const ConfigurationFile& file) {
  const store::Configuration& configuration = file.configuration;
  const Json json = {{"format", kFormatName},
                     {"version", kFormatVersion},
                     {"storeId", Utf8(file.storeId)},
                     {"testTypes", ListOf(configuration.testTypes, TypeOf)},
                     {"alertTypes", ListOf(configuration.alertTypes, TypeOf)},
                     {"root", GroupOf(configuration.root)},
                     {"groups", ListOf(configuration.groups, GroupOf)}};
  return QByteArray::fromStdString(VisibleJson(json.dump(2))) + '\n';
}

}  // namespace quarl::transfer
