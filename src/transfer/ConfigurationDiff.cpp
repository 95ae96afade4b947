#include "transfer/ConfigurationDiff.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "transfer/ScheduleWords.h"
#include "transfer/VisibleText.h"

namespace quarl::transfer {
namespace {

using store::Configuration;

enum class Kind { TestType, AlertType, Root, Group, Server, Test, Alert };

/// One value of a record: two are equal when their keys are.
struct Field {
  QString name;
  QString key;
  QString shown;  ///< null: the value is not shown
};

/// A record with its values, taken out of the tree that it stands in.
struct Entry {
  Kind kind = Kind::Root;
  qint32 id = 0;
  QString label;
  std::vector<Field> fields;
  std::vector<qint32> alerts = {};  ///< ids in their order
};

QString Quoted(const QString& text) {
  return QLatin1Char('"') + VisibleText(text) + QLatin1Char('"');
}

QString Label(const char* kind, qint32 id, const QString& name) {
  const QString number = id > 0 ? QStringLiteral(" %1").arg(id) : QString();
  return QLatin1String(kind) + number + QLatin1Char(' ') + Quoted(name);
}

Field TextField(const char* name, const QString& value) {
  return {QLatin1String(name), value, Quoted(value)};
}

Field ScheduleField(const std::optional<ScheduleRecord>& schedule) {
  const QString text = ScheduleText(schedule);
  return {QStringLiteral("schedule"), text, text};
}

/// Walks a configuration and gives one entry a record, kind by kind.
class Flattener {
 public:
  explicit Flattener(const Configuration& configuration);
  std::vector<Entry> Entries() &&;

 private:
  void AddTypes(Kind kind, const char* word, const std::vector<store::TypeConfiguration>& types,
                std::map<qint32, QString>& labels);
  void AddGroup(const store::GroupConfiguration& group, bool root);
  void AddServer(const store::ServerConfiguration& server, const Field& owner);
  void AddAlert(const store::AlertConfiguration& alert, const Field& owner);
  static Field OwnerField(const char* name, qint32 id, const QString& label) {
    return {QLatin1String(name), id > 0 ? QString::number(id) : label, label};
  }

