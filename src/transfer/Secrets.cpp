#include "transfer/Secrets.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace quarl::transfer {
namespace {

using Json = nlohmann::ordered_json;
using store::Configuration;

constexpr int kDeepest = 32;  // no module writes more levels; copying and writing descend into each

/// Properties of the known form, taken apart.
struct Document {
  Json json;
  QString rest;  ///< from the first NUL on

  bool HasSecrets() const {
    const auto secrets = json.find("secrets");
    return secrets != json.end() && secrets->is_object() &&
           std::any_of(secrets->begin(), secrets->end(), [](const Json& value) { return value != ""; });
  }
  bool HasMark() const {
    const auto secrets = json.find("secrets");
    return secrets != json.end() && *secrets == kSecretsLeftOut;
  }
  QString Text() const {
    return QString::fromStdString(json.dump(-1, ' ', false, Json::error_handler_t::replace)) + rest;
  }
  /// The same for a document of another length: what only filled a module's buffer would not fit it any more.
  QString ChangedText() const {
    const bool filling = std::all_of(rest.begin(), rest.end(), [](QChar c) { return c.isNull(); });
    return filling ? Document{json, {}}.Text() : Text();
  }
};

std::optional<Document> Read(const QString& properties) {
  const bool possible = properties.contains(QLatin1String("secrets")) || properties.contains(QLatin1String("\\u"));
  if (!possible) return std::nullopt;  // "\u" may write any letter of the name
  const qsizetype nul = properties.indexOf(QChar(u'\0'));
  const QString text = nul < 0 ? properties : properties.left(nul);
  bool tooDeep = false;
  const auto look = [&](int depth, Json::parse_event_t, const Json&) {
    return !(tooDeep = tooDeep || depth > kDeepest);
  };
  Json json = Json::parse(text.toStdString(), look, false);
  if (tooDeep || json.is_discarded() || !json.is_object()) return std::nullopt;
  const auto format = json.find("format"), module = json.find("module");
  const bool known = format != json.end() && format->is_number_integer() && module != json.end() && module->is_string();
  if (!known) return std::nullopt;
  return Document{std::move(json), properties.mid(text.size())};
}

/// The properties without secrets; nothing when they have none.
std::optional<QString> Marked(const QString& properties) {
  std::optional<Document> document = Read(properties);
  if (!document || !document->HasSecrets()) return std::nullopt;
  document->json["secrets"] = kSecretsLeftOut;
  return document->Text();
}

/// Calls each with every test's and alert's record.
template <typename Group, typename OnTest, typename OnAlert>
void VisitGroup(Group& group, OnTest onTest, OnAlert onAlert) {
  for (auto& alert : group.alerts) onAlert(alert);
  for (auto& server : group.servers) {
    for (auto& test : server.tests) onTest(test);
    for (auto& alert : server.alerts) onAlert(alert);
  }
}

template <typename AnyConfiguration, typename OnTest, typename OnAlert>
void Visit(AnyConfiguration& configuration, OnTest onTest, OnAlert onAlert) {
  VisitGroup(configuration.root, onTest, onAlert);
  for (auto& group : configuration.groups) VisitGroup(group, onTest, onAlert);
}

using PropertiesOfId = std::unordered_map<qint32, const QString*>;

/// @return false when the properties are without their secrets now.
bool Restore(QString& properties, const QString* stored) {
  if (stored != nullptr && *stored == properties) return true;
  std::optional<Document> document = Read(properties);
  if (!document || !document->HasMark()) return true;
  const std::optional<Document> source = stored == nullptr ? std::nullopt : Read(*stored);
  if (source && source->HasSecrets() && source->json["module"] == document->json["module"]) {
    const bool same = Marked(*stored) == properties;
    document->json["secrets"] = source->json["secrets"];
    properties = same ? *stored : document->ChangedText();
    return true;
  }
  document->json.erase("secrets");
  properties = document->ChangedText();
  return false;
}

}  // namespace

int CountSecrets(const Configuration& configuration) {
  int count = 0;
  const auto look = [&](const auto& record) {
    const std::optional<Document> document = Read(record.properties);
    if (document && document->HasSecrets()) ++count;
  };
  Visit(configuration, look, look);
  return count;
}

void LeaveOutSecrets(Configuration& configuration) {
  const auto leaveOut = [](auto& record) {
    if (std::optional<QString> marked = Marked(record.properties)) record.properties = *std::move(marked);
  };
  Visit(configuration, leaveOut, leaveOut);
}

int RestoreSecrets(Configuration& planned, const Configuration& known) {
  PropertiesOfId tests, alerts;
  Visit(
      known, [&](const auto& test) { tests[test.id] = &test.properties; },
      [&](const auto& alert) { alerts[alert.id] = &alert.properties; });
  int missing = 0;
  const auto restore = [&](auto& record, const PropertiesOfId& stored) {
    const auto found = stored.find(record.id);
    if (!Restore(record.properties, found == stored.end() ? nullptr : found->second)) ++missing;
  };
  Visit(
      planned, [&](auto& test) { restore(test, tests); }, [&](auto& alert) { restore(alert, alerts); });
  return missing;
}

}  // namespace quarl::transfer
