#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <QFile>
#include <array>

#include "plugins/contract/CFileVersionInfo.h"
#include "plugins/contract/HostedCalls.h"
#include "plugins/contract/ModuleFile.h"
#include "support/WebServer.h"

// The example module, built outside this tree against the installed SDK, and called in the installation.

namespace quarl::plugins {
namespace {

const QString kFolder = QStringLiteral(QUARL_INSTALLED_FOLDER);
const QString kModule = kFolder + QStringLiteral("/plugins/tests/example.dll");

class InstalledSdkTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    const QString forms = kFolder + QStringLiteral("/quarl-forms.so");
    for (const QString& file : {kModule, forms}) QFile::remove(file);
    ASSERT_TRUE(QFile::copy(QStringLiteral(QUARL_BUILT_EXAMPLE), kModule));
    ASSERT_TRUE(QFile::copy(QStringLiteral(QUARL_PROBES_DIR "/probe_forms.dll"), forms));
  }

  HostReply Check(const std::string& address, const std::string& properties) {
    HostProcess worker(kFolder + QStringLiteral("/quarl-modulehost"),
                       {QStringLiteral("--worker"), QStringLiteral("1")});
    const std::string frame = FrameOf(
        CheckRequest(1, kModule.toStdString(), {"server", address, properties, std::chrono::milliseconds(5000)}));
    EXPECT_EQ(send(worker.Channel(), frame.data(), frame.size(), 0), static_cast<ssize_t>(frame.size()));
    FrameBuffer frames;
    pollfd wanted{worker.Channel(), POLLIN, 0};
    while (poll(&wanted, 1, 20000) > 0) {
      std::array<char, 4096> bytes;
      const ssize_t size = recv(worker.Channel(), bytes.data(), bytes.size(), 0);
      if (size <= 0) break;
      frames.Add({bytes.data(), static_cast<std::size_t>(size)});
      if (const auto content = frames.Next()) return ReadReply(*content).value_or(HostReply{});
    }
    ADD_FAILURE() << "The worker did not answer";
    return {};
  }

  PlainWait wait_;
  HostedCalls calls_{InstallPaths(kFolder), wait_};
};

TEST_F(InstalledSdkTest, TheModuleIsWholeAndSaysWhatItIs) {
  EXPECT_EQ(InspectModule(kModule).toStdString(), "");
  CFileVersionInfo info;
  info.SetFullPathName(kModule);
  EXPECT_EQ(info.ProductName(), QStringLiteral("Example"));
  EXPECT_EQ(info.CompanyName(), QStringLiteral("Example authors"));
}

TEST_F(InstalledSdkTest, ItsDialogGivesPropertiesThatFitItsBuffer) {
  QString path = kFolder + QStringLiteral("\\plugins\\Tests\\example.dll");
  const qint16 size = calls_.GetBufferSize(ModuleKind::Test, path);
  EXPECT_EQ(size, 64);
  qputenv("PROBE_VALUES", "{\"port\":8443}");
  QString name = QStringLiteral("server");
  QString address = QStringLiteral("127.0.0.1");
  QString properties = QStringLiteral("{\"port\":65535,\"more\":1}");
  properties += QString(size - properties.size(), QChar(u'\0'));
  EXPECT_EQ(calls_.SetProperties(ModuleKind::Test, path, name, address, properties), 0);
  const QString text = QStringLiteral("{\"port\":8443}");
  EXPECT_EQ(properties, text + QString(size - text.size(), QChar(u'\0')));
  qunsetenv("PROBE_VALUES");
}

TEST_F(InstalledSdkTest, ItChecksARealPort) {
  auto server = std::make_unique<testing::WebServer>([](const std::string&, testing::WebServer::Peer&) {});
  const std::string port = "{\"port\":" + std::to_string(server->Port()) + "}";
  const HostReply passed = Check("127.0.0.1", port);
  EXPECT_EQ(passed.result, 1);
  EXPECT_EQ(passed.texts.at(1).substr(0, 5), "time=");
  EXPECT_GT(passed.numbers.at(0), 0);
  server.reset();
  const HostReply failed = Check("127.0.0.1", port);
  EXPECT_EQ(failed.result, 3);
  EXPECT_NE(failed.texts.at(0).find("refused"), std::string::npos);
  for (const char* properties : {"", "{}", "{\"port\":0}", "{\"port\":65536}"}) {
    EXPECT_EQ(Check("127.0.0.1", properties).result, 2) << properties;
  }
  EXPECT_EQ(Check("no address", "{\"port\":1}").result, 2);
}

}  // namespace
}  // namespace quarl::plugins
