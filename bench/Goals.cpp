#include "Goals.h"

#include <cstdio>

namespace quarl::bench {
namespace {

// A figure is the first median divided by the second; without a second one, the first itself.
struct Goal {
  const char* what;
  const char* measured;
  const char* yardstick;
  double limit;
  const char* unit;
};

constexpr Goal kGoals[] = {
    {"tree ready and painted, 10,000 servers", "TreePainted/10000", "RawTree/10000", 3.0, "raw scans"},
    {"tree ready and painted, 100,000 servers", "TreePainted/100000", "RawTree/100000", 2.2, "raw scans"},
    {"memory a node, 90,000 nodes", "TreePainted/10000:bytes_a_node", nullptr, 80, "bytes"},
    {"memory a node, 900,000 nodes", "TreePainted/100000:bytes_a_node", nullptr, 80, "bytes"},
    {"look-up by text key, 90,000 nodes", "LookUpText/10000", "ProbePacked/10000", 3.0, "packed probes"},
    {"look-up by text key, 900,000 nodes", "LookUpText/100000", "ProbePacked/100000", 3.0, "packed probes"},
    {"insert a server, 900,000 nodes", "InsertServers/100000", "InsertServers/10000", 6.0, "times 90,000 nodes"},
    {"move a server, 900,000 nodes", "MoveServers/100000", "MoveServers/10000", 6.0, "times 90,000 nodes"},
    {"remove a server, 900,000 nodes", "RemoveServers/100000", "RemoveServers/10000", 6.0, "times 90,000 nodes"},
    {"list of 100,000 servers painted", "ServerListPainted", "RawServerList", 1.8, "raw scans"},
    {"log of 100,000 records painted", "LogPainted", "RawLog", 1.8, "raw scans"},
    {"first paint without data", "StartConsoleWithoutData", "StartEmptyWindow", 2.8, "empty windows"},
    {"first paint with 10,000 servers", "StartConsole/10000", "StartEmptyWindow", 5.5, "empty windows"},
    {"record sets of 10,000 servers", "RecordSets/10000", "RawTree/10000", 15, "raw scans"},
    {"TCP check through a worker", "CheckByWorker", "ConnectByEpoll", 1.6, "bare connects"},
    {"storing a result", "StoreResults:ns_a_result", "CheckByWorker", 0.25, "checks"},
    {"external command", "CommandByWorker", "SpawnCommand", 1.15, "bare spawns"},
};

}  // namespace

int PrintGoals(const Medians& medians) {
  int missed = 0;
  std::printf("\n%-44s %10s %8s\n", "goal (medians; first paints: wall time)", "figure", "limit");
  for (const Goal& goal : kGoals) {
    const auto measured = medians.find(goal.measured);
    if (measured == medians.end()) continue;
    double figure = measured->second;
    if (goal.yardstick != nullptr) {
      const auto yardstick = medians.find(goal.yardstick);
      if (yardstick == medians.end()) continue;
      figure /= yardstick->second;
    }
    const bool holds = figure <= goal.limit;
    missed += holds ? 0 : 1;
    std::printf("%-44s %10.2f %8.2f  %-20s %s\n", goal.what, figure, goal.limit, goal.unit, holds ? "ok" : "MISSED");
  }
  return missed;
}

}  // namespace quarl::bench
