#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <array>
#include <mutex>

#include "modules/ModuleDriver.h"
#include "modules/Peer.h"

namespace quarl::testing {
namespace {

/// A socket of the file system in place of the log daemon's.
class LogSocket {
 public:
  LogSocket(const QString& path, int type) : number_(::socket(AF_UNIX, type, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.toStdString().copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(::bind(number_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const timeval patience{10, 0};
    ::setsockopt(number_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    EXPECT_TRUE(type == SOCK_DGRAM || ::listen(number_, 5) == 0);
  }
  ~LogSocket() { ::close(number_); }
  std::string Datagram() const { return Receive(number_); }
  std::string Connection() const {
    const int connection = ::accept(number_, nullptr, nullptr);
    const std::string text = Receive(connection);
    ::close(connection);
    return text;
  }

 private:
  static std::string Receive(int from) {
    std::array<char, 65536> bytes{};
    const ssize_t count = ::recv(from, bytes.data(), bytes.size(), 0);
    EXPECT_GT(count, 0) << "nothing was received";
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }
  int number_;
};

class SyslogModuleTest : public ::testing::Test {
 protected:
  std::string Properties(const Json& more = Json::object()) const {
    Json values{{"socket", path_.toStdString()}};
    values.update(more);
    return ModuleDriver::Properties("syslog", values);
  }
  /// What stands behind "<priority>Jan 31 23:59:59 ".
  static std::string BehindTime(const std::string& line) {
    const std::size_t at = line.find('>');
    return line.size() < at + 17 ? line : line.substr(at + 17);
  }
  QTemporaryDir folder_;
  QString path_ = folder_.filePath(S("log"));
  ModuleDriver module_{"alerts/syslog"};
};

TEST_F(SyslogModuleTest, WritesLinesWithFacilityAndSeverity) {
  const LogSocket log(path_, SOCK_DGRAM);
  ASSERT_EQ(module_.Alert(ProblemEvent(), Properties()).text, "");
  std::string line = log.Datagram();
  EXPECT_EQ(line.substr(0, 4), "<27>");
  EXPECT_EQ(BehindTime(line), "quarl: problem: Düsseldorf: Port 443 failed");
  QuarlEvent event = ProblemEvent();
  event.kind = QUARL_EVENT_RECOVERY;
  event.resultText = "a\n<0>b\x1b[2J";
  const Json own{{"facility", "local7"}, {"recovery", "debug"}, {"tag", "my-tag.1"}, {"text", "{text}"}};
  ASSERT_EQ(module_.Alert(event, Properties(own)).text, "");
  line = log.Datagram();
  EXPECT_EQ(line.substr(0, 5), "<191>");
  EXPECT_EQ(BehindTime(line), "my-tag.1: a <0>b [2J");
  const std::string longText(9000, 'x');
  event.resultText = longText.c_str();
  ASSERT_EQ(module_.Alert(event, Properties(own)).text, "");
  line = log.Datagram();
  EXPECT_LT(line.size(), 2100U);
  EXPECT_TRUE(line.ends_with("x\xE2\x80\xA6"));
}

TEST_F(SyslogModuleTest, AStreamSocketWillDo) {
  const LogSocket log(path_, SOCK_STREAM);
  ASSERT_EQ(module_.Alert(ProblemEvent(), Properties()).text, "");
  const std::string line = log.Connection();
  EXPECT_EQ(line.back(), '\0');
  EXPECT_EQ(BehindTime(line.substr(0, line.size() - 1)), "quarl: problem: Düsseldorf: Port 443 failed");
}

TEST_F(SyslogModuleTest, NoLogIsAFailure) {
  const auto answer = module_.Alert(ProblemEvent(), Properties());
  EXPECT_EQ(answer.result, 1);
  EXPECT_EQ(answer.text, "The log at " + path_.toStdString() + " cannot be written: No such file or directory.");
  EXPECT_TRUE(Has(module_.Alert(ProblemEvent(), Properties({{"tag", "a b"}})).text, "A tag has letters"));
}

/// A session bus of the test's own.
class Bus {
 public:
  Bus() {
    daemon_.start(S("dbus-daemon"), {S("--session"), S("--nofork"), S("--print-address")});
    while (!daemon_.canReadLine() && daemon_.waitForReadyRead(10000)) continue;
    address_ = daemon_.readLine().trimmed().toStdString();
    EXPECT_FALSE(address_.empty()) << daemon_.readAllStandardError().toStdString();
  }
  ~Bus() {
    daemon_.terminate();  // it takes its socket away
    daemon_.waitForFinished();
  }
  const std::string& Address() const { return address_; }

 private:
  QProcess daemon_;
  std::string address_;
};

struct Note {
  std::string application, icon, title, body;
  int urgency, milliseconds;
};

/// The notification service of a desktop, in a thread.
class NoteService final : public QDBusVirtualObject {
 public:
  NoteService(const std::string& address, bool markup, bool refuses) : markup_(markup), refuses_(refuses) {
    moveToThread(&thread_);
    thread_.start();
    const auto serve = [this, address] {
      QDBusConnection bus = QDBusConnection::connectToBus(QString::fromStdString(address), S("notes"));
      return bus.registerVirtualObject(S("/org/freedesktop/Notifications"), this) &&
             bus.registerService(S("org.freedesktop.Notifications"));
    };
    bool up = false;
    QMetaObject::invokeMethod(this, serve, Qt::BlockingQueuedConnection, &up);
    EXPECT_TRUE(up);
  }
  ~NoteService() override {
    const auto leave = [this, home = QThread::currentThread()] {
      QDBusConnection::disconnectFromBus(S("notes"));
      moveToThread(home);
    };
    QMetaObject::invokeMethod(this, leave, Qt::BlockingQueuedConnection);
    thread_.quit();
    thread_.wait();
  }
  /// Each is there before its caller has the answer.
  std::vector<Note> Notes() const {
    const std::lock_guard lock(mutex_);
    return notes_;
  }
  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
    if (call.member() == S("GetCapabilities"))
      return bus.send(call.createReply(QStringList{S("body"), markup_ ? S("body-markup") : S("persistence")}));
    if (refuses_) return bus.send(call.createErrorReply(S("org.example.Full"), S("Too many notes")));
    EXPECT_EQ(call.signature(), S("susssasa{sv}i"));
    const QVariantList values = call.arguments();
    const auto text = [&](int at) { return values.at(at).toString().toStdString(); };
    const std::lock_guard lock(mutex_);
    notes_.push_back({text(0), text(2), text(3), text(4),
                      qdbus_cast<QVariantMap>(values.at(6)).value(S("urgency"), -1).toInt(), values.at(7).toInt()});
    return bus.send(call.createReply(1U));
  }

 private:
  const bool markup_, refuses_;
  mutable std::mutex mutex_;
  std::vector<Note> notes_;
  QThread thread_;
};

class DesktopModuleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (QStandardPaths::findExecutable(S("dbus-daemon")).isEmpty()) GTEST_SKIP() << "dbus-daemon is not installed";
  }
  static std::string Properties(const std::string& bus, const Json& more = Json::object()) {
    Json values{{"bus", bus}};
    values.update(more);
    return ModuleDriver::Properties("desktop", values);
  }
  ModuleDriver module_{"alerts/desktop"};
};

TEST_F(DesktopModuleTest, ShowsWhatHappened) {
  for (const bool markup : {false, true}) {
    const Bus bus;
    NoteService service(bus.Address(), markup, false);
    QuarlEvent event = ProblemEvent();
    event.message = "a <b>bold</b> & line\r\nx\r\n";
    EXPECT_EQ(module_.Alert(event, Properties(bus.Address())).text, "");
    event.kind = QUARL_EVENT_RECOVERY;
    EXPECT_EQ(
        module_.Alert(event, Properties(bus.Address(), {{"title", "{server}"}, {"body", "{state}"}, {"time", 30}}))
            .text,
        "");
    const std::vector<Note> notes = service.Notes();
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_EQ(notes[0].application, "Quarl");
    EXPECT_EQ(notes[0].title, "Düsseldorf: Port 443 failed");
    EXPECT_EQ(notes[0].body, markup ? "a &lt;b&gt;bold&lt;/b&gt; &amp; line\nx" : "a <b>bold</b> & line\nx");
    EXPECT_EQ(notes[0].icon, "dialog-error");
    EXPECT_EQ(notes[0].urgency, 2);
    EXPECT_EQ(notes[0].milliseconds, 0);
    EXPECT_EQ(notes[1].title, "www1");
    EXPECT_EQ(notes[1].body, "recovery");
    EXPECT_EQ(notes[1].urgency, 1);
    EXPECT_EQ(notes[1].milliseconds, 30000);
  }
}

TEST_F(DesktopModuleTest, SaysWhyThereIsNoNote) {
  const Bus bus;
  EXPECT_TRUE(Has(module_.Alert(ProblemEvent(), Properties(bus.Address())).text, "The desktop shows no notes: "));
  const NoteService service(bus.Address(), false, true);
  EXPECT_EQ(module_.Alert(ProblemEvent(), Properties(bus.Address())).text,
            "The desktop shows no notes: Too many notes.");
  for (const char* address : {"unix:path=/nonexistent/bus", "nonsense"}) {
    const auto answer = module_.Alert(ProblemEvent(), Properties(address));
    EXPECT_EQ(answer.result, 1);
    EXPECT_TRUE(Has(answer.text, "No desktop session can be reached: ")) << answer.text;
  }
}

TEST_F(DesktopModuleTest, TheUsersOwnBusIsTheOneWithoutAnAddress) {
  const Bus bus;
  NoteService service(bus.Address(), false, false);
  const QByteArray before = qgetenv("DBUS_SESSION_BUS_ADDRESS"), runtime = qgetenv("XDG_RUNTIME_DIR");
  qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus.Address()));
  EXPECT_EQ(module_.Alert(ProblemEvent(), Properties("")).text, "");
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  qputenv("XDG_RUNTIME_DIR", "/nonexistent");
  EXPECT_TRUE(Has(module_.Alert(ProblemEvent(), Properties("")).text, "No desktop session can be reached: "));
  before.isEmpty() ? qunsetenv("DBUS_SESSION_BUS_ADDRESS") : qputenv("DBUS_SESSION_BUS_ADDRESS", before);
  runtime.isEmpty() ? qunsetenv("XDG_RUNTIME_DIR") : qputenv("XDG_RUNTIME_DIR", runtime);
  EXPECT_EQ(service.Notes().size(), 1U);
}

}  // namespace
}  // namespace quarl::testing
