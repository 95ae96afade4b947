#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "modules/CheckExpectations.h"
#include "modules/Peer.h"

namespace quarl::testing {
namespace {

class EmailModuleTest : public ::testing::Test {
 protected:
  /// Values for a server without encryption, with others on top.
  static std::string Properties(int port, const Json& more = Json::object(), const std::string& password = {}) {
    Json values{{"host", "127.0.0.1"},       {"port", port},
                {"security", "none"},        {"from", "Quarl <quarl@example.org>"},
                {"to", {"ops@example.net"}}, {"limit", 10}};
    if (more.is_object()) values.update(more);
    return ModuleDriver::Properties("email", values, {{"password", password}});
  }
  static nlohmann::json Delivered(const QuarlEvent& event, const Json& more = Json::object()) {
    Peer sink(S("smtp_sink.py"), {});
    const auto answer = ModuleDriver("alerts/email").Alert(event, Properties(sink.Port(), more));
    EXPECT_EQ(answer.result, 0) << answer.text;
    return sink.Next();
  }
  ModuleDriver module_{"alerts/email"};
};

TEST_F(EmailModuleTest, TheMailSaysWhatTheEventSays) {
  const auto mail = Delivered(ProblemEvent(), {{"to", {"Operations <ops@example.net>", "b@example.net"}},
                                               {"cc", {"c@example.net", "b@example.net"}}});
  EXPECT_EQ(mail["from"], "quarl@example.org");
  EXPECT_EQ(mail["to"], nlohmann::json({"ops@example.net", "b@example.net", "c@example.net"}));
  EXPECT_EQ(mail["headers"]["From"], "Quarl <quarl@example.org>");
  EXPECT_EQ(mail["people"], nlohmann::json::parse(R"([["Operations","ops@example.net"],["","b@example.net"]])"));
  EXPECT_EQ(mail["headers"]["Cc"], "c@example.net, b@example.net");
  EXPECT_EQ(mail["headers"]["Subject"], "[Quarl] Düsseldorf: Port 443 failed");
  EXPECT_EQ(mail["headers"]["Auto-Submitted"], "auto-generated");
  EXPECT_EQ(mail["headers"]["Message-ID"], "<message-8@example.org>");
  EXPECT_TRUE(Has(mail["headers"]["Date"], " 2026 ") || Has(mail["headers"]["Date"], " 2025 "))
      << mail["headers"]["Date"];
  const std::string body = mail["body"];
  EXPECT_EQ(body.substr(0, body.find("\n\n")), "The test \"Port 443\" failed.\n.\n..two dots\nFrom here: 100 %");
  for (const char* line : {"\nServer: www1\n", "\nAddress: 192.0.2.10\n", "\nGroup: Web\n", "\nState: problem\n",
                           "\nResult: No answer within 3 s\n"}) {
    EXPECT_TRUE(Has(body, line)) << body;
  }
  EXPECT_EQ(mail["defects"], nlohmann::json::array());
}

TEST_F(EmailModuleTest, ProblemAndRecoveryStandInOneThread) {
  Peer sink(S("smtp_sink.py"), {});
  const std::string properties = Properties(sink.Port());
  QuarlEvent recovery = ProblemEvent();
  recovery.kind = QUARL_EVENT_RECOVERY;
  recovery.messageId = "message-9";
  QuarlEvent test = ProblemEvent();
  test.kind = QUARL_EVENT_TEST;
  std::vector<nlohmann::json> headers;
  for (const QuarlEvent& event : {ProblemEvent(), recovery, test}) {
    ASSERT_EQ(module_.Alert(event, properties).result, 0);
    headers.push_back(sink.Next()["headers"]);
  }
  EXPECT_EQ(headers[0]["References"], headers[1]["References"]);
  EXPECT_EQ(headers[0]["In-Reply-To"], headers[1]["References"]);
  EXPECT_TRUE(Has(headers[1]["References"], "problem-7"));
  EXPECT_NE(headers[0]["Message-ID"], headers[1]["Message-ID"]);
  EXPECT_FALSE(headers[2].contains("References")) << "a test belongs to no problem";
}

TEST_F(EmailModuleTest, NoTextMakesAHeaderOfItsOwn) {
  QuarlEvent event = ProblemEvent();
  event.subject = "failed\r\nBcc: x@example.com\r\n\r\nbody";
  event.serverName = "www\nX-Evil: 1";
  event.messageId = "id>\r\nX-Evil: 2\r\n <x@y";
  event.problemId = "p\"\\ \xc3\xa4@";
  const auto mail = Delivered(event, {{"subject", "{subject} {server}"}, {"from", "\"A, \\\"B\" <quarl@example.org>"}});
  EXPECT_EQ(mail["names"], nlohmann::json({"Date", "From", "To", "Subject", "Message-ID", "In-Reply-To", "References",
                                           "Auto-Submitted", "X-Auto-Response-Suppress", "X-Quarl-State",
                                           "MIME-Version", "Content-Type", "Content-Transfer-Encoding"}));
  EXPECT_EQ(mail["headers"]["Subject"], "failed Bcc: x@example.com body www X-Evil: 1");
  EXPECT_EQ(mail["to"], nlohmann::json({"ops@example.net"}));
  EXPECT_EQ(mail["defects"], nlohmann::json::array());
}

TEST_F(EmailModuleTest, LongAndForeignTextsArriveWholeInShortLines) {
  std::string word, foreign, body;
  for (int i = 0; i < 40; ++i) foreign += "\xe6\xbc\xa2\xc3\xa4 \xf0\x9f\x98\x80";
  for (int i = 0; i < 300; ++i) body += "=.\t\xc3\xa9 ";
  const std::pair<const char*, std::string> cases[] = {
      {"Foreign", foreign},
      {"OneWord", std::string(500, 'x')},
      {"ManyWords", "a" + std::string(60, 'b') + " c" + std::string(70, 'd') + " e"},
      {"LooksEncoded", "=?UTF-8?Q?no?= really"},
      {"Controls", "a\x1b[31m b"}};
  for (const auto& [name, subject] : cases) {
    SCOPED_TRACE(name);
    QuarlEvent event = ProblemEvent();
    event.subject = subject.c_str();
    event.message = body.c_str();
    const auto mail = Delivered(
        event,
        {{"subject", "{subject}"}, {"body", "{message}|"}, {"to", {foreign.substr(0, 80) + " <ops@example.net>"}}});
    std::string expected = subject;
    if (expected[1] == '\x1b') expected = "a [31m b";
    EXPECT_EQ(mail["headers"]["Subject"], expected);
    EXPECT_EQ(mail["body"], body + "|\n");
    EXPECT_EQ(mail["defects"], nlohmann::json::array());
    std::istringstream lines(mail["raw"].get<std::string>());
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 79U) << line;
      EXPECT_TRUE(std::all_of(line.begin(), line.end(), [](char c) { return c > 0; })) << line;
    }
  }
}

