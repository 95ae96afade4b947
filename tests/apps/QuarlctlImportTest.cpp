#include <sys/resource.h>
#include <unistd.h>

#include <QFileInfo>
#include <QRegularExpression>
#include <csignal>

#include "apps/NastyConfiguration.h"
#include "apps/QuarlctlRun.h"
#include "store/StoreFixture.h"
#include "transfer/ConfigurationFile.h"

namespace quarl::test {
namespace {

QByteArray NastyFile(unsigned seed, const char* storeId = "0b0e4b0a-7b1e-4c58-9a57-0d1c1f4a2b3c") {
  return transfer::WriteConfiguration({NastyConfiguration(seed), QLatin1String(storeId)});
}

const QString kAnyModules = Q("--allow-missing-modules");

TEST_F(QuarlctlTest, ExportImportExportGivesTheSameBytes) {
  for (unsigned seed = 0; seed < 8; ++seed) {
    SCOPED_TRACE(seed);
    const QString first = Store(Q("first-%1.db").arg(seed));
    const QString second = Store(Q("second-%1.db").arg(seed));
    MustCtl({Q("--store"), first, Q("import"), Q("-"), kAnyModules}, NastyFile(seed));
    const QByteArray exported = MustCtl({Q("--store"), first, Q("export")});
    if (seed % 2 == 0) MustCtl({Q("--store"), second, Q("init")});
    MustCtl({Q("--store"), second, Q("import"), Q("-"), kAnyModules}, exported);
    EXPECT_TRUE(MustCtl({Q("--store"), second, Q("export")}) == exported);
    // The store gave back every record, in the order of its own lists.
    const auto sizes = [](const QByteArray& text) { return std::pair(text.size(), text.count("\"properties\"")); };
    EXPECT_EQ(sizes(exported), sizes(NastyFile(seed)));
  }
}

class QuarlctlImport : public QuarlctlTest {
 protected:
  QuarlctlImport() {
    MustCtl("init --starter");
    MustCtl("import -", kGroup);
    before_ = MustCtl("export");
  }
  ~QuarlctlImport() override { EXPECT_FALSE(FilesBeside().contains(Q("store.db-wal"))); }

  QByteArray Changed(const char* from, const QByteArray& to) const {
    QByteArray text = before_;
    EXPECT_TRUE(text.contains(from)) << from;
    return text.replace(from, to);
  }

  static constexpr const char* kGroup =
      R"({"format":"quarl-configuration","version":1,"groups":[{"name":"Web","servers":[
         {"name":"www","ipAddress":"192.0.2.1","tests":[{"type":"ping.dll","name":"Echo","properties":"old"}],
          "alerts":[{"type":"email.dll","name":"Mail","properties":"secret"}]}]}]})";
  QByteArray before_;
};

TEST_F(QuarlctlImport, ChangesWhatTheFileSaysAndPrintsIt) {
  const QByteArray text = Changed("192.0.2.1", "192.0.2.9").replace("\"old\"", "\"new\"");
  const QByteArray lines =
      "change server 3 \"www\": address \"192.0.2.1\" -> \"192.0.2.9\"\nchange test 2 \"Echo\": properties\n";
  const QByteArray dry = MustCtl("import - --dry-run", text);
  EXPECT_EQ(dry.toStdString(),
            (lines + "Nothing was written; the import would make: 0 added, 2 changed, 0 removed.\n").toStdString());
  EXPECT_EQ(MustCtl("export"), before_);
  EXPECT_EQ(MustCtl("import -", text).toStdString(),
            (lines + "Imported: 0 added, 2 changed, 0 removed.\n").toStdString());
  EXPECT_EQ(MustCtl("export"), text);
  EXPECT_EQ(MustCtl("import -", text), "Imported: 0 added, 0 changed, 0 removed.\n");
}

