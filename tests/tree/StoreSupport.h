#pragma once

#include "store/sql/SqlStores.h"
#include "support/Text.h"

namespace quarl::tree {

/// A store in memory: test types 1 (Ping), 2 (TCP port) and 9 (no icon anywhere), alert type 1 (E-mail); group 1
/// "Berlin" with server 11 "alpha" (tests 1 and 2, alert 1), group 2 "Aachen" with an alert, servers 12 "beta" and 13
/// "Alpha" in the root group.
class MemoryStore {
 public:
  MemoryStore() {
    store::Configuration configuration;
    configuration.testTypes = {
        {1, Q("Ping"), Q("ping.dll")}, {2, Q("TCP port"), Q("tcp.dll")}, {9, Q("Odd"), Q("odd.dll")}};
    configuration.alertTypes = {{1, Q("E-mail"), Q("mail.dll")}};
    store::ServerConfiguration alpha = Server(11, "alpha", "10.0.0.1");
    alpha.tests = {{1, 1, Q("first"), {}}, {2, 2, Q("second"), {}}};
    alpha.alerts = {{1, 1, Q("mail me"), {}}};
    configuration.groups.resize(2);
    configuration.groups[0].id = 1;
    configuration.groups[0].name = Q("Berlin");
    configuration.groups[0].servers = {alpha};
    configuration.groups[1].id = 2;
    configuration.groups[1].name = Q("Aachen");
    configuration.groups[1].alerts = {{2, 1, Q("page"), {}}};
    configuration.root.servers = {Server(12, "beta", "10.0.0.2"), Server(13, "Alpha", "10.0.0.3")};
    stores_.Configurations().Write(configuration, stores_.Configurations().Read().revision);
  }
  store::SqlStores& operator()() { return stores_; }

 private:
  static store::ServerConfiguration Server(qint32 id, const char* name, const char* address) {
    store::ServerConfiguration server;
    server.id = id;
    server.name = QString::fromUtf8(name);
    server.ipAddress = QString::fromUtf8(address);
    return server;
  }

  store::SqlStores stores_{
      {.location = store::StoreLocation::InMemory(), .paths = InstallPaths(Q("/none")), .inspector = {}}};
};

}  // namespace quarl::tree
