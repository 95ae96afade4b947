#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "base/ProcessIdentity.h"
#include "base/ScheduleRecord.h"
#include "store/LogStore.h"

namespace quarl::store {

/// States of tests and servers, as stored.
enum class TestState : qint16 { Passed = 1, NotRun = 2, Failed = 3 };

// --- The configuration as the service needs it ----------------------------------------------------------------------

struct PlannedTest {
  qint32 id = 0;
  qint32 idServer = 0;
  QString name;
  QString module;  ///< file name in the folder of test modules; tests of one type share the text
  QString properties;
};

struct PlannedServer {
  qint32 id = 0;
  qint32 idGroup = 0;
  QString name;
  QString address;
  int failThreshold = 3;                   ///< 1 to 10, whatever is stored
  std::optional<ScheduleRecord> schedule;  ///< as stored
};

/// A group; the one with id 0 is the root group, its schedule is the default schedule.
struct PlannedGroup {
  qint32 id = 0;
  QString name;
  std::optional<ScheduleRecord> schedule;
};

/// An alert; exactly one owner: the server where idServer is not 0, else the group.
struct PlannedAlert {
  qint32 id = 0;
  qint32 idServer = 0;
  qint32 idGroup = 0;
  QString name;
};

/// Everything that runs, each list by id, ascending.
struct Plan {
  qint64 revision = 0;  ///< of the configuration; another one whenever it has changed
  QString storeId;
  std::vector<PlannedGroup> groups;
  std::vector<PlannedServer> servers;
  std::vector<PlannedTest> tests;
  std::vector<PlannedAlert> alerts;
};

// --- Results
// ----------------------------------------------------------------------------------------------------------

struct TestResult {
  qint32 idTest = 0;
  TestState state = TestState::NotRun;    ///< of the last execution
  std::optional<qint64> lastExecutionMs;  ///< when it ended; nothing: never run
  QString text;
  QString performance;  ///< performance data of the last execution, may be empty
  int consecutiveFailures = 0;
  bool failed = false;  ///< counts as failed: the failures have reached the threshold and no success came since
  qint64 sinceMs = 0;   ///< since when the state is this one; 0: not known
  bool operator==(const TestResult&) const = default;
};

struct ServerState {
  qint32 idServer = 0;
  TestState state = TestState::NotRun;
  bool failed = false;  ///< a test of it counts as failed
  qint64 sinceMs = 0;   ///< since when it counts as failed, or does not; 0: not known
  bool operator==(const ServerState&) const = default;
};

struct StoredStates {
  std::vector<TestResult> tests;     ///< by id, ascending; a test without a result is not in it
  std::vector<ServerState> servers;  ///< the same
};

struct LogEntry {
  qint64 timeMs = 0;
  Severity severity = Severity::Information;
  QString description;
};

/// A message on its way to an alert.
struct OutgoingMessage {
  qint32 idAlert = 0;
  QString alertName;  ///< for the log, should the alert be gone
  qint32 idServer = 0;
  QString serverName;
  QString address;
  QString thread;  ///< the same for all messages about one outage of one server
  QString subject;
  QString text;
  bool recovery = false;     ///< tells the end of an outage, not its beginning or course
  QString groupName = {};    ///< "" for the root group
  QString testName = {};     ///< "" when the message is not about a single test
  QString resultText = {};   ///< of the test, may be empty
  qint64 outageSinceMs = 0;  ///< beginning of the outage
  qint64 createdMs = 0;
  qint64 notBeforeMs = 0;  ///< not to be sent earlier
};

/// What is written in one transaction.
struct ResultBatch {
  std::vector<TestResult> tests;  ///< a test or server that is no more is left out
  std::vector<ServerState> servers;
  std::vector<qint32> statelessServers;  ///< servers that have no state any more
  std::vector<LogEntry> log;
  std::vector<OutgoingMessage> messages;
  std::vector<qint64> answered;  ///< check requests whose results are in
};

// --- The outbox
// -------------------------------------------------------------------------------------------------------

/// A message that was claimed for sending, with what its alert holds now.
struct ClaimedMessage {
  qint64 id = 0;
  OutgoingMessage message;
  int attempts = 0;               ///< this one included; 1 = the first
  std::optional<QString> module;  ///< file name in the folder of alert modules; nothing: the alert is no more
  QString properties;
};

// --- Requests and the service itself ------------------------------------------------------------------------------

/// A wish to run tests now. Exactly one of the three is the target; idGroup 0 is every server.
struct CheckRequest {
  qint64 id = 0;
  std::optional<qint32> idGroup, idServer, idTest;
  qint64 requestedMs = 0;
};

/// What may be new since the last look.
struct ServiceNews {
  QString storeId;
  qint64 revision = 0;                 ///< see Plan
  std::vector<CheckRequest> requests;  ///< not answered yet, in their order, those told before included
};

/// The running service as others see it. States are those of SystemConfig::GetServiceState.
struct ServiceInstance {
  QString id;  ///< a new one (UUID) each start
  ProcessIdentity process;
  qint64 startedMs = 0;
  qint64 beatMs = 0;  ///< its last sign of life
  qint16 state = 0;
};

/// How often a service gives a sign of life, and for how long one is believed.
inline constexpr int kBeatIntervalMs = 5'000;
inline constexpr int kBeatFreshMs = 20'000;

/// True when the service is to be taken for running: its sign of life is fresh (a time ahead of now by more is none)
/// and its process is not known to be gone.
bool IsAlive(const ServiceInstance& instance, qint64 nowMs);

}  // namespace quarl::store