TEST_F(QuarlctlImport, ReadsFilesAndAddsRecordsWithoutIdEachTime) {
  WriteFile(Q("new.json"), kGroup);
  MustCtl("import new.json");
  const QByteArray once = MustCtl("export");
  EXPECT_EQ(once.count("\"www\""), 2);
  EXPECT_EQ(MustCtl("import new.json --dry-run").count("add "), 4);
  EXPECT_EQ(MustCtl("export"), once);
}

TEST_F(QuarlctlImport, ReplacingRemovesTheRest) {
  const QByteArray text = Changed("\"name\": \"Web\"", "\"name\": \"Net\"");
  MustCtl("import -", kGroup);
  const QByteArray lines = MustCtl("import - --replace", text);
  EXPECT_TRUE(lines.contains("change group 2 \"Net\": name \"Web\" -> \"Net\"\n")) << lines.toStdString();
  EXPECT_TRUE(lines.contains("1 changed, 4 removed")) << lines.toStdString();
  EXPECT_EQ(MustCtl("export"), text);
}

TEST_F(QuarlctlImport, TakesAFileOfAnotherStoreOnlyToReplace) {
  const QByteArray other = NastyFile(5);
  ExpectFailure(Ctl({Q("import"), Q("-"), kAnyModules}, other), "of another store");
  EXPECT_EQ(MustCtl("export"), before_);
  MustCtl({Q("import"), Q("-"), kAnyModules, Q("--replace")}, other);
  EXPECT_TRUE(MustCtl("export").contains("0b0e4b0a-7b1e-4c58-9a57-0d1c1f4a2b3c"));
}

TEST_F(QuarlctlImport, KeepsResultsOfItsOwnTestsOnly) {
  store::RunSql(Path(Q("store.db")),
                "INSERT INTO test_results (id_test, id_test_state, last_execution_ms, last_result)"
                " VALUES (2, 1, 1000, 'fine')");
  MustCtl("import - --replace", Changed("\"old\"", "\"new\""));
  EXPECT_TRUE(MustCtl("list tests").contains("passed"));
  EXPECT_TRUE(
      MustCtl("list tests --json")
          .contains("\"state\": 1,\n    \"lastExecution\": \"1970-01-01T00:00:01Z\",\n    \"lastResult\": \"fine\""));
  QByteArray foreign = before_;
  foreign.replace(foreign.indexOf("\"storeId\": \"") + 12, 8, "00000000");
  MustCtl("import - --replace", foreign);
  EXPECT_EQ(MustCtl("export"), foreign);
  EXPECT_FALSE(MustCtl("list tests").contains("passed"));
}

struct BadFile {
  const char* name;
  QByteArray text;
  const char* says;
};

TEST_F(QuarlctlImport, RefusesBrokenFilesAndChangesNothing) {
  const QByteArray noModule = R"({"format":"quarl-configuration","version":1,"testTypes":[{"module":"gone.dll"}]})";
  const BadFile cases[] = {
      {"Empty", "", "Standard input: The file is empty."},
      {"Truncated", before_.left(before_.size() / 2), "Standard input: Line "},
      {"NewerVersion", Changed("\"version\": 1", "\"version\": 2"), "/version"},
      {"UnknownKey", Changed("\"groups\"", "\"grops\""), "/grops: this key is not known"},
      {"DanglingType", Changed("\"type\": 5", "\"type\": 9"), "no type 9"},
      {"InvalidUtf8", Changed("www", "w\xffw"), "UTF-8"},
      {"AStore", Content(Q("store.db")), "Line 1"},
      {"ModuleMissing", noModule, "gone.dll is not in"},
      {"EscapesInAName", Changed("\"www\"", "{\"\\u001b[2J\": 1}"), "/groups/0/servers/0/name"},
      {"EscapesInAKey", Changed("\"groups\"", "\"\\u001b[2J\\n\""), "\\u001b[2J\\n"},
  };
  for (const BadFile& each : cases) {
    for (const bool replace : {false, true}) {
      SCOPED_TRACE(each.name);
      const Ended run = Ctl(replace ? "import - --replace" : "import -", each.text);
      ExpectFailure(run, each.says);
      EXPECT_EQ(run.err.count('\n'), run.err.count("quarlctl: "));
      EXPECT_FALSE(run.err.contains('\x1b'));
      EXPECT_EQ(MustCtl("export"), before_);
    }
  }
}