  std::map<qint32, QString> testTypes_, alertTypes_;
  std::vector<Entry> types_, groups_, servers_, tests_, alerts_;
};

template <typename Record>
std::vector<qint32> IdsOf(const std::vector<Record>& records) {
  std::vector<qint32> ids;
  ids.reserve(records.size());
  for (const Record& record : records) ids.push_back(record.id);
  return ids;
}

Flattener::Flattener(const Configuration& configuration) {
  AddTypes(Kind::TestType, "test type", configuration.testTypes, testTypes_);
  AddTypes(Kind::AlertType, "alert type", configuration.alertTypes, alertTypes_);
  AddGroup(configuration.root, true);
  for (const store::GroupConfiguration& group : configuration.groups) AddGroup(group, false);
}

void Flattener::AddTypes(Kind kind, const char* word, const std::vector<store::TypeConfiguration>& types,
                         std::map<qint32, QString>& labels) {
  for (const store::TypeConfiguration& type : types) {
    labels[type.id] = Quoted(type.name);
    types_.push_back({kind,
                      type.id,
                      Label(word, type.id, type.name),
                      {TextField("name", type.name), TextField("module", type.module)}});
  }
}

void Flattener::AddGroup(const store::GroupConfiguration& group, bool root) {
  Entry entry{root ? Kind::Root : Kind::Group,
              group.id,
              root ? QStringLiteral("root group") : Label("group", group.id, group.name),
              {},
              IdsOf(group.alerts)};
  if (!root) entry.fields = {TextField("name", group.name), TextField("description", group.description)};
  entry.fields.push_back(ScheduleField(group.schedule));
  const QString label = entry.label;
  groups_.push_back(std::move(entry));
  const Field owner = OwnerField("in", group.id, label);
  for (const store::ServerConfiguration& server : group.servers) AddServer(server, owner);
  for (const store::AlertConfiguration& alert : group.alerts) AddAlert(alert, OwnerField("of", group.id, label));
}

void Flattener::AddServer(const store::ServerConfiguration& server, const Field& group) {
  const QString label = Label("server", server.id, server.name);
  const QString threshold = server.failThreshold ? QString::number(*server.failThreshold) : QStringLiteral("none");
  servers_.push_back({Kind::Server,
                      server.id,
                      label,
                      {TextField("name", server.name),
                       TextField("address", server.ipAddress),
                       group,
                       {QStringLiteral("failure threshold"), threshold, threshold},
                       ScheduleField(server.schedule)},
                      IdsOf(server.alerts)});
  for (const store::TestConfiguration& test : server.tests) {
    tests_.push_back({Kind::Test,
                      test.id,
                      Label("test", test.id, test.name),
                      {TextField("name", test.name),
                       OwnerField("type", test.idTestType, testTypes_[test.idTestType]),
                       OwnerField("of", server.id, label),
                       {QStringLiteral("properties"), test.properties, {}}}});
  }
  for (const store::AlertConfiguration& alert : server.alerts) AddAlert(alert, OwnerField("of", server.id, label));
}

void Flattener::AddAlert(const store::AlertConfiguration& alert, const Field& owner) {
  alerts_.push_back({Kind::Alert,
                     alert.id,
                     Label("alert", alert.id, alert.name),
                     {TextField("name", alert.name),
                      OwnerField("type", alert.idAlertType, alertTypes_[alert.idAlertType]),
                      owner,
                      {QStringLiteral("properties"), alert.properties, {}}}});
}

std::vector<Entry> Flattener::Entries() && {
  std::vector<Entry> all = std::move(types_);
  for (auto* part : {&groups_, &servers_, &tests_, &alerts_}) {
    all.insert(all.end(), std::make_move_iterator(part->begin()), std::make_move_iterator(part->end()));
  }
  return all;
}

/// The values of a new or removed record that tell it apart beyond its label.
QString Details(const Entry& entry) {
  QStringList details;
  for (const Field& field : entry.fields) {
    const bool telling = field.name != QLatin1String("name") && !field.shown.isEmpty() && !field.key.isEmpty() &&
                         field.shown != QLatin1String("none");
    if (telling) details << field.name + QLatin1Char(' ') + field.shown;
  }
  return details.isEmpty() ? QString() : QStringLiteral(": ") + details.join(QStringLiteral(", "));
}

/// True when the ids that both lists have do not stand in the same order.
bool Reordered(const std::vector<qint32>& before, const std::vector<qint32>& after) {
  const auto common = [](const std::vector<qint32>& list, const std::vector<qint32>& other) {
    const std::set<qint32> known(other.begin(), other.end());
    std::vector<qint32> kept;
    std::copy_if(list.begin(), list.end(), std::back_inserter(kept), [&](qint32 id) { return known.contains(id); });
    return kept;
  };
  return before != after && common(before, after) != common(after, before);
}

QStringList Changes(const Entry& before, const Entry& after) {
  QStringList changes;
  for (std::size_t i = 0; i < after.fields.size(); ++i) {
    const Field& was = before.fields[i];
    const Field& is = after.fields[i];
    if (was.key == is.key) continue;
    changes << (is.shown.isNull() ? is.name : QStringLiteral("%1 %2 -> %3").arg(is.name, was.shown, is.shown));
  }
  if (Reordered(before.alerts, after.alerts)) changes << QStringLiteral("order of alerts");
  return changes;
}

}  // namespace

ConfigurationDiff CompareConfigurations(const Configuration& before, const Configuration& after) {
  const std::vector<Entry> old = Flattener(before).Entries();
  const std::vector<Entry> now = Flattener(after).Entries();
  std::map<std::pair<Kind, qint32>, const Entry*> known;
  for (const Entry& entry : old) known[{entry.kind, entry.id}] = &entry;

  ConfigurationDiff diff;
  for (const Entry& entry : now) {
    const auto found = known.find({entry.kind, entry.id});
    if (found == known.end()) {
      ++diff.added;
      diff.lines << QStringLiteral("add ") + entry.label + Details(entry);
      continue;
    }
    const QStringList changes = Changes(*found->second, entry);
    if (!changes.isEmpty()) {
      ++diff.changed;
      diff.lines << QStringLiteral("change ") + entry.label + QStringLiteral(": ") + changes.join(QStringLiteral(", "));
    }
    known.erase(found);
  }
  for (const Entry& entry : old) {
    if (!known.contains({entry.kind, entry.id})) continue;
    ++diff.removed;
    diff.lines << QStringLiteral("remove ") + entry.label + Details(entry);
  }
  return diff;
}

}  // namespace quarl::transfer
