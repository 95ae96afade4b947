#include <sys/resource.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>
#include <csignal>

#include "apps/NastyConfiguration.h"
#include "apps/QuarlctlRun.h"
#include "transfer/ConfigurationFile.h"

namespace quarl::test {
namespace {

const char* const kNastyStore = "0b0e4b0a-7b1e-4c58-9a57-0d1c1f4a2b3c";

QByteArray NastyFile(unsigned seed) {
  return transfer::WriteConfiguration({NastyConfiguration(seed), QLatin1String(kNastyStore)});
}

constexpr auto kPrivate = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;

// --- The command line ---

struct UsageCase {
  const char* arguments;
  int code;
  const char* out;  ///< a part of it; "" = nothing at all
  const char* err;
};

TEST_F(QuarlctlTest, AnswersTheCommandLineWithItsExitCode) {
  const UsageCase cases[] = {
      {"--version", 0, "quarlctl 0.1.0\n", ""},
      {"--help", 0, "Examples:", ""},
      {"init --help", 0, "quarlctl init", ""},
      {"export --help", 0, "quarlctl export quarl.json", ""},
      {"import --help", 0, "quarlctl import new-servers.json", ""},
      {"backup --help", 0, "quarlctl backup", ""},
      {"restore --help", 0, "quarlctl restore", ""},
      {"list --help", 0, "quarlctl list servers", ""},
      {"", 2, "", "No command was given."},
      {"frobnicate", 2, "", "\"frobnicate\""},
      {"init --frobnicate", 2, "", "--frobnicate"},
      {"import", 2, "", "FILE"},
      {"backup", 2, "", "FILE"},
      {"restore", 2, "", "FILE"},
      {"list nonsense", 2, "", "nonsense"},
      {"list servers tests", 2, "", "quarlctl: "},
      {"init list", 2, "", "quarlctl: "},
      {"--store", 2, "", "--store"},
      {"list", 1, "", "There is no store at"},
      {"export", 1, "", "There is no store at"},
      {"export out.json", 1, "", "There is no store at"},
      {"backup out.db", 1, "", "There is no store at"},
      {"--store nonsense list", 1, "", "nonsense"},
      {"--store sqlite::memory: init", 1, "", "memory"},
      {"--store postgresql://host/db list", 1, "", "PostgreSQL"},
      {"--store sqlite:no/such/folder/x.db init", 1, "", "quarlctl: "},
      {"list --store sqlite:other.db", 1, "", "other.db"},
  };
  for (const UsageCase& each : cases) {
    SCOPED_TRACE(each.arguments);
    const Ended run = Ctl(each.arguments);
    EXPECT_EQ(run.code, each.code) << ::testing::PrintToString(run);
    EXPECT_TRUE(*each.out == '\0' ? run.out.isEmpty() : run.out.contains(each.out)) << run.out.toStdString();
    EXPECT_TRUE(*each.err == '\0' ? run.err.isEmpty() : run.err.contains(each.err)) << run.err.toStdString();
    const QList<QByteArray> errorLines = run.err.isEmpty() ? QList<QByteArray>() : run.err.chopped(1).split('\n');
    for (const QByteArray& line : errorLines) EXPECT_TRUE(line.startsWith("quarlctl: ")) << line.toStdString();
  }
  for (const char* command : {"export", "import", "backup", "restore"}) {
    const Ended run = Ctl({Q(command), QString()});
    EXPECT_EQ(run.code, 2) << command;
    EXPECT_TRUE(run.err.contains("name is empty")) << run.err.toStdString();
  }
  // As a script with an unset variable calls it: not the store that would be meant without the option.
  for (const QStringList& empty : {QStringList{Q("--store"), QString()}, QStringList{Q("--store=")}}) {
    EXPECT_NE(Ctl(empty + QStringList{Q("init")}).code, 0);
  }
  EXPECT_EQ(FilesBeside(), QStringList()) << "none of these makes anything";
}

TEST_F(QuarlctlTest, FailsWhenStandardOutputCannotBeWritten) {
  MustCtl("init");
  outFile_ = Q("/dev/full");
  for (const char* arguments : {"list", "export", "list --json", "--help", "--version"}) {
    SCOPED_TRACE(arguments);
    ExpectFailure(Ctl(arguments), "Standard output cannot be written");
  }
  outFile_.clear();
  // A pipe whose reader has gone.
  beforeStart_ = [] {
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) _exit(99);
    close(ends[0]);
    close(ends[1]);
  };
  EXPECT_EQ(Ctl("list").code, 1);
}

// --- init ---

TEST_F(QuarlctlTest, InitMakesAStoreOnce) {
  EXPECT_TRUE(MustCtl("init").contains("store.db"));
  EXPECT_EQ(QFileInfo(Path(Q("store.db"))).permissions(), kPrivate);
  EXPECT_EQ(FilesBeside(), QStringList{Q("store.db")});
  const QByteArray exported = MustCtl("export");

  ExpectFailure(Ctl("init --starter"), "exists already");
  EXPECT_EQ(MustCtl("export"), exported);
}

TEST_F(QuarlctlTest, InitLeavesWhateverStandsInItsPlace) {
  WriteFile(Q("store.db"), "precious");
  EXPECT_EQ(Ctl("init").code, 1);
  EXPECT_EQ(Content(Q("store.db")), "precious");
  WriteFile(Q("empty.db"), {});
  EXPECT_EQ(Ctl({Q("--store"), Store(Q("empty.db")), Q("init")}).code, 1);
  EXPECT_EQ(Content(Q("empty.db")), "");
  ASSERT_TRUE(QFile::link(Q("nowhere"), Path(Q("link.db"))));
  EXPECT_EQ(Ctl({Q("--store"), Store(Q("link.db")), Q("init")}).code, 1);
  EXPECT_EQ(QFile::symLinkTarget(Path(Q("link.db"))), Path(Q("nowhere")));
}

TEST_F(QuarlctlTest, NoNewStoreIsPutBesideTheLogOfAMissingOne) {
  for (const char* log : {"store.db-wal", "store.db-journal"}) {
    SCOPED_TRACE(log);
    WriteFile(Q(log), "the last changes");
    for (const QStringList& command : {QStringList{Q("init")}, Words("import -")}) {
      ExpectFailure(Ctl(command, R"({"format":"quarl-configuration","version":1})"), "a log of it");
      EXPECT_EQ(FilesBeside(), QStringList{Q(log)});
    }
    ASSERT_TRUE(QFile::remove(Path(Q(log))));
  }
}

TEST_F(QuarlctlTest, InitMakesTheUsersOwnStoreWithItsFolder) {
  environment_.remove(Q("QUARL_STORE"));
  MustCtl("init");
  EXPECT_TRUE(QFileInfo::exists(Path(Q("data/quarl/quarl.db"))));
}

TEST_F(QuarlctlTest, StarterHoldsTheModulesAndThisMachine) {
  MustCtl("init --starter");
  const QJsonObject all = QJsonDocument::fromJson(MustCtl("list --json")).object();
  QStringList types;
  for (const QJsonValue& type : all[Q("types")].toArray()) {
    types << type[Q("kind")].toString() + QLatin1Char(' ') + type[Q("module")].toString() + QLatin1Char(' ') +
                 type[Q("name")].toString();
  }
  EXPECT_EQ(types.join(QLatin1Char('\n')).toStdString(),
            "test dns.dll DNS look-up\ntest http.dll HTTP(S)\ntest local.dll Local machine\n"
            "test monitoringplugin.dll Monitoring-Plugins command\ntest ping.dll Ping\ntest tcpport.dll TCP port\n"
            "alert command.dll Command\nalert desktop.dll Desktop note\nalert email.dll E-mail\n"
            "alert syslog.dll System log\nalert webhook.dll Webhook");
  const QJsonObject schedule = all[Q("groups")][0][Q("schedule")].toObject();
  EXPECT_EQ(schedule[Q("enabled")].toBool(), true);
  EXPECT_EQ(schedule[Q("deltaTime")].toInt(), 5);
  EXPECT_EQ(schedule[Q("deltaType")].toString(), Q("minutes"));
  EXPECT_EQ(schedule[Q("startTime")].toString(), Q("00:00:00"));
  const QDate start = QDate::fromString(schedule[Q("startDate")].toString(), Qt::ISODate);
  EXPECT_LE(qAbs(start.daysTo(QDate::currentDate())), 1);
  const QJsonArray servers = all[Q("servers")].toArray();
  ASSERT_EQ(servers.size(), 1);
  EXPECT_EQ(servers[0][Q("name")].toString(), QSysInfo::machineHostName());
  EXPECT_EQ(servers[0][Q("ipAddress")].toString(), Q("127.0.0.1"));
  const QJsonArray tests = all[Q("tests")].toArray();
  ASSERT_EQ(tests.size(), 1);
  EXPECT_EQ(tests[0][Q("type")].toString(), Q("Ping"));
  EXPECT_EQ(tests[0][Q("idServer")], servers[0][Q("id")]);
}

TEST_F(QuarlctlTest, StarterWithoutItsModulesLeavesNoFile) {
  const QString folder = Path(Q("app"));
  // A broken file in the folder of test modules.
  const std::pair<const char*, const char*> cases[] = {{nullptr, "ping"}, {"ping.dll", "ping.dll"}};
  for (const auto& [brokenModule, says] : cases) {
    ASSERT_TRUE(QDir().mkpath(folder + Q("/plugins/tests")));
    program_ = folder + Q("/quarlctl");
    ASSERT_TRUE(QFile::exists(program_) || QFile::copy(Q(QUARL_QUARLCTL), program_));
    if (brokenModule != nullptr)
      WriteFile(Q("app/plugins/tests/") + Q(brokenModule),
                "\x7f"
                "ELF broken");
    ExpectFailure(Ctl("init --starter"), says);
    EXPECT_EQ(FilesBeside(), QStringList{Q("app")});
  }
}

// --- export ---

TEST_F(QuarlctlTest, ExportWritesAPrivateFileAndKeepsOneThatIsThere) {
  MustCtl("init --starter");
  const QByteArray text = MustCtl("export");
  EXPECT_EQ(MustCtl("export -"), text);
  EXPECT_EQ(MustCtl("export out.json"), "");
  EXPECT_EQ(Content(Q("out.json")), text);
  EXPECT_EQ(QFileInfo(Path(Q("out.json"))).permissions(), kPrivate);

  WriteFile(Q("out.json"), "precious");
  ExpectFailure(Ctl("export out.json"), "--force");
  EXPECT_EQ(Content(Q("out.json")), "precious");
  MustCtl("export out.json --force");
  EXPECT_EQ(Content(Q("out.json")), text);
  EXPECT_EQ(FilesBeside(), Words("out.json store.db"));
}

TEST_F(QuarlctlTest, ExportThatCannotBeWrittenLeavesNothing) {
  MustCtl("import - --allow-missing-modules", NastyFile(1));
  ASSERT_TRUE(QDir(Path(Q("."))).mkdir(Q("folder")));
  WriteFile(Q("file"), "x");
  WriteFile(Q("old.json"), "precious");
  const std::pair<QStringList, const char*> cases[] = {
      {{Q("folder")}, "is a folder"},
      {{Q("missing/out.json")}, "No such file"},
      {{Q("file/out.json")}, "Not a directory"},
      {{Q("/dev/full")}, "No space left"},
      {{Q("/dev/full"), Q("--force")}, "No space left"},
      {{QString(300, QLatin1Char('n'))}, "too long"},
      {{Q("/proc/out.json")}, "cannot be written"},
  };
  for (const auto& [arguments, says] : cases) {
    SCOPED_TRACE(arguments.join(QLatin1Char(' ')).toStdString());
    ExpectFailure(Ctl(QStringList{Q("export")} + arguments), says);
  }
  EXPECT_FALSE(QFileInfo(Q("/dev/full")).isFile()) << "a device is not replaced";
  // A disk that is full while the file is written.
  beforeStart_ = [] {
    const rlimit limit{100000, 100000};  // enough to open the store
    std::signal(SIGXFSZ, SIG_IGN);
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(99);
  };
  ExpectFailure(Ctl("export new.json"), "new.json cannot be written: File too large");
  EXPECT_EQ(Ctl("export old.json --force").code, 1);
  EXPECT_EQ(Content(Q("old.json")), "precious");
  EXPECT_EQ(FilesBeside(), Words("file folder old.json store.db"));
}

TEST_F(QuarlctlTest, ExportFollowsALinkToItsFile) {
  MustCtl("init");
  WriteFile(Q("real.json"), "old");
  ASSERT_TRUE(QFile::link(Path(Q("real.json")), Path(Q("link.json"))));
  MustCtl("export link.json --force");
  EXPECT_TRUE(QFileInfo(Path(Q("link.json"))).isSymLink());
  EXPECT_EQ(Content(Q("real.json")), MustCtl("export"));
}

// --- list ---

const char* const kListed = R"({"format":"quarl-configuration","version":1,"groups":[
  {"name":"漢字","description":"wide","servers":[
    {"name":"a\nADMIN  1.2.3.4","ipAddress":"1.1.1.1"},
    {"name":"b\u001b]0;x\u0007","ipAddress":"","failThreshold":-1},
    {"name":"e\u0301 \ud83d\ude00 \u202ex","ipAddress":"::1","tests":[{"type":"ping.dll","name":"P"}],
     "alerts":[{"type":"email.dll","name":"M"}]}],
   "alerts":[{"type":"email.dll","name":"G"}]},
  {"name":"plain","schedule":{"enabled":false,"startDate":"2026-01-31","startTime":"23:59:59","deltaTime":2,
   "deltaType":"hours"}}]})";

