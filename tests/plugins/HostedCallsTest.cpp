#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>

#include "plugins/HostFolder.h"
#include "plugins/contract/HostedCalls.h"
#include "plugins/contract/ModuleError.h"

namespace quarl::plugins {
namespace {

class HostedCallsTest : public testing::Test {
 protected:
  /// Has a module set properties; what it made of its texts is in the members then.
  qint16 Set(const char* name, const QString& address, const QString& properties, const char* module = "PROBE.dll") {
    path_ = folder_.Module(module);
    name_ = QString::fromUtf8(name);
    address_ = address;
    properties_ = properties;
    return calls_.SetProperties(ModuleKind::Test, path_, name_, address_, properties_);
  }

  HostFolder folder_;
  PlainWait wait_;
  HostedCalls calls_{folder_.Paths(), wait_};
  QString path_, name_, address_, properties_;
};

const QChar kNul(u'\0');

TEST_F(HostedCallsTest, TextsCrossWithNulsAndComeBackAtTheirFullLength) {
  const struct {
    QString sent, back;
  } rows[] = {{QString(), QString()},
              {QStringLiteral("abc"), QStringLiteral("bbc")},
              {QStringLiteral("a") + kNul + QStringLiteral("ä株😀") + kNul + kNul, QStringLiteral("b0ä株😀00")},
              {QString(32767, kNul), QString(32767, u'0')},
              {QChar(0xfeff) + QStringLiteral("a"), QChar(0xfeff) + QStringLiteral("b")}};
  for (const auto& row : rows) {
    EXPECT_EQ(Set("change a", row.sent, row.sent), -12345);
    EXPECT_EQ(name_, QStringLiteral("chbnge b"));
    EXPECT_EQ(address_, row.back);
    EXPECT_EQ(properties_, row.back);
    EXPECT_EQ(path_, folder_.Module("PROBE.dll"));
  }
}

TEST_F(HostedCallsTest, EachOperationReachesItsFunction) {
  QString module = folder_.Module("probe.dll");
  EXPECT_EQ(calls_.About(ModuleKind::Test, module), 21);
  EXPECT_EQ(calls_.GetBufferSize(ModuleKind::Test, module), -3);
  QString alert = folder_.Module("probe_alert.dll");
  QString name = QStringLiteral("büro");
  QString address;
  QString subject = QStringLiteral("Alert!");
  QString message = QStringLiteral("a\r\nb");
  QString properties = QStringLiteral("p") + kNul;
  QString result(255, u' ');
  EXPECT_EQ(calls_.Alert(alert, name, address, subject, message, properties, result), 4);
  EXPECT_EQ(result, QStringLiteral("büro|Alert!|p") + kNul + QString(255 - 15, u' '));
}

TEST_F(HostedCallsTest, FormsComeFromTheirLibraryWithTheApplicationsTitle) {
  QCoreApplication::setApplicationName(QStringLiteral("Quarl Tests"));
  EXPECT_EQ(Set("form", {}, QString(100, kNul)), 0);
  EXPECT_EQ(properties_.left(17), QStringLiteral("{} Quarl Tests 0") + kNul);
}

TEST_F(HostedCallsTest, WhatIsMissingIsNamed) {
  const struct {
    const char *missing, *module, *sentence;
  } rows[] = {
      {"quarl-forms.so", "probe.dll", "quarl-forms.so"},
      {"plugins/tests/probe.dll", "probe.dll", "The module probe.dll cannot be loaded: "},
      {"TestHelper.dll", "probe_alert.dll", "The library TestHelper.dll cannot be loaded: "},
      {"quarl-modulehost", "probe_alert.dll", "quarl-modulehost, which calls modules, cannot be started: No such file"},
  };
  for (const auto& row : rows) {
    folder_.Remove(QString::fromLatin1(row.missing));
    try {
      Set("form", QStringLiteral("x"), QStringLiteral("kept"), row.module);
      ADD_FAILURE() << row.missing;
    } catch (const ModuleError& error) {
      EXPECT_NE(error.Description().indexOf(QString::fromLatin1(row.sentence)), -1) << error.what();
    }
    EXPECT_EQ(properties_, QStringLiteral("kept"));
  }
}

TEST_F(HostedCallsTest, ATextBeyondTheLimitIsRefusedBeforeTheModuleIsCalled) {
  const QString largest(static_cast<qsizetype>(kLargestText), u'x');
  EXPECT_EQ(Set("nothing", {}, largest), 0);
  EXPECT_THROW(Set("nothing", {}, largest + u'x'), ModuleError);
}

TEST_F(HostedCallsTest, CallsLeaveNoDescriptorBehind) {
  const auto open = [] { return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoFilter).size(); };
  Set("nothing", {}, {});
  const auto before = open();
  for (int i = 0; i < 3; ++i) Set("nothing", {}, {});
  EXPECT_EQ(open(), before);
}

}  // namespace
}  // namespace quarl::plugins
