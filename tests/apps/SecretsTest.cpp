#include <gtest/gtest.h>

#include "apps/NastyConfiguration.h"
#include "transfer/Secrets.h"

namespace quarl::transfer {
namespace {

using store::Configuration;

QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

/// One alert of the root group, id 1, and one test, id 2, with these properties.
Configuration With(const QString& properties, qint32 alert = 1) {
  Configuration configuration;
  configuration.root.alerts.push_back({alert, 1, {}, properties});
  configuration.root.servers.push_back({3, {}, {}, {}, {}, {{2, 1, {}, properties}}, {}});
  return configuration;
}

std::string PropertiesOf(const Configuration& configuration) {
  EXPECT_EQ(configuration.root.alerts[0].properties, configuration.root.servers[0].tests[0].properties);
  return configuration.root.alerts[0].properties.toStdString();
}

const std::string kPadding(5, '\0');

TEST(Secrets, AreLeftOutOfPropertiesOfTheKnownFormOnly) {
  const std::string deep = std::string(100, '[') + std::string(100, ']');
  const struct {
    const char* name;
    std::string properties;
    std::string left;  ///< "": unchanged
  } cases[] = {
      {"Known", R"({"format":1,"module":"m","values":{"a":1.50},"secrets":{"p":"x"},"z":null})",
       R"({"format":1,"module":"m","values":{"a":1.5},"secrets":"not exported","z":null})"},
      {"Padded", R"({"format":1,"module":"m","secrets":{"p":"x"}})" + kPadding,
       R"({"format":1,"module":"m","secrets":"not exported"})" + kPadding},
      {"Twice", R"({"secrets":{"p":"y"},"format":1,"module":"m","secrets":{"p":"x"}})",
       R"({"secrets":"not exported","format":1,"module":"m"})"},
      {"EscapedName", R"({"format":1,"module":"m","\u0073ecrets":{"p":"x"}})",
       R"({"format":1,"module":"m","secrets":"not exported"})"},
      {"OneFilled", R"({"format":9,"module":"m","secrets":{"a":"","b":[1]}})",
       R"({"format":9,"module":"m","secrets":"not exported"})"},
      {"NoneFilled", R"({"format":1,"module":"m","secrets":{"a":"","b":""}})", ""},
      {"NoSecrets", R"({"format":1,"module":"m","values":{"secrets":{"p":"x"}}})", ""},
      {"NoModule", R"({"format":1,"secrets":{"p":"x"}})", ""},
      {"OtherFormat", R"({"format":"1","module":"m","secrets":{"p":"x"}})", ""},
      {"NoObject", R"({"format":1,"module":"m","secrets":"x"})", ""},
      {"List", R"(["secrets"])", ""},
      {"NoJson", "secrets=x", ""},
      {"Trailing", R"({"format":1,"module":"m","secrets":{"p":"x"}} x)", ""},
      {"TooDeep", R"({"format":1,"module":"m","secrets":{"p":"x"},"d":)" + deep + "}", ""},
      {"Empty", "", ""},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Configuration configuration = With(Q(each.properties));
    EXPECT_EQ(CountSecrets(configuration), each.left.empty() ? 0 : 2);
    LeaveOutSecrets(configuration);
    EXPECT_EQ(PropertiesOf(configuration), each.left.empty() ? each.properties : each.left);
    EXPECT_EQ(CountSecrets(configuration), 0);
    EXPECT_EQ(RestoreSecrets(configuration, With(Q(each.properties))), 0);
    EXPECT_EQ(PropertiesOf(configuration), each.properties) << "the store's own, to the letter";
  }
}

TEST(Secrets, ComeBackFromTheRecordOfTheStoreOnly) {
  const std::string stored = R"({"format":1, "module":"m", "values":{"a":1}, "secrets":{"p":"x"}})" + kPadding;
  const std::string marked = R"({"format":1,"module":"m","values":{"a":1},"secrets":"not exported"})" + kPadding;
  const std::string edited = R"({"format":1,"module":"m","values":{"a":"more than before"},"secrets":"not exported"})";
  const std::string without = R"({"format":1,"module":"m","values":{"a":1}})";
  const struct {
    const char* name;
    std::string file;
    Configuration known;
    std::string result;
    int missing;
  } cases[] = {
      {"Unchanged", marked, With(Q(stored)), stored, 0},
      {"Edited", edited + kPadding, With(Q(stored)),
       R"({"format":1,"module":"m","values":{"a":"more than before"},"secrets":{"p":"x"}})", 0},
      {"OwnSecrets", R"({"format":1,"module":"m","secrets":{"p":"new"}})", With(Q(stored)),
       R"({"format":1,"module":"m","secrets":{"p":"new"}})", 0},
      {"NoRecord", marked, {}, without, 2},
      {"AnotherModule", marked, With(Q(R"({"format":1,"module":"n","secrets":{"p":"x"}})")), without, 2},
      {"NoSecretsThere", marked, With(Q(R"({"format":1,"module":"m","values":{}})")), without, 2},
      {"UnreadableThere", marked, With(Q("p=x")), without, 2},
      {"NoMark", "p=y", With(Q(stored)), "p=y", 0},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Configuration planned = With(Q(each.file));
    EXPECT_EQ(RestoreSecrets(planned, each.known), each.missing);
    EXPECT_EQ(PropertiesOf(planned), each.result);
  }
  Configuration planned = With(Q(marked), 7);
  EXPECT_EQ(RestoreSecrets(planned, With(Q(stored))), 1) << "an alert of another id";
}

TEST(Secrets, LeaveEverythingElseAlone) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    const Configuration before = test::NastyConfiguration(seed);
    Configuration after = before;
    LeaveOutSecrets(after);
    EXPECT_EQ(RestoreSecrets(after, {}), 0);
    EXPECT_TRUE(after == before) << seed;
  }
}

}  // namespace
}  // namespace quarl::transfer
