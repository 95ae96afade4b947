#include "base/NodeKey.h"
#include "editors/EditorRig.h"
#include "editors/PropertyCommands.h"
#include "support/ScriptedCalls.h"

namespace quarl::editors {
namespace {

// Besides the rig's records the root group has alert 3.
class PropertyCommandsTest : public EditorRig {
 protected:
  PropertyCommandsTest() {
    EXPECT_EQ(sql.Alerts().AddGroupAlert(0, 1, QString()), 3);
    tree::TreeBuilder(sql, nodes, [](const QString& text) { ADD_FAILURE() << text.toStdString(); }).LoadTree();
    base = sql.Install().GetInstallPath();
  }
  void Store(const QString& key, const QString& text) {
    const qint32 id = NodeKey::IdOf(key);
    const QString raw = QString(text).replace(u'~', QChar(0));
    EXPECT_TRUE(NodeKey::KindOf(key) == NodeKind::Test ? sql.Tests().SetTestProperties(id, raw)
                                                       : sql.Alerts().SetAlertProperties(id, raw));
  }
  QString StoredText(const QString& key) {
    const qint32 id = NodeKey::IdOf(key);
    const auto text = NodeKey::KindOf(key) == NodeKind::Test ? sql.Tests().GetTestProperties(id)
                                                             : sql.Alerts().GetAlertProperties(id);
    return text.value_or(Q("gone")).replace(QChar(0), u'~');
  }
  void Run(const QString& command) {
    if (command == Q("mTestProperties")) properties.mTestProperties_Click();
    if (command == Q("mAlertProperties")) properties.mAlertProperties_Click();
    if (command == Q("mAlertTest")) properties.mAlertTest_Click();
    dialogs.Verify();
  }
  void Edit(const QString& key) {
    Click(key);
    Run(NodeKey::KindOf(key) == NodeKind::Test ? Q("mTestProperties") : Q("mAlertProperties"));
  }
  QStringList Taken() {
    QStringList lines = calls.calls;
    calls.calls.clear();
    return lines.replaceInStrings(base, Q("BASE")).replaceInStrings(Q("\r\n"), Q("<CRLF>"));
  }