TEST_F(QuarlctlImport, LooksForModulesOfNewTypesOnly) {
  const QByteArray gone = R"({"format":"quarl-configuration","version":1,"testTypes":[{"module":"gone.dll"}]})";
  const Ended allowed = Ctl({Q("import"), Q("-"), kAnyModules}, gone);
  EXPECT_EQ(allowed.code, 0);
  EXPECT_TRUE(allowed.err.contains("gone.dll is not in")) << allowed.err.toStdString();
  EXPECT_TRUE(MustCtl("import -", kGroup).contains("add group \"Web\""));
}

TEST_F(QuarlctlImport, RefusesFilesThatItCannotRead) {
  for (const char* name : {"missing.json", ".", "store.db/x"}) {
    const Ended run = Ctl({Q("import"), Q(name)});
    EXPECT_EQ(run.code, 1) << name;
    EXPECT_TRUE(run.err.contains(name)) << run.err.toStdString();
  }
}

TEST_F(QuarlctlImport, NamesTheFilesPathInErrors) {
  WriteFile(Q("bad.json"), "{");
  EXPECT_TRUE(Ctl("import bad.json").err.startsWith("quarlctl: bad.json: Line 1, column 2: "));
}

TEST_F(QuarlctlImport, OfAMissingStoreMakesItOnlyWhenAllIsWell) {
  const QStringList fresh{Q("--store"), Store(Q("fresh.db")), Q("import"), Q("-")};
  const QStringList before = FilesBeside();
  EXPECT_TRUE(MustCtl(fresh + QStringList{Q("--dry-run")}, kGroup).contains("add group \"Web\""));
  EXPECT_EQ(Ctl(fresh, NastyFile(1)).code, 1) << "its modules are missing";
  EXPECT_EQ(Ctl(fresh, "{").code, 1);
  EXPECT_EQ(FilesBeside(), before);
  MustCtl(fresh, kGroup);
  EXPECT_EQ(FilesBeside(), (QStringList{Q("fresh.db")} + before));
}

/// Ends or fails the import at its n-th byte written to a file of the store, as a full disk and a crash do.
TEST_F(QuarlctlImport, EndedInTheMiddleOfWritingLeavesTheOldConfiguration) {
  const QByteArray large = NastyFile(2, before_.mid(before_.indexOf("\"storeId\": \"") + 12, 36).constData());
  for (const bool killed : {false, true}) {
    for (const rlim_t limit : {rlim_t{140000}, rlim_t{300000}, rlim_t{600000}}) {
      SCOPED_TRACE(limit);
      beforeStart_ = [killed, limit] {
        const rlimit bound{limit, limit};
        std::signal(SIGXFSZ, killed ? SIG_DFL : SIG_IGN);
        if (setrlimit(RLIMIT_FSIZE, &bound) != 0) _exit(99);
      };
      const Ended run = Ctl({Q("import"), Q("-"), Q("--replace"), kAnyModules}, large);
      EXPECT_EQ(run.code, killed ? 128 + SIGXFSZ : 1) << ::testing::PrintToString(run);
      EXPECT_EQ(run.out, "");
      beforeStart_ = nullptr;
      EXPECT_EQ(MustCtl("export"), before_);
    }
  }
  MustCtl("import - --replace", before_);
}

