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

QString S(const char* text) {
  return QString::fromUtf8(text);
}

constexpr auto kPrivate = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;

// --- The command line
// -------------------------------------------------------------------------------------------------

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
    const Ended run = Ctl(S(each.arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts));
    EXPECT_EQ(run.code, each.code) << ::testing::PrintToString(run);
    EXPECT_TRUE(*each.out == '\0' ? run.out.isEmpty() : run.out.contains(each.out)) << run.out.toStdString();
    EXPECT_TRUE(*each.err == '\0' ? run.err.isEmpty() : run.err.contains(each.err)) << run.err.toStdString();
    const QList<QByteArray> errorLines = run.err.isEmpty() ? QList<QByteArray>() : run.err.chopped(1).split('\n');
    for (const QByteArray& line : errorLines) EXPECT_TRUE(line.startsWith("quarlctl: ")) << line.toStdString();
  }
  for (const char* command : {"export", "import", "backup", "restore"}) {
    const Ended run = Ctl({S(command), QString()});
    EXPECT_EQ(run.code, 2) << command;
    EXPECT_TRUE(run.err.contains("name is empty")) << run.err.toStdString();
  }
  // As a script with an unset variable calls it: not the store that would be meant without the option.
  for (const QStringList& empty : {QStringList{S("--store"), QString()}, QStringList{S("--store=")}}) {
    EXPECT_NE(Ctl(empty + QStringList{S("init")}).code, 0);
  }
  EXPECT_EQ(FilesBeside(), QStringList()) << "none of these makes anything";
}

TEST_F(QuarlctlTest, FailsWhenStandardOutputCannotBeWritten) {
  MustCtl({S("init")});
  outFile_ = S("/dev/full");
  for (const char* arguments : {"list", "export", "list --json", "--help", "--version"}) {
    SCOPED_TRACE(arguments);
    const Ended run = Ctl(S(arguments).split(QLatin1Char(' ')));
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.err.contains("Standard output cannot be written")) << run.err.toStdString();
  }
  outFile_.clear();
  // A pipe whose reader has gone.
  beforeStart_ = [] {
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) _exit(99);
    close(ends[0]);
    close(ends[1]);
  };
  EXPECT_EQ(Ctl({S("list")}).code, 1);
}

// --- init
// -------------------------------------------------------------------------------------------------------------

TEST_F(QuarlctlTest, InitMakesAStoreOnce) {
  EXPECT_TRUE(MustCtl({S("init")}).contains("store.db"));
  EXPECT_EQ(QFileInfo(Path(S("store.db"))).permissions(), kPrivate);
  EXPECT_EQ(FilesBeside(), QStringList{S("store.db")});
  const QByteArray exported = MustCtl({S("export")});

  const Ended again = Ctl({S("init"), S("--starter")});
  EXPECT_EQ(again.code, 1);
  EXPECT_TRUE(again.err.contains("exists already")) << again.err.toStdString();
  EXPECT_EQ(MustCtl({S("export")}), exported);
}

TEST_F(QuarlctlTest, InitLeavesWhateverStandsInItsPlace) {
  WriteFile(S("store.db"), "precious");
  EXPECT_EQ(Ctl({S("init")}).code, 1);
  EXPECT_EQ(Content(S("store.db")), "precious");
  WriteFile(S("empty.db"), {});
  EXPECT_EQ(Ctl({S("--store"), Store(S("empty.db")), S("init")}).code, 1);
  EXPECT_EQ(Content(S("empty.db")), "");
  ASSERT_TRUE(QFile::link(S("nowhere"), Path(S("link.db"))));
  EXPECT_EQ(Ctl({S("--store"), Store(S("link.db")), S("init")}).code, 1);
  EXPECT_EQ(QFile::symLinkTarget(Path(S("link.db"))), Path(S("nowhere")));
}

TEST_F(QuarlctlTest, NoNewStoreIsPutBesideTheLogOfAMissingOne) {
  for (const char* log : {"store.db-wal", "store.db-journal"}) {
    SCOPED_TRACE(log);
    WriteFile(S(log), "the last changes");
    for (const QStringList& command : {QStringList{S("init")}, QStringList{S("import"), S("-")}}) {
      const Ended run = Ctl(command, R"({"format":"quarl-configuration","version":1})");
      EXPECT_EQ(run.code, 1);
      EXPECT_TRUE(run.err.contains("a log of it")) << run.err.toStdString();
      EXPECT_EQ(FilesBeside(), QStringList{S(log)});
    }
    ASSERT_TRUE(QFile::remove(Path(S(log))));
  }
}

TEST_F(QuarlctlTest, InitMakesTheUsersOwnStoreWithItsFolder) {
  environment_.remove(S("QUARL_STORE"));
  MustCtl({S("init")});
  EXPECT_TRUE(QFileInfo::exists(Path(S("data/quarl/quarl.db"))));
}

