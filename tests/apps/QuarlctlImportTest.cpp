#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QRegularExpression>
#include <csignal>

#include "apps/NastyConfiguration.h"
#include "apps/QuarlctlRun.h"
#include "transfer/ConfigurationFile.h"

namespace quarl::test {
namespace {

QString S(const char* text) {
  return QString::fromUtf8(text);
}

QByteArray NastyFile(unsigned seed, const char* storeId = "0b0e4b0a-7b1e-4c58-9a57-0d1c1f4a2b3c") {
  return transfer::WriteConfiguration({NastyConfiguration(seed), QLatin1String(storeId)});
}

const QString kAnyModules = S("--allow-missing-modules");

TEST_F(QuarlctlTest, ExportImportExportGivesTheSameBytes) {
  for (unsigned seed = 0; seed < 8; ++seed) {
    SCOPED_TRACE(seed);
    const QString first = Store(S("first-%1.db").arg(seed));
    const QString second = Store(S("second-%1.db").arg(seed));
    MustCtl({S("--store"), first, S("import"), S("-"), kAnyModules}, NastyFile(seed));
    const QByteArray exported = MustCtl({S("--store"), first, S("export")});
    if (seed % 2 == 0) MustCtl({S("--store"), second, S("init")});
    MustCtl({S("--store"), second, S("import"), S("-"), kAnyModules}, exported);
    EXPECT_TRUE(MustCtl({S("--store"), second, S("export")}) == exported);
    // The store gave back every record, in the order of its own lists.
    const auto sizes = [](const QByteArray& text) { return std::pair(text.size(), text.count("\"properties\"")); };
    EXPECT_EQ(sizes(exported), sizes(NastyFile(seed)));
  }
}

class QuarlctlImport : public QuarlctlTest {
 protected:
  QuarlctlImport() {
    MustCtl({S("init"), S("--starter")});
    MustCtl({S("import"), S("-")}, kGroup);
    before_ = MustCtl({S("export")});
  }
  ~QuarlctlImport() override { EXPECT_FALSE(FilesBeside().contains(S("store.db-wal"))); }

