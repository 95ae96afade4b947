#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QTemporaryFile>
#include <csignal>

#include "modules/ModuleDriver.h"
#include "modules/TestServer.h"

namespace quarl::testing {
namespace {

constexpr int kPatient = 20000;  // a time-out that a loaded machine does not reach
constexpr int kHasty = 150;

struct Certificates {
  TestCertificate trusted{"mail.example.org", 10};
  TestCertificate expired{"old.example.org", -1};
  TestCertificate stranger{"mail.example.org", 10};
};

const Certificates& TheCertificates() {
  static const Certificates certificates;
  return certificates;
}

/// The two that are trusted stand in the file of roots, which the module reads when it uses TLS for the first time.
class TcpPortModuleTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    static QTemporaryFile roots;
    ASSERT_TRUE(roots.open());
    roots.write((TheCertificates().trusted.Pem() + TheCertificates().expired.Pem()).c_str());
    roots.flush();
    qputenv("SSL_CERT_FILE", roots.fileName().toUtf8());
  }
};

ModuleDriver& Module() {
  static ModuleDriver module("tests/tcpport");
  return module;
}

ModuleDriver::CheckAnswer Ask(std::uint16_t port, Json values, const std::string& address = "127.0.0.1") {
  values["port"] = port;
  if (!values.contains("timeOut")) values["timeOut"] = kPatient;
  return Module().Check({.address = address, .properties = ModuleDriver::Properties("tcpport", values)});
}

void ExpectAnswer(const ModuleDriver::CheckAnswer& answer, int state, const char* text) {
  EXPECT_EQ(answer.state, state) << answer.text;
  EXPECT_NE(answer.text.find(text), std::string::npos) << answer.text << "\nwanted: " << text;
  EXPECT_EQ(answer.performance.rfind("time=", 0), 0U) << answer.performance;
  EXPECT_GE(answer.duration.count(), 0);
}

TEST_F(TcpPortModuleTest, PortsAndAnswersAreJudged) {
  const std::string flood(2 << 20, 'x');
  const struct {
    const char* name;
    TestServer::Serve serve;
    Json values;
    int state;
    const char* text;
  } rows[] = {
      {"open", TestServer::Listens(), {}, QUARL_PASSED, "accepts connections"},
      {"send only", TestServer::Listens(), {{"send", "QUIT\\r\\n"}}, QUARL_PASSED, "accepts connections"},
      {"banner", TestServer::Says("SSH-2.0-x\r\n"), {{"expect", "SSH-2"}}, QUARL_PASSED, "as expected: SSH-2.0-x"},
      {"dialogue",
       TestServer::Answers("PING\r\n", "+PO\r\nNG"),
       {{"send", "PING\\r\\n"}, {"expect", "PO\\r\\nN"}},
       QUARL_PASSED,
       "as expected"},
      {"bytes",
       TestServer::Answers(std::string("\0\xff\\", 3), std::string("\1\0\2", 3)),
       {{"send", "\\x00\\xfF\\\\"}, {"expect", "\\x00\\x02"}},
       QUARL_PASSED,
       "as expected"},
      {"wrong answer",
       [](int at) { TestServer::Says("550 \x1b[2Jno\r\n")(at); },
       {{"expect", "220"}, {"timeOut", kHasty}},
       QUARL_FAILED,
       "otherwise than expected: 550 [2Jno"},
      {"silent",
       TestServer::Listens(),
       {{"expect", "220"}, {"timeOut", kHasty}},
       QUARL_FAILED,
       "does not answer within the time-out"},
      {"ends at once", [](int) {}, {{"expect", "220"}}, QUARL_FAILED, "ends the connection without an answer"},
      {"flood", TestServer::Says(flood), {{"expect", "y"}}, QUARL_FAILED, "answers too much"},
      {"plain where TLS is wanted",
       TestServer::Says("220 plain\r\n"),
       {{"tls", true}, {"verify", "none"}},
       QUARL_FAILED,
       "TLS failed"},
      {"silent where TLS is wanted",
       TestServer::Listens(),
       {{"tls", true}, {"timeOut", kHasty}},
       QUARL_FAILED,
       "within the time-out"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const TestServer server(row.serve);
    ExpectAnswer(Ask(server.Port(), row.values), row.state, row.text);
  }
}

TEST_F(TcpPortModuleTest, WithoutAnOpenPortThereIsAReason) {
  std::uint16_t closed = 0;
  {
    const TestServer server(TestServer::Listens());
    closed = server.Port();
  }
  ExpectAnswer(Ask(closed, {}), QUARL_FAILED, "Connection refused");
  ExpectAnswer(Ask(80, {}, "host.example"), QUARL_UNKNOWN, "is no IP address");
  const auto broken = Module().Check({.properties = "{"});
  EXPECT_EQ(broken.state, QUARL_UNKNOWN);
  EXPECT_EQ(broken.text.rfind("Settings: ", 0), 0U) << broken.text;
}

TEST_F(TcpPortModuleTest, AConnectionThatNobodyTakesTimesOut) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const name = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  ASSERT_EQ(bind(listener, name, size), 0);
  ASSERT_EQ(listen(listener, 0), 0);
  getsockname(listener, name, &size);
  int full[4];
  for (int& waiting : full) {
    waiting = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    std::ignore = connect(waiting, name, size);
  }
  ExpectAnswer(Ask(ntohs(address.sin_port), {{"timeOut", kHasty}}), QUARL_FAILED, "No connection within the time-out");
  for (const int waiting : full) close(waiting);
  close(listener);
}