TEST_F(EmailModuleTest, EmptyFactsTakeTheirLinesAlong) {
  QuarlEvent event = ProblemEvent();
  event.testName = event.groupName = "";
  const auto mail = Delivered(event, {{"body", "T {test}{group}\nS {server}{test}\nplain {x\n{since}"}});
  const std::string body = mail["body"];
  EXPECT_EQ(body.substr(0, 18), "S www1\nplain {x\n20");
}

TEST_F(EmailModuleTest, RefusalsAreToldInTheServersWords) {
  const struct {
    const char* sink;  ///< arguments, "|" between them
    const char* says;
    Json values;
    int delivered = 0;  ///< to the others
  } cases[] = {{"refuse|b@example.net|550 5.1.1 No such user",
                "Delivered, but refused for b@example.net (550 5.1.1 No such user).",
                {{"to", {"a@example.net", "b@example.net", "c@example.net"}}},
                1},
               {"refuse|ops@example.net|451 Later", "Refused for ops@example.net (451 Later).", {}},
               {"reject|554 5.7.1 Looks like spam", "refused the mail: 554 5.7.1 Looks like spam.", {}},
               {"login|u|right", "does not accept the login: 535 ", {{"login", "u"}}},
               {"login|u|right", "refused the mail: 530 ", {}},
               {"", "offers no STARTTLS", {{"security", "starttls"}}},
               {"silent", "did not take the mail in time", {{"limit", 1}}}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.says);
    Peer sink(S("smtp_sink.py"), S(each.sink).split(u'|', Qt::SkipEmptyParts));
    const char* const password = each.values.contains("login") ? "wrong" : "";
    const auto answer = module_.Alert(ProblemEvent(), Properties(sink.Port(), each.values, password));
    EXPECT_NE(answer.result, 0);
    EXPECT_TRUE(Has(answer.text, each.says)) << answer.text;
    EXPECT_EQ(sink.CountRest(), each.delivered);
  }
}

TEST_F(EmailModuleTest, AnotherAttemptGoesToThoseOnlyWhoHaveNotHadTheMail) {
  Peer sink(S("smtp_sink.py"), {S("refuse"), S("b@example.net"), S("450 Busy")});
  const std::string properties = Properties(sink.Port(), {{"to", {"a@example.net", "b@example.net"}}});
  EXPECT_TRUE(
      Has(module_.Alert(ProblemEvent(), properties).text, "Delivered, but refused for b@example.net (450 Busy)"));
  EXPECT_EQ(sink.Next()["to"], nlohmann::json({"a@example.net"}));
  EXPECT_EQ(module_.Alert(ProblemEvent(), properties).text, "Refused for b@example.net (450 Busy).");
  QuarlEvent next = ProblemEvent();
  next.messageId = "message-10";
  EXPECT_NE(module_.Alert(next, properties).result, 0);
  EXPECT_EQ(sink.Next()["headers"]["Message-ID"], "<message-10@example.org>");
  EXPECT_EQ(sink.CountRest(), 0);
}

