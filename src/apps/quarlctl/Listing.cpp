#include "apps/quarlctl/Listing.h"

#include <QDateTime>

#include "base/DateTimeText.h"
#include "transfer/ScheduleWords.h"

namespace quarl::ctl {
namespace {

using Json = nlohmann::ordered_json;
using store::RecordSet;
using store::Stores;

struct Node {
  qint32 id = 0;
  QString name;
};

const QString kRootName = QStringLiteral("SERVERS");

std::string Utf8(const QString& text) {
  return text.toStdString();
}

QString TextOf(const RecordSet& set, const char* field) {
  return set.Value(field).toString();
}

qint32 IdOf(const RecordSet& set, const char* field) {
  return set.Value(field).toInt();
}

Json TextJson(const QVariant& value) {
  return value.isValid() ? Json(Utf8(value.toString())) : Json();
}

Json NumberJson(const QVariant& value) {
  return value.isValid() ? Json(value.toInt()) : Json();
}

Json TimeJson(const QVariant& value) {
  return value.isValid() ? Json(Utf8(value.toDateTime().toUTC().toString(Qt::ISODate))) : Json();
}

QString TimeCell(const QVariant& value) {
  return value.isValid() ? DateTimeText(value.toDateTime().toMSecsSinceEpoch()) : QString();
}

QString StateCell(const QVariant& state) {
  switch (state.toInt()) {
    case 1:
      return QStringLiteral("passed");
    case 2:
      return QStringLiteral("not run yet");
    case 3:
      return QStringLiteral("failed");
    default:
      return {};
  }
}

std::vector<Node> Groups(Stores& stores) {
  std::vector<Node> groups{{0, kRootName}};
  for (RecordSet set = stores.Groups().GetGroups(0); !set.Eof(); set.MoveNext()) {
    groups.push_back({IdOf(set, "IDGroup"), TextOf(set, "GroupName")});
  }
  return groups;
}

std::vector<Node> Servers(Stores& stores) {
  std::vector<Node> servers;
  for (RecordSet set = stores.Servers().GetAllServers(0); !set.Eof(); set.MoveNext()) {
    servers.push_back({IdOf(set, "IDServer"), TextOf(set, "ServerName")});
  }
  return servers;
}

void AddSchedule(Json& object, const std::optional<ScheduleRecord>& schedule) {
  object["schedule"] = schedule ? transfer::ScheduleJson(*schedule) : Json();
}

void AddServersOf(const Node& group, Stores& stores, Listing& listing) {
  for (RecordSet set = stores.Servers().GetServersByGroup(group.id); !set.Eof(); set.MoveNext()) {
    const qint32 id = IdOf(set, "IDServer");
    const auto schedule = stores.Servers().GetServerSchedule(id);
    const qint16 threshold = stores.Servers().GetFailThreshold(id);
    const QVariant state = set.Value("IDTestState");
    const QString name = TextOf(set, "ServerName");
    const QString address = TextOf(set, "ServerIP");
    Json object = {{"id", id},
                   {"name", Utf8(name)},
                   {"ipAddress", Utf8(address)},
                   {"idGroup", group.id},
                   {"group", Utf8(group.name)},
                   {"state", NumberJson(state)},
                   {"failThreshold", threshold}};
    AddSchedule(object, schedule);
    listing.json.push_back(std::move(object));
    listing.table.AddRow({QString::number(id), name, address, group.name, StateCell(state), QString::number(threshold),
                          transfer::ScheduleText(schedule)});
  }
}

void AddTestsOf(const Node& server, Stores& stores, Listing& listing) {
  for (RecordSet set = stores.Tests().GetTestsByServer(server.id); !set.Eof(); set.MoveNext()) {
    const qint32 id = IdOf(set, "IDTest");
    const QVariant time = set.Value("LastExecution");
    const QVariant result = set.Value("LastResult");
    listing.json.push_back({{"id", id},
                            {"name", Utf8(TextOf(set, "TestName"))},
                            {"idTestType", IdOf(set, "IDTestType")},
                            {"type", Utf8(TextOf(set, "TestType"))},
                            {"idServer", server.id},
                            {"server", Utf8(server.name)},
                            {"state", NumberJson(set.Value("IDTestState"))},
                            {"lastExecution", TimeJson(time)},
                            {"lastResult", TextJson(result)}});
    listing.table.AddRow({QString::number(id), TextOf(set, "TestName"), TextOf(set, "TestType"), server.name,
                          TextOf(set, "TestState"), TimeCell(time), result.toString()});
  }
}

void AddAlerts(RecordSet set, const Node& owner, bool ofGroup, Listing& listing) {
  for (; !set.Eof(); set.MoveNext()) {
    const qint32 id = IdOf(set, "IDAlert");
    listing.json.push_back({{"id", id},
                            {"name", Utf8(TextOf(set, "AlertName"))},
                            {"idAlertType", IdOf(set, "IDAlertType")},
                            {"type", Utf8(TextOf(set, "AlertType"))},
                            {"idGroup", ofGroup ? Json(owner.id) : Json()},
                            {"idServer", ofGroup ? Json() : Json(owner.id)},
                            {"owner", Utf8(owner.name)}});
    listing.table.AddRow({QString::number(id), TextOf(set, "AlertName"), TextOf(set, "AlertType"),
                          ofGroup ? QStringLiteral("group") : QStringLiteral("server"), owner.name});
  }
}

void AddTypes(RecordSet set, const char* kind, const char* idField, const char* nameField, Listing& listing) {
  for (; !set.Eof(); set.MoveNext()) {
    const qint32 id = IdOf(set, idField);
    listing.json.push_back(
        {{"kind", kind}, {"id", id}, {"name", Utf8(TextOf(set, nameField))}, {"module", Utf8(TextOf(set, "Module"))}});
    listing.table.AddRow(
        {QString::fromLatin1(kind), QString::number(id), TextOf(set, nameField), TextOf(set, "Module")});
  }
}

QStringList Titles(const char* words) {
  return QString::fromLatin1(words).split(QLatin1Char('|'));
}

}  // namespace

Listing ListGroups(Stores& stores) {
  Listing listing{Table(Titles("ID|NAME|DESCRIPTION|SCHEDULE"))};
  for (const Node& group : Groups(stores)) {
    const auto record = stores.Groups().GetGroup(group.id);
    const QString description = record ? record->description : QString();
    const auto schedule =
        group.id == 0 ? stores.Groups().GetDefaultSchedule() : stores.Groups().GetGroupSchedule(group.id);
    Json object = {{"id", group.id}, {"name", Utf8(group.name)}, {"description", Utf8(description)}};
    AddSchedule(object, schedule);
    listing.json.push_back(std::move(object));
    listing.table.AddRow({QString::number(group.id), group.name, description, transfer::ScheduleText(schedule)});
  }
  return listing;
}

Listing ListServers(Stores& stores) {
  Listing listing{Table(Titles("ID|NAME|ADDRESS|GROUP|STATE|THRESHOLD|SCHEDULE"))};
  for (const Node& group : Groups(stores)) AddServersOf(group, stores, listing);
  return listing;
}

Listing ListTests(Stores& stores) {
  Listing listing{Table(Titles("ID|NAME|TYPE|SERVER|STATE|LAST RUN|RESULT"))};
  for (const Node& server : Servers(stores)) AddTestsOf(server, stores, listing);
  return listing;
}

Listing ListAlerts(Stores& stores) {
  Listing listing{Table(Titles("ID|NAME|TYPE|OF|OWNER"))};
  for (const Node& group : Groups(stores)) AddAlerts(stores.Alerts().GetAlertsByGroup(group.id), group, true, listing);
  for (const Node& server : Servers(stores)) {
    AddAlerts(stores.Alerts().GetAlertsByServer(server.id), server, false, listing);
  }
  return listing;
}

Listing ListTypes(Stores& stores) {
  Listing listing{Table(Titles("KIND|ID|NAME|MODULE"))};
  AddTypes(stores.System().GetTestTypes(), "test", "IDTestType", "TestType", listing);
  AddTypes(stores.System().GetAlertTypes(), "alert", "IDAlertType", "AlertType", listing);
  return listing;
}

}  // namespace quarl::ctl