TEST_F(TcpPortModuleTest, CertificatesAreJudgedAsTheUserWants) {
  std::signal(SIGPIPE, SIG_DFL);
  const auto& [trusted, expired, stranger] = TheCertificates();
  const struct {
    const char* name;
    const TestCertificate& certificate;
    const char* verify;
    const char* tlsName;
    int state;
    const char* text;
  } rows[] = {
      {"good", trusted, "full", "mail.example.org", QUARL_PASSED, "as expected: 220 hello"},
      {"other name", trusted, "full", "www.example.org", QUARL_FAILED, "refused: hostname mismatch"},
      {"the server's own name", trusted, "full", "", QUARL_FAILED, "refused: hostname mismatch"},
      {"address for a name", trusted, "full", "127.0.0.1", QUARL_FAILED, "refused: IP address mismatch"},
      {"any name", trusted, "chain", "www.example.org", QUARL_PASSED, "as expected"},
      {"expired", expired, "chain", "", QUARL_FAILED, "refused: certificate has expired"},
      {"not trusted", stranger, "chain", "", QUARL_FAILED, "refused: self-signed certificate"},
      {"not examined", stranger, "none", "", QUARL_PASSED, "as expected"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const TestServer server(row.certificate.Says("220 hello\r\n"));
    const Json values{{"tls", true}, {"verify", row.verify}, {"tlsName", row.tlsName}, {"expect", "220"}};
    ExpectAnswer(Ask(server.Port(), values), row.state, row.text);
  }
  const TestServer server(trusted.Says(""));
  ExpectAnswer(Ask(server.Port(), {{"tls", true}, {"verify", "none"}}), QUARL_PASSED, "encrypted");
}

TEST_F(TcpPortModuleTest, TheDialogTriesAndJudgesWhatIsOnTheScreen) {
  const TestServer server(TestServer::Says("220 hello\r\n"));
  const std::string stored = ModuleDriver::Properties("tcpport", {{"port", 1}, {"later", "kept"}});
  const auto edited = Module().SetProperties(stored, [&](ModuleDriver::OpenForm& form) {
    form.values["port"] = server.Port();
    form.values["timeOut"] = kPatient;
    for (const char* bad : {"\\q", "\\x4", "\\xzz", "a\\"}) {
      form.values["expect"] = bad;
      const auto judged = form.validate(form.values);
      EXPECT_EQ(judged.field, "expect") << bad;
      EXPECT_NE(judged.report, "");
      EXPECT_EQ(form.attempt(form.values).report.rfind("Expect: ", 0), 0U);
    }
    form.values["expect"] = "220";
    const auto tried = form.attempt(form.values);
    EXPECT_EQ(tried.result, 0);
    EXPECT_EQ(tried.report.rfind("Passed (", 0), 0U) << tried.report;
    EXPECT_NE(tried.report.find("220 hello"), std::string::npos) << tried.report;
    form.values["send"] = std::string(1000, 's');
    form.values["expect"] = std::string(1000, 'e');
    EXPECT_EQ(form.validate(form.values).result, 0);
    return int16_t{0};
  });
  ASSERT_EQ(edited.result, 0);
  const Json values = Json::parse(edited.properties)["values"];
  EXPECT_EQ(values["port"], server.Port());
  EXPECT_EQ(values["later"], "kept");
  const auto cancelled = Module().SetProperties(stored, [](auto&) { return int16_t{1}; });
  EXPECT_EQ(cancelled.result, 1);
  EXPECT_EQ(cancelled.properties, stored);
}

TEST_F(TcpPortModuleTest, SettingsThatDoNotFitAreRefusedInWords) {
  const std::string stored = ModuleDriver::Properties("tcpport", {{"later", std::string(2500, 'l')}});
  const auto edited = Module().SetProperties(stored, [](ModuleDriver::OpenForm& form) {
    form.values["send"] = std::string(1000, 's');
    form.values["expect"] = std::string(900, 'e');
    const auto judged = form.validate(form.values);
    EXPECT_EQ(judged.field, "send");
    EXPECT_NE(judged.report.find("at most 4096 can be stored"), std::string::npos) << judged.report;
    return int16_t{0};
  });
  EXPECT_LT(edited.result, 0);
  EXPECT_EQ(edited.properties, stored);
}

}  // namespace
}  // namespace quarl::testing