TEST_F(QuarlctlTest, StarterHoldsTheModulesAndThisMachine) {
  MustCtl({S("init"), S("--starter")});
  const QJsonObject all = QJsonDocument::fromJson(MustCtl({S("list"), S("--json")})).object();
  QStringList types;
  for (const QJsonValue& type : all[S("types")].toArray()) {
    types << type[S("kind")].toString() + QLatin1Char(' ') + type[S("module")].toString() + QLatin1Char(' ') +
                 type[S("name")].toString();
  }
  EXPECT_EQ(types.join(QLatin1Char('\n')).toStdString(),
            "test http.dll HTTP(S)\ntest monitoringplugin.dll Monitoring-Plugins command\ntest ping.dll Ping\n"
            "test tcpport.dll TCP port\nalert command.dll Command\nalert email.dll E-mail\nalert webhook.dll Webhook");
  const QJsonObject schedule = all[S("groups")][0][S("schedule")].toObject();
  EXPECT_EQ(schedule[S("enabled")].toBool(), true);
  EXPECT_EQ(schedule[S("deltaTime")].toInt(), 5);
  EXPECT_EQ(schedule[S("deltaType")].toString(), S("minutes"));
  EXPECT_EQ(schedule[S("startTime")].toString(), S("00:00:00"));
  const QDate start = QDate::fromString(schedule[S("startDate")].toString(), Qt::ISODate);
  EXPECT_LE(qAbs(start.daysTo(QDate::currentDate())), 1);
  const QJsonArray servers = all[S("servers")].toArray();
  ASSERT_EQ(servers.size(), 1);
  EXPECT_EQ(servers[0][S("name")].toString(), QSysInfo::machineHostName());
  EXPECT_EQ(servers[0][S("ipAddress")].toString(), S("127.0.0.1"));
  const QJsonArray tests = all[S("tests")].toArray();
  ASSERT_EQ(tests.size(), 1);
  EXPECT_EQ(tests[0][S("type")].toString(), S("Ping"));
  EXPECT_EQ(tests[0][S("idServer")], servers[0][S("id")]);
}

TEST_F(QuarlctlTest, StarterWithoutItsModulesLeavesNoFile) {
  const QString folder = Path(S("app"));
  const struct {
    const char* brokenModule;  ///< a file in the folder of test modules
    const char* says;
  } cases[] = {{nullptr, "ping"}, {"ping.dll", "ping.dll"}};
  for (const auto& each : cases) {
    ASSERT_TRUE(QDir().mkpath(folder + S("/plugins/tests")));
    program_ = folder + S("/quarlctl");
    ASSERT_TRUE(QFile::exists(program_) || QFile::copy(S(QUARL_QUARLCTL), program_));
    if (each.brokenModule != nullptr)
      WriteFile(S("app/plugins/tests/") + S(each.brokenModule),
                "\x7f"
                "ELF broken");
    const Ended run = Ctl({S("init"), S("--starter")});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.err.contains(each.says)) << run.err.toStdString();
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(FilesBeside(), QStringList{S("app")});
  }
}

// --- export
// -----------------------------------------------------------------------------------------------------------

TEST_F(QuarlctlTest, ExportWritesAPrivateFileAndKeepsOneThatIsThere) {
  MustCtl({S("init"), S("--starter")});
  const QByteArray text = MustCtl({S("export")});
  EXPECT_EQ(MustCtl({S("export"), S("-")}), text);
  EXPECT_EQ(MustCtl({S("export"), S("out.json")}), "");
  EXPECT_EQ(Content(S("out.json")), text);
  EXPECT_EQ(QFileInfo(Path(S("out.json"))).permissions(), kPrivate);

  WriteFile(S("out.json"), "precious");
  const Ended refused = Ctl({S("export"), S("out.json")});
  EXPECT_EQ(refused.code, 1);
  EXPECT_TRUE(refused.err.contains("--force")) << refused.err.toStdString();
  EXPECT_EQ(Content(S("out.json")), "precious");
  MustCtl({S("export"), S("out.json"), S("--force")});
  EXPECT_EQ(Content(S("out.json")), text);
  EXPECT_EQ(FilesBeside(), (QStringList{S("out.json"), S("store.db")}));
}

