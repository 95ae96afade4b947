#include "tree/ContentViews.h"

#include "tree/ContentFills.h"

namespace quarl::tree {

ContentViews::ContentViews(store::Stores& stores, ContentListModel& list) : stores_(stores), list_(list) {}

template <typename Fill>
void ContentViews::Show(ContentRows rows, Fill fill) {
  list_.Clear();  // also gives the new rows the room of the old ones
  try {
    fill(rows);
  } catch (const Error&) {
    list_.Replace(std::move(rows));
    throw;
  }
  list_.Replace(std::move(rows));
}

void ContentViews::ShowServerList(qint32 idGroup) {
  ContentRows rows;
  rows.AddColumn(QStringLiteral("Server"), 150);
  rows.AddColumn(QStringLiteral("IPAddress"), 100);
  const bool all = idGroup == 0;
  if (all) rows.AddColumn(QStringLiteral("Group"), 120);
  Show(std::move(rows), [&](ContentRows& filled) {
    store::ServerStore& servers = stores_.Servers();
    FillServers(filled, list_.Images(), all ? servers.GetAllServers(idGroup) : servers.GetServersByGroup(idGroup), all);
  });
}

void ContentViews::ShowTestList(qint32 idServer) {
  ContentRows rows;
  rows.AddColumn(QStringLiteral("Test"), 120);
  rows.AddColumn(QStringLiteral("Last execution"), 380);
  Show(std::move(rows),
       [&](ContentRows& filled) { FillTests(filled, list_.Images(), stores_.Tests().GetTestsByServer(idServer)); });
}

void ContentViews::ShowLogList() {
  ContentRows rows;
  rows.AddColumn(QStringLiteral("Description"), 320);
  rows.AddColumn(QStringLiteral("Date"), 150);
  Show(std::move(rows), [&](ContentRows& filled) { FillLog(filled, list_.Images(), stores_.Log().GetLogs()); });
}

}  // namespace quarl::tree