TEST_F(EmailModuleTest, EncryptsAndLogsIn) {
  QTemporaryDir folder;
  const QString key = folder.filePath(S("key.pem")), certificate = folder.filePath(S("certificate.pem"));
  QProcess openssl;
  openssl.start(S("openssl"), {S("req"), S("-x509"), S("-newkey"), S("ec"), S("-pkeyopt"), S("ec_paramgen_curve:P-256"),
                               S("-nodes"), S("-keyout"), key, S("-out"), certificate, S("-subj"), S("/CN=localhost"),
                               S("-addext"), S("subjectAltName=DNS:localhost")});
  ASSERT_TRUE(openssl.waitForFinished() && openssl.exitCode() == 0) << openssl.readAllStandardError().toStdString();
  for (const char* way : {"starttls", "tls"}) {
    SCOPED_TRACE(way);
    Peer sink(S("smtp_sink.py"), {S(way), certificate, key, S("login"), S("quarl"), S("päss \"word")});
    const Json encrypted{{"security", way}, {"login", "quarl"}, {"host", "localhost"}};
    const auto send = [&](const Json& more) {
      Json values = encrypted;
      if (more.is_object()) values.update(more);
      return module_.Alert(ProblemEvent(), Properties(sink.Port(), values, "päss \"word"));
    };
    EXPECT_TRUE(Has(send({}).text, "certificate")) << send({}).text;
    EXPECT_TRUE(Has(send({{"host", "127.0.0.1"}, {"authorities", certificate.toStdString()}}).text, "cannot be used"));
    EXPECT_EQ(send({{"authorities", certificate.toStdString()}}).text, "");
    const auto mail = sink.Next();
    EXPECT_TRUE(mail["tls"]);
    EXPECT_TRUE(mail["login"]);
    QuarlEvent other = ProblemEvent();
    other.messageId = "unchecked";
    EXPECT_EQ(
        module_
            .Alert(other, Properties(sink.Port(), {{"security", way}, {"login", "quarl"}, {"checkCertificate", false}},
                                     "päss \"word"))
            .text,
        "");
    EXPECT_EQ(sink.CountRest(), 1);
  }
}

TEST_F(EmailModuleTest, TheFormRefusesWhatCannotBeSent) {
  ExpectRefusals(module_, Properties(25),
                 {{{{"host", "a/b"}}, "host", "name or an address"},
                  {{{"port", 0}}, "port", ""},
                  {{{"from", "nobody"}}, "from", "no @"},
                  {{{"from", "a b@example.org"}}, "from", "before the @"},
                  {{{"from", "a@b_c.org>"}}, "from", "behind the @"},
                  {{{"to", Json::array()}}, "to", ""},
                  {{{"to", {" "}}}, "to", ""},
                  {{{"to", {"a@example.org", "b@ex ample.org"}}}, "to", "behind the @"},
                  {{{"cc", {"x@m\xc3\xbcller.de"}}}, "cc", "xn--"},
                  {{{"to", {"a@example.org\r\nRCPT TO:<b@example.org>"}}}, "to", ""},
                  {{{"subject", "{servr}"}}, "subject", "{servr} is not one of {subject}, {message}"},
                  {{{"body", "{nothing}"}}, "body", "{nothing} is not one of"},
                  {{{"password", "p"}}, "login", "needs a login"},
                  {Json::object(), "", ""}});
}

TEST_F(EmailModuleTest, SendATestDeliversWithTheValuesOnTheScreen) {
  Peer sink(S("smtp_sink.py"), {});
  const auto edited = module_.SetProperties("", [&](ModuleDriver::OpenForm& form) -> int16_t {
    form.values.update(Json::parse(Properties(sink.Port()))["values"]);
    EXPECT_TRUE(Has(form.form.dump(), "Send a test"));
    const auto answer = form.attempt(form.values);
    EXPECT_EQ(answer.result, 0) << answer.report;
    return 0;
  });
  EXPECT_EQ(sink.Next()["headers"]["X-Quarl-State"], "test");
  EXPECT_EQ(edited.result, 0);
  EXPECT_EQ(module_.TestAlert("www", "Alert!", "Quarl, this is a test.\r\n", edited.properties).result, 0);
  EXPECT_EQ(sink.Next()["headers"]["Subject"], "[Quarl] Alert!");
}

}  // namespace
}  // namespace quarl::testing