  QString base;
  ::quarl::testing::ScriptedCalls calls;
  PropertyCommands properties{{&window, stores, tree, *this, folder.clock, {}}, calls};
};

// --- Properties ---

TEST_F(PropertyCommandsTest, PropertiesGoToTheModuleAndComeBack) {
  const struct {
    const char* stored;
    qint16 size;
    const char* passed;
    qint16 result;
    const char* returned;
    const char* kept;
  } rounds[] = {{"a=1", 6, "a=1~~~", 0, "abc~~~", "abc~~"},
                {"abc", 3, "abc", 0, "xyz", "xyz"},
                {"", 4, "~~~~", 0, "", ""},
                {"", 0, "", 0, "~", ""},
                {"ä€", 7, "ä€~~", 0, "ä€~~", "ä€~"},
                {"a~b~", 6, "a~b~~~", 0, "~~a", "~~a"},
                {"abc", 5, "abc~~", 1, "abcde", "abc"},
                {"abc", 5, "abc~~", -1, "", "abc"},
                {"old", 32767, nullptr, 0, "new~", "new"}};
  for (const QString& key : Words("_TEST_2 _ALERT_1 _ALERT_2")) {
    for (const auto& round : rounds) {
      SCOPED_TRACE(key.toStdString() + " \"" + round.stored + '"');
      Store(key, Q(round.stored));
      calls.size = round.size;
      calls.result = round.result;
      calls.returned = Q(round.returned);
      Edit(key);
      const QString passed = round.passed ? Q(round.passed) : Q("old") + QString(32764, u'~');
      ASSERT_EQ(calls.calls.size(), 2);
      EXPECT_EQ(Taken().at(1).section(u'|', 5), passed);
      EXPECT_EQ(StoredText(key), Q(round.kept));
    }
  }
}

TEST_F(PropertyCommandsTest, EachCallHasItsPathAndTheOwner) {
  calls.size = 1;
  calls.result = 1;
  const QStringList test = {Q("GetBufferSize|test|BASE\\plugins\\Tests\\Kind.dll"),
                            Q("SetProperties|test|BASE\\plugins\\tests\\Kind.dll|")};
  const QStringList alert = {Q("GetBufferSize|alert|BASE\\plugins\\Alerts\\Kind.dll"),
                             Q("SetProperties|alert|BASE\\plugins\\Alerts\\Kind.dll|")};
  for (const auto& [key, lines, owner] : {std::tuple{"_TEST_1", test, "alpha|10.0.0.1|~"},
                                          {"_ALERT_1", alert, "alpha|10.0.0.1|~"},
                                          {"_ALERT_2", alert, "Moscow||~"},
                                          {"_ALERT_3", alert, "SERVERS||~"}}) {
    Edit(Q(key));
    EXPECT_EQ(Taken(), (QStringList{lines[0], lines[1] + Q(owner)})) << key;
  }
}

TEST_F(PropertyCommandsTest, PropertiesThatDoNotFitAreAnErrorAndStay) {
  for (const char* stored : {"abcd", "äö", ""}) {
    calls.size = *stored != 0 ? 3 : -1;
    for (const auto& [key, command, tag] : {std::tuple{"_TEST_1", "mTestProperties", "(Main:mTestproperties_Click)"},
                                            {"_ALERT_1", "mAlertProperties", "(Main:mAlertProperties_Click)"},
                                            {"_ALERT_1", "mAlertTest", "(Main:mAlertTest_Click)"}}) {
      Store(Q(key), Q(stored));
      Press(key);
      dialogs.ExpectError(Q(tag));
      Run(Q(command));
      EXPECT_EQ(calls.calls.size(), 1) << "GetBufferSize only";
      calls.calls.clear();
      EXPECT_EQ(StoredText(Q(key)), Q(stored));
    }
  }
}

// --- Trial of an alert ---

TEST_F(PropertyCommandsTest, AnAlertIsTriedAndTheOutcomeShown) {
  calls.size = 3;
  const char* const delivered = "Alert test successfull: ";
  const struct {
    const char* key;
    const char* owner;
    qint16 result;
    QString returned;
    const char* says;
  } cases[] = {{"_ALERT_1", "alpha|10.0.0.1", 0, Q("not shown"), delivered},
               {"_ALERT_2", "Moscow|", 0, QString(), delivered},
               {"_ALERT_3", "SERVERS|", 1, Q("no such host   "), "Alert test failed:  no such host   "},
               {"_ALERT_1", "alpha|10.0.0.1", -7, Q("refused~") + QString(247, u' '), "Alert test failed:  refused"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key);
    Store(Q(c.key), Q("p"));
    calls.result = c.result;
    calls.returned = c.returned;
    Press(c.key);
    const bool good = c.result == 0;
    dialogs.ExpectBox({good ? Q("information") : Q("warning"), good ? Q("Info") : Q("Warning"), Q(c.says)});
    Run(Q("mAlertTest"));
    const QString name = Q(c.owner).section(u'|', 0, 0);
    EXPECT_EQ(Taken(),
              (QStringList{Q("GetBufferSize|alert|BASE\\plugins\\Alerts\\Kind.dll"),
                           Q("Alert|alert|BASE\\plugins\\Alerts\\Kind.dll|") + Q(c.owner) +
                               Q("|Alert!|Quarl, this is a test.<CRLF>The ") + name +
                               Q(" server in not down. It's only a test and it works.|p~~|") + QString(255, u' ')}));
    EXPECT_EQ(StoredText(Q(c.key)), Q("p"));
  }
}

// --- What goes wrong ---

struct Fault {
  const char* command;
  const char* key;
  const char* tag;
  const char* reads;  ///< store operations in their order, blanks between them
  const char* write;
  const char* call;  ///< of the module, behind GetBufferSize
};

const Fault kFaults[] = {
    {"mTestProperties", "_TEST_1", "(Main:mTestproperties_Click)",
     "TestStore.GetTestProperties TestStore.GetTestModule ServerStore.GetServer InstallConfig.GetInstallPath",
     "TestStore.SetTestProperties", "SetProperties"},
    {"mAlertProperties", "_ALERT_2", "(Main:mAlertProperties_Click)",
     "AlertStore.GetAlertProperties AlertStore.GetAlertModule GroupStore.GetGroup InstallConfig.GetInstallPath",
     "AlertStore.SetAlertProperties", "SetProperties"},
    {"mAlertTest", "_ALERT_1", "(Main:mAlertTest_Click)",
     "AlertStore.GetAlertProperties AlertStore.GetAlertModule ServerStore.GetServer InstallConfig.GetInstallPath", "",
     "Alert"},
};

TEST_F(PropertyCommandsTest, ErrorsAreShownWithTheTagAndNothingIsStored) {
  calls.size = 9;
  calls.returned = Q("new");
  const store::Configuration before = Stored();
  for (const Fault& fault : kFaults) {
    Press(fault.key);
    const auto expect = [&](const char* description, const std::string& where) {
      SCOPED_TRACE(where);
      dialogs.ExpectBox(Plain(Q(description) + Q(fault.tag)));
      Run(Q(fault.command));
      EXPECT_TRUE(Stored() == before);
    };
    const QString operations = Q(fault.reads) + u' ' + Q(fault.write);
    for (const QString& operation : operations.split(u' ', Qt::SkipEmptyParts)) {
      stores.ThrowFrom(operation);
      expect("store fault", operation.toStdString());
      stores.Heal();
    }
    for (const char* call : {"GetBufferSize", fault.call}) {
      calls.failing = Q(call);
      expect("module fault", call);
    }
    calls.failing.clear();
  }
}

TEST_F(PropertyCommandsTest, ARecordThatIsGoneEndsSilently) {
  calls.size = 9;
  for (const Fault& fault : kFaults) {
    Press(fault.key);
    for (const QString& read : Q(fault.reads).split(u' ').mid(0, 3)) {
      stores.RefuseFrom(read);
      Run(Q(fault.command));
      EXPECT_EQ(Taken(), QStringList()) << fault.command << ' ' << read.toStdString();
      stores.Heal();
    }
    if (*fault.write == 0) continue;
    stores.RefuseFrom(Q(fault.write));
    Run(Q(fault.command));
    EXPECT_EQ(Taken().size(), 2);
    stores.Heal();
  }
  EXPECT_TRUE(dialogs.Boxes().empty());
}

TEST_F(PropertyCommandsTest, AnotherKindOfKeyIsAnError) {
  for (const Fault& fault : kFaults) {
    for (const char* key : {"", "_SERVER_3", "_TEST_x", "_ALERT_"}) {
      selected = Q(key);
      dialogs.ExpectError(Q(fault.tag));
      Run(Q(fault.command));
    }
  }
  EXPECT_EQ(calls.calls, QStringList());
}

}  // namespace
}  // namespace quarl::editors