  QByteArray Changed(const char* from, const char* to) const {
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
  const QByteArray dry = MustCtl({S("import"), S("-"), S("--dry-run")}, text);
  EXPECT_EQ(dry.toStdString(),
            (lines + "Nothing was written; the import would make: 0 added, 2 changed, 0 removed.\n").toStdString());
  EXPECT_EQ(MustCtl({S("export")}), before_);
  EXPECT_EQ(MustCtl({S("import"), S("-")}, text).toStdString(),
            (lines + "Imported: 0 added, 2 changed, 0 removed.\n").toStdString());
  EXPECT_EQ(MustCtl({S("export")}), text);
  EXPECT_EQ(MustCtl({S("import"), S("-")}, text), "Imported: 0 added, 0 changed, 0 removed.\n");
}

TEST_F(QuarlctlImport, ReadsFilesAndAddsRecordsWithoutIdEachTime) {
  WriteFile(S("new.json"), kGroup);
  MustCtl({S("import"), S("new.json")});
  const QByteArray once = MustCtl({S("export")});
  EXPECT_EQ(once.count("\"www\""), 2);
  EXPECT_EQ(MustCtl({S("import"), S("new.json"), S("--dry-run")}).count("add "), 4);
  EXPECT_EQ(MustCtl({S("export")}), once);
}

TEST_F(QuarlctlImport, ReplacingRemovesTheRest) {
  const QByteArray text = Changed("\"name\": \"Web\"", "\"name\": \"Net\"");
  MustCtl({S("import"), S("-")}, kGroup);
  const QByteArray lines = MustCtl({S("import"), S("-"), S("--replace")}, text);
  EXPECT_TRUE(lines.contains("change group 2 \"Net\": name \"Web\" -> \"Net\"\n")) << lines.toStdString();
  EXPECT_TRUE(lines.contains("1 changed, 4 removed")) << lines.toStdString();
  EXPECT_EQ(MustCtl({S("export")}), text);
}

TEST_F(QuarlctlImport, TakesAFileOfAnotherStoreOnlyToReplace) {
  const QByteArray other = NastyFile(5);
  const Ended refused = Ctl({S("import"), S("-"), kAnyModules}, other);
  EXPECT_EQ(refused.code, 1);
  EXPECT_TRUE(refused.err.contains("of another store")) << refused.err.toStdString();
  EXPECT_EQ(refused.out, "");
  EXPECT_EQ(MustCtl({S("export")}), before_);
  MustCtl({S("import"), S("-"), kAnyModules, S("--replace")}, other);
  EXPECT_TRUE(MustCtl({S("export")}).contains("0b0e4b0a-7b1e-4c58-9a57-0d1c1f4a2b3c"));
}

TEST_F(QuarlctlImport, KeepsResultsOfItsOwnTestsOnly) {
  const auto addResult = [&] {
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open(Path(S("store.db")).toUtf8().constData(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database,
                           "INSERT INTO test_results (id_test, id_test_state, last_execution_ms, last_result)"
                           " VALUES (2, 1, 1000, 'fine')",
                           nullptr, nullptr, nullptr),
              SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
  };
  addResult();
  MustCtl({S("import"), S("-"), S("--replace")}, Changed("\"old\"", "\"new\""));
  EXPECT_TRUE(MustCtl({S("list"), S("tests")}).contains("passed"));
  EXPECT_TRUE(
      MustCtl({S("list"), S("tests"), S("--json")})
          .contains("\"state\": 1,\n    \"lastExecution\": \"1970-01-01T00:00:01Z\",\n    \"lastResult\": \"fine\""));
  QByteArray foreign = before_;
  foreign.replace(foreign.indexOf("\"storeId\": \"") + 12, 8, "00000000");
  MustCtl({S("import"), S("-"), S("--replace")}, foreign);
  EXPECT_EQ(MustCtl({S("export")}), foreign);
  EXPECT_FALSE(MustCtl({S("list"), S("tests")}).contains("passed"));
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
      {"TrailingText", before_ + "x", "no valid JSON"},
      {"NewerVersion", Changed("\"version\": 1", "\"version\": 2"), "/version"},
      {"UnknownKey", Changed("\"groups\"", "\"grops\""), "/grops: this key is not known"},
      {"KeyTwice", Changed("\"description\"", "\"name\""), "twice"},
      {"IdTwice", Changed("\"id\": 3", "\"id\": 2"), "used twice"},
      {"DanglingType", Changed("\"type\": 3", "\"type\": 9"), "no type 9"},
      {"InvalidUtf8", Changed("www", "w\xffw"), "UTF-8"},
      {"AStore", Content(S("store.db")), "Line 1"},
      {"ModuleMissing", noModule, "gone.dll is not in"},
      {"EscapesInAName", Changed("\"www\"", "{\"\\u001b[2J\": 1}"), "/groups/0/servers/0/name"},
      {"EscapesInAKey", Changed("\"groups\"", "\"\\u001b[2J\\n\""), "\\u001b[2J\\n"},
  };
  for (const BadFile& each : cases) {
    for (const bool replace : {false, true}) {
      SCOPED_TRACE(each.name);
      const Ended run =
          Ctl(QStringList{S("import"), S("-")} + (replace ? QStringList{S("--replace")} : QStringList()), each.text);
      EXPECT_EQ(run.code, 1);
      EXPECT_EQ(run.out, "");
      EXPECT_TRUE(run.err.contains(each.says)) << run.err.toStdString();
      EXPECT_EQ(run.err.count('\n'), run.err.count("quarlctl: "));
      EXPECT_FALSE(run.err.contains('\x1b'));
      EXPECT_EQ(MustCtl({S("export")}), before_);
    }
  }
}

TEST_F(QuarlctlImport, LooksForModulesOfNewTypesOnly) {
  const QByteArray gone = R"({"format":"quarl-configuration","version":1,"testTypes":[{"module":"gone.dll"}]})";
  const Ended allowed = Ctl({S("import"), S("-"), kAnyModules}, gone);
  EXPECT_EQ(allowed.code, 0);
  EXPECT_TRUE(allowed.err.contains("gone.dll is not in")) << allowed.err.toStdString();
  EXPECT_TRUE(MustCtl({S("import"), S("-")}, kGroup).contains("add group \"Web\""));
}

TEST_F(QuarlctlImport, RefusesFilesThatItCannotRead) {
  for (const char* name : {"missing.json", ".", "store.db/x"}) {
    const Ended run = Ctl({S("import"), S(name)});
    EXPECT_EQ(run.code, 1) << name;
    EXPECT_TRUE(run.err.contains(name)) << run.err.toStdString();
  }
}

TEST_F(QuarlctlImport, NamesTheFilesPathInErrors) {
  WriteFile(S("bad.json"), "{");
  EXPECT_TRUE(Ctl({S("import"), S("bad.json")}).err.startsWith("quarlctl: bad.json: Line 1, column 2: "));
}

TEST_F(QuarlctlImport, OfAMissingStoreMakesItOnlyWhenAllIsWell) {
  const QStringList fresh{S("--store"), Store(S("fresh.db")), S("import"), S("-")};
  const QStringList before = FilesBeside();
  EXPECT_TRUE(MustCtl(fresh + QStringList{S("--dry-run")}, kGroup).contains("add group \"Web\""));
  EXPECT_EQ(Ctl(fresh, NastyFile(1)).code, 1) << "its modules are missing";
  EXPECT_EQ(Ctl(fresh, "{").code, 1);
  EXPECT_EQ(FilesBeside(), before);
  MustCtl(fresh, kGroup);
  EXPECT_EQ(FilesBeside(), (QStringList{S("fresh.db")} + before));
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
      const Ended run = Ctl({S("import"), S("-"), S("--replace"), kAnyModules}, large);
      EXPECT_EQ(run.code, killed ? 128 + SIGXFSZ : 1) << ::testing::PrintToString(run);
      EXPECT_EQ(run.out, "");
      beforeStart_ = nullptr;
      EXPECT_EQ(MustCtl({S("export")}), before_);
    }
  }
  MustCtl({S("import"), S("-"), S("--replace")}, before_);
}

/// The file of the documentation, as a reader copies it.
TEST_F(QuarlctlImport, TakesTheDocumentedExample) {
  QFile page(S(QUARL_SOURCE_DIR "/docs/export-format.md"));
  ASSERT_TRUE(page.open(QIODevice::ReadOnly));
  const auto example = QRegularExpression(S("```json\n(.*?)```"), QRegularExpression::DotMatchesEverythingOption)
                           .match(QString::fromUtf8(page.readAll()));
  ASSERT_TRUE(example.hasMatch());
  const QByteArray lines = MustCtl({S("import"), S("-")}, example.captured(1).toUtf8());
  EXPECT_TRUE(lines.endsWith("Imported: 5 added, 1 changed, 0 removed.\n")) << lines.toStdString();
}

}  // namespace
}  // namespace quarl::test