TEST_F(QuarlctlTest, ExportThatCannotBeWrittenLeavesNothing) {
  MustCtl({S("import"), S("-"), S("--allow-missing-modules")}, NastyFile(1));
  ASSERT_TRUE(QDir(Path(S("."))).mkdir(S("folder")));
  WriteFile(S("file"), "x");
  WriteFile(S("old.json"), "precious");
  const struct {
    QStringList arguments;
    const char* says;
  } cases[] = {
      {{S("folder")}, "is a folder"},
      {{S("missing/out.json")}, "No such file"},
      {{S("file/out.json")}, "Not a directory"},
      {{S("/dev/full")}, "No space left"},
      {{S("/dev/full"), S("--force")}, "No space left"},
      {{QString(300, QLatin1Char('n'))}, "too long"},
      {{S("/proc/out.json")}, "cannot be written"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.arguments.join(QLatin1Char(' ')).toStdString());
    const Ended run = Ctl(QStringList{S("export")} + each.arguments);
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.err.contains(each.says)) << run.err.toStdString();
  }
  EXPECT_FALSE(QFileInfo(S("/dev/full")).isFile()) << "a device is not replaced";
  // A disk that is full while the file is written.
  beforeStart_ = [] {
    const rlimit limit{100000, 100000};  // enough to open the store
    std::signal(SIGXFSZ, SIG_IGN);
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(99);
  };
  const Ended full = Ctl({S("export"), S("new.json")});
  EXPECT_EQ(full.code, 1);
  EXPECT_TRUE(full.err.contains("new.json cannot be written: File too large")) << full.err.toStdString();
  EXPECT_EQ(Ctl({S("export"), S("old.json"), S("--force")}).code, 1);
  EXPECT_EQ(Content(S("old.json")), "precious");
  EXPECT_EQ(FilesBeside(), (QStringList{S("file"), S("folder"), S("old.json"), S("store.db")}));
}

TEST_F(QuarlctlTest, ExportFollowsALinkToItsFile) {
  MustCtl({S("init")});
  WriteFile(S("real.json"), "old");
  ASSERT_TRUE(QFile::link(Path(S("real.json")), Path(S("link.json"))));
  MustCtl({S("export"), S("link.json"), S("--force")});
  EXPECT_TRUE(QFileInfo(Path(S("link.json"))).isSymLink());
  EXPECT_EQ(Content(S("real.json")), MustCtl({S("export")}));
}

// --- list
// -------------------------------------------------------------------------------------------------------------

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
  MustCtl({S("import"), S("-")}, kListed);
  EXPECT_EQ(MustCtl({S("list"), S("groups")}).toStdString(),
            "ID  NAME     DESCRIPTION  SCHEDULE\n"
            "0   SERVERS               none\n"
            "5   plain                 every 2 hours from 2026-01-31 23:59:59 (off)\n"
            "1   漢字     wide         none\n");
  EXPECT_EQ(MustCtl({S("list"), S("servers")}).toStdString(),
            "ID  NAME               ADDRESS  GROUP  STATE  THRESHOLD  SCHEDULE\n"
            "2   a\\nADMIN  1.2.3.4  1.1.1.1  漢字          3          none\n"
            "3   b\\u001b]0;x\\u0007           漢字          -1         none\n"
            "4   e\u0301 \U0001f600 \\u202ex       ::1      漢字          3          none\n");
  EXPECT_EQ(MustCtl({S("list"), S("alerts")}).toStdString(),
            "ID  NAME  TYPE   OF      OWNER\n"
            "2   G     email  group   漢字\n"
            "1   M     email  server  e\u0301 \U0001f600 \\u202ex\n");
  EXPECT_EQ(MustCtl({S("list"), S("types")}).toStdString(),
            "KIND   ID  NAME   MODULE\n"
            "test   1   ping   ping.dll\n"
            "alert  1   email  email.dll\n");
  const QByteArray all = MustCtl({S("list")});
  for (const char* part : {"groups\nID", "\n\nservers\nID", "\n\ntests\nID", "\n\nalerts\nID", "\n\ntypes\nKIND"}) {
    EXPECT_TRUE(all.contains(part)) << all.toStdString();
  }
}

TEST_F(QuarlctlTest, ListsForScriptsKeepEveryText) {
  MustCtl({S("import"), S("-"), S("--allow-missing-modules")}, NastyFile(3));
  const store::Configuration configuration = NastyConfiguration(3);
  QStringList names;
  for (const store::ServerConfiguration& server : configuration.root.servers) names << server.name;
  for (const auto& group : configuration.groups) {
    for (const store::ServerConfiguration& server : group.servers) names << server.name;
  }
  QStringList listed;
  for (const QJsonValue& server : QJsonDocument::fromJson(MustCtl({S("list"), S("servers"), S("--json")})).array()) {
    listed << server[S("name")].toString();
  }
  names.sort();
  listed.sort();
  EXPECT_EQ(listed, names);
  const Ended table = Ctl({S("list")});
  EXPECT_EQ(table.code, 0);
  for (const char c : table.out) ASSERT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= 0x20);
}

}  // namespace
}  // namespace quarl::test
