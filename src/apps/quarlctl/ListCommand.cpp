#include <array>
#include <memory>
#include <utility>

#include "apps/quarlctl/Commands.h"
#include "apps/quarlctl/Listing.h"
#include "transfer/VisibleText.h"

namespace quarl::ctl {
namespace {

using Json = nlohmann::ordered_json;

struct ListOptions {
  std::string what;
  bool json = false;
};

struct NamedList {
  const char* name;
  Listing (*read)(store::Stores&);
};

constexpr std::array<NamedList, 5> kLists{{{"groups", &ListGroups},
                                           {"servers", &ListServers},
                                           {"tests", &ListTests},
                                           {"alerts", &ListAlerts},
                                           {"types", &ListTypes}}};

void PrintJson(Terminal& terminal, const Json& json) {
  terminal.Print(QByteArray::fromStdString(transfer::VisibleJson(json.dump(2))) + '\n');
}

void PrintAll(Session& session, store::Stores& stores, bool asJson) {
  Json all = Json::object();
  QString text;
  for (const NamedList& list : kLists) {
    Listing listing = list.read(stores);
    if (!text.isEmpty()) text += QLatin1Char('\n');
    text += QString::fromLatin1(list.name) + QLatin1Char('\n') + listing.table.Text();
    all[list.name] = std::move(listing.json);
  }
  if (asJson) {
    PrintJson(session.terminal, all);
  } else {
    session.terminal.Print(text.toUtf8());
  }
}

void List(Session& session, const ListOptions& options) {
  const auto stores = session.store.OpenExisting();
  for (const NamedList& list : kLists) {
    if (options.what != list.name) continue;
    const Listing listing = list.read(*stores);
    if (options.json) {
      PrintJson(session.terminal, listing.json);
    } else {
      session.terminal.Print(listing.table.Text().toUtf8());
    }
    return;
  }
  PrintAll(session, *stores, options.json);
}

}  // namespace

Command AddList(CLI::App& app) {
  CLI::App* command = app.add_subcommand("list", "Show what the store holds");
  auto options = std::make_shared<ListOptions>();
  std::set<std::string> known;
  for (const NamedList& list : kLists) known.insert(list.name);
  command->add_option("WHAT", options->what, "groups, servers, tests, alerts or types; all of them without it")
      ->check(CLI::IsMember(known));
  command->add_flag("--json", options->json, "Print JSON");
  command->footer(
      "Tables show control characters of names escaped; --json keeps every name exact.\n"
      "\n"
      "Examples:\n"
      "  quarlctl list servers\n"
      "  quarlctl list tests --json | jq '.[] | select(.state == 3)'");
  return {command, [options](Session& session) { List(session, *options); }};
}

}  // namespace quarl::ctl