/// A store whose alert and test have passwords, as their dialogs save them.
TEST_F(QuarlctlImport, PasswordsStayWithTheStoreUnlessAskedFor) {
  const QByteArray json =
      R"({\"format\":1,\"module\":\"email\",\"values\":{\"host\":\"h\"},\"secrets\":{\"password\":\"hunter2\"}}\u0000\u0000)";
  MustCtl("import -", Changed("\"old\"", '"' + json + '"').replace("\"secret\"", '"' + json + '"'));
  const QByteArray without = MustCtl("export");
  const Ended with = Ctl("export all.json --with-secrets");
  EXPECT_EQ(with.code, 0);
  EXPECT_TRUE(with.err.contains("Records with passwords: 2.")) << with.err.toStdString();
  EXPECT_EQ(QFileInfo(Path(Q("all.json"))).permissions() & ~(QFile::ReadUser | QFile::WriteUser),
            QFile::ReadOwner | QFile::WriteOwner);
  const QByteArray all = Content(Q("all.json"));
  EXPECT_EQ(all.count("hunter2"), 2);
  EXPECT_FALSE(without.contains("hunter2"));
  EXPECT_EQ(without.count("\\\"secrets\\\":\\\"not exported\\\""), 2);

  // Into the store that has them nothing changes; with another host they stay.
  for (const char* mode : {"--dry-run", "--replace"}) {
    EXPECT_TRUE(MustCtl({Q("import"), Q("-"), Q(mode)}, without).endsWith("0 added, 0 changed, 0 removed.\n")) << mode;
  }
  QByteArray moved = without;
  moved.replace("\\\"h\\\"", "\\\"other\\\"");
  EXPECT_TRUE(MustCtl("import -", moved).endsWith("Imported: 0 added, 2 changed, 0 removed.\n"));
  EXPECT_EQ(MustCtl("export -").count("other"), 2);

  // A store that does not have them takes the rest and says so; the whole file brings them.
  const QStringList fresh{Q("--store"), Store(Q("fresh.db"))};
  EXPECT_TRUE(MustCtl(fresh + Words("import -"), without)
                  .endsWith("removed.\nRecords that the file leaves without passwords, to be entered again: 2.\n"));
  EXPECT_FALSE(MustCtl(fresh + QStringList{Q("export")}).contains("not exported"));
  MustCtl(fresh + Words("import all.json"));
  EXPECT_EQ(Ctl(fresh + Words("export --with-secrets")).out, all);
}

/// A replacement by a file of another store must not give that file's records the passwords of this one's.
TEST_F(QuarlctlImport, PasswordsAreNotGivenToRecordsOfAnotherStore) {
  const QByteArray json = R"({\"format\":1,\"module\":\"email\",\"secrets\":{\"password\":\"hunter2\"}})";
  MustCtl("import -", Changed("\"secret\"", '"' + json + '"'));
  QByteArray foreign = MustCtl("export");
  foreign.replace(foreign.indexOf("\"storeId\": \"") + 12, 8, "00000000");
  EXPECT_TRUE(MustCtl("import - --replace", foreign).endsWith("entered again: 1.\n"));
  EXPECT_FALSE(Ctl("export --with-secrets").out.contains("hunter2"));
}

/// The file of the documentation, as a reader copies it.
TEST_F(QuarlctlImport, TakesTheDocumentedExample) {
  QFile page(Q(QUARL_SOURCE_DIR "/docs/export-format.md"));
  ASSERT_TRUE(page.open(QIODevice::ReadOnly));
  const auto example = QRegularExpression(Q("```json\n(.*?)```"), QRegularExpression::DotMatchesEverythingOption)
                           .match(QString::fromUtf8(page.readAll()));
  ASSERT_TRUE(example.hasMatch());
  const QByteArray lines = MustCtl("import -", example.captured(1).toUtf8());
  EXPECT_TRUE(lines.endsWith("Imported: 5 added, 1 changed, 0 removed.\n")) << lines.toStdString();
}

}  // namespace
}  // namespace quarl::test