TEST_F(QuarlctlTest, ListsForPeopleAreAlignedAndCannotBeForged) {
  MustCtl("import -", kListed);
  EXPECT_EQ(MustCtl("list groups").toStdString(),
            "ID  NAME     DESCRIPTION  SCHEDULE\n"
            "0   SERVERS               none\n"
            "5   plain                 every 2 hours from 2026-01-31 23:59:59 (off)\n"
            "1   漢字     wide         none\n");
  EXPECT_EQ(MustCtl("list servers").toStdString(),
            "ID  NAME               ADDRESS  GROUP  STATE  THRESHOLD  SCHEDULE\n"
            "2   a\\nADMIN  1.2.3.4  1.1.1.1  漢字          3          none\n"
            "3   b\\u001b]0;x\\u0007           漢字          -1         none\n"
            "4   e\u0301 \U0001f600 \\u202ex       ::1      漢字          3          none\n");
  EXPECT_EQ(MustCtl("list alerts").toStdString(),
            "ID  NAME  TYPE   OF      OWNER\n"
            "2   G     email  group   漢字\n"
            "1   M     email  server  e\u0301 \U0001f600 \\u202ex\n");
  EXPECT_EQ(MustCtl("list types").toStdString(),
            "KIND   ID  NAME   MODULE\n"
            "test   1   ping   ping.dll\n"
            "alert  1   email  email.dll\n");
  const QByteArray all = MustCtl("list");
  for (const char* part : {"groups\nID", "\n\nservers\nID", "\n\ntests\nID", "\n\nalerts\nID", "\n\ntypes\nKIND"}) {
    EXPECT_TRUE(all.contains(part)) << all.toStdString();
  }
}

TEST_F(QuarlctlTest, ListsForScriptsKeepEveryText) {
  MustCtl("import - --allow-missing-modules", NastyFile(3));
  const store::Configuration configuration = NastyConfiguration(3);
  QStringList names;
  for (const store::ServerConfiguration& server : configuration.root.servers) names << server.name;
  for (const auto& group : configuration.groups) {
    for (const store::ServerConfiguration& server : group.servers) names << server.name;
  }
  QStringList listed;
  for (const QJsonValue& server : QJsonDocument::fromJson(MustCtl("list servers --json")).array()) {
    listed << server[Q("name")].toString();
  }
  names.sort();
  listed.sort();
  EXPECT_EQ(listed, names);
  const Ended table = Ctl("list");
  EXPECT_EQ(table.code, 0);
  for (const char c : table.out) ASSERT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= 0x20);
}

}  // namespace
}  // namespace quarl::test
