#include <arpa/nameser.h>
#include <gtest/gtest.h>

#include "modules/CheckExpectations.h"
#include "support/DnsServer.h"

namespace quarl::testing {
namespace {

using Messages = std::vector<std::string>;
using Records = std::vector<DnsRecord>;
using Texts = std::vector<std::string>;

const DnsRecord kOne = {ns_t_a, {'\xc0', '\0', '\x02', '\x01'}};
const DnsRecord kTwo = {ns_t_a, {'\xc0', '\0', '\x02', '\x02'}};
const DnsRecord kAlias = {ns_t_cname, DnsName("Real.Example.ORG")};
const DnsRecord kSix = {ns_t_aaaa, std::string("\x20\x01\x0d\xb8", 4) + std::string(11, '\0') + '\x01'};

class DnsModuleTest : public ::testing::Test {
 protected:
  ModuleDriver::CheckAnswer Check(const DnsServer& server, Json values, const std::string& name = "www.example.org") {
    values["port"] = server.Port();
    if (!values.contains("timeOut")) values["timeOut"] = 5000;
    return module_.Check({.properties = ModuleDriver::Properties("dns", values), .serverName = name});
  }

  ModuleDriver module_{"tests/dns"};
};

Json Want(const char* match, const Texts& expected) {
  return {{"match", match}, {"expected", expected}};
}

TEST_F(DnsModuleTest, ComparesTheRecords) {
  const Texts one = {"192.0.2.1"}, two = {"192.0.2.2"}, both = {"192.0.2.1", "192.0.2.2"}, nine = {"192.0.2.9"};
  const struct {
    const char* name;
    Records records;
    int code;
    Json values;
    int16_t state;
    const char* text;
  } cases[] = {{"Some", {kOne, kTwo}, 0, {}, kPassed, "A www.example.org: 192.0.2.1, 192.0.2.2 in"},
               {"BehindAnAlias", {kAlias, kOne}, 0, Want("exactly", one), kPassed, ""},
               {"None", {kAlias}, 0, {}, kFailed, "there is none"},
               {"NoName", {}, 3, {}, kFailed, "NXDOMAIN"},
               {"NoNameWanted", {}, 3, Want("none", {}), kPassed, "NXDOMAIN"},
               {"Refused", {}, 5, Want("none", {}), kFailed, "REFUSED"},
               {"ServerFails", {}, 2, {}, kFailed, "SERVFAIL"},
               {"OneOfThem", {kTwo}, 0, Want("any", both), kPassed, ""},
               {"NoneOfThem", {kOne}, 0, Want("any", nine), kFailed, "none of the expected"},
               {"OneMissing", {kOne}, 0, Want("all", both), kFailed, "192.0.2.2 is missing"},
               {"MoreThanAll", {kOne, kTwo}, 0, Want("all", two), kPassed, ""},
               {"MoreThanExactly", {kOne, kTwo}, 0, Want("exactly", two), kFailed, "192.0.2.1 is not expected"},
               {"Unwanted", {kOne, kTwo}, 0, Want("none", two), kFailed, "192.0.2.2 must not"},
               {"ServersAddress", {kOne}, 0, Want("any", {"{address}"}), kFailed, "none of the expected"}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const DnsServer server(
        [&](const std::string& query, bool) { return Messages{DnsReplyTo(query, each.records, each.code)}; });
    Expect(Check(server, each.values), each.state, each.text);
  }
}

TEST_F(DnsModuleTest, ReadsEachTypeInTheWayInWhichItIsWritten) {
  const std::string soa = DnsName("ns.example.org") + DnsName("admin.example.org") + std::string(16, '\0') +
                          std::string("\xff\xff\xff\xff", 4);
  const std::string srv = Bytes16(0) + Bytes16(5) + Bytes16(5060) + DnsName("sip.example.org");
  const struct {
    const char* type;
    DnsRecord record;
    Texts expected;
    int16_t state;
    const char* text;
  } cases[] = {{"AAAA", kSix, {"2001:DB8:0::1"}, kPassed, "2001:db8::1"},
               {"CNAME", kAlias, {"REAL.example.org."}, kPassed, "real.example.org"},
               {"MX", {ns_t_mx, Bytes16(10) + DnsName("Mail.example.org")}, {"10  mail.Example.org."}, kPassed, ""},
               {"NS", {ns_t_ns, DnsName("ns1.example.org")}, {"ns1.example.org"}, kPassed, ""},
               {"PTR", {ns_t_ptr, DnsName("www.example.org")}, {"{name}"}, kPassed, "1.0.0.127.in-addr.arpa"},
               {"SOA", {ns_t_soa, soa}, {"ns.example.org admin.example.org 0 0 0 0 4294967295"}, kPassed, ""},
               {"SRV", {ns_t_srv, srv}, {"0 5 5060 sip.example.org"}, kPassed, ""},
               {"TXT", {ns_t_txt, "\x06v=spf1\x05 -All"}, {"v=spf1 -All"}, kPassed, ""},
               {"TXT", {ns_t_txt, "\x02no"}, {"NO"}, kFailed, ""},
               {"TXT", {ns_t_txt, std::string("\x05\0\n\xff|x", 6)}, {}, kPassed, "|x"}};
  for (const auto& each : cases) {
    SCOPED_TRACE(std::string(each.type) + each.text);
    const DnsServer server([&](const std::string& query, bool) { return Messages{DnsReplyTo(query, {each.record})}; });
    const char* const name = std::string(each.type) == "PTR" ? "{address}" : "{name}";
    Expect(Check(server, {{"type", each.type}, {"name", name}, {"expected", each.expected}}), each.state, each.text);
  }
}

TEST_F(DnsModuleTest, SurvivesHostileAnswers) {
  const auto good = [](const std::string& query) { return DnsReplyTo(query, {kOne}); };
  const auto patched = [](std::string message, std::size_t at, const std::string& bytes) {
    return message.replace(at, bytes.size(), bytes);
  };
  const auto record = [](int type, std::string data) {
    return [=](const std::string& query) { return Messages{DnsReplyTo(query, {{type, data}})}; };
  };
  const struct {
    const char* name;
    std::function<Messages(const std::string& query)> answer;
    const char* type;
    int16_t state;
    const char* text;
  } cases[] = {
      {"Silent", [](const auto&) { return Messages(); }, "A", kFailed, "in time"},
      {"Empty", [](const auto&) { return Messages{""}; }, "A", kFailed, "in time"},
      {"WrongNumber", [&](const auto& query) { return Messages{patched(good(query), 0, "xx")}; }, "A", kFailed,
       "in time"},
      {"WrongThenRight",
       [&](const auto& query) {
         return Messages{patched(DnsReplyTo(query, {kTwo}), 0, "xx"), good(query)};
       },
       "A", kPassed, "192.0.2.1"},
      {"OtherQuestion", [&](const auto& query) { return Messages{patched(good(query), 13, "xxx")}; }, "A", kFailed,
       "in time"},
      {"HeadOnly", [&](const auto& query) { return Messages{good(query).substr(0, 12)}; }, "A", kFailed, ""},
      {"CutOff", [&](const auto& query) { return Messages{good(query).substr(0, 40)}; }, "A", kFailed, "damaged"},
      {"ManyRecordsClaimed", [&](const auto& query) { return Messages{patched(good(query), 6, "\xff\xff")}; }, "A",
       kFailed, "damaged"},
      {"SomethingBehind", [&](const auto& query) { return Messages{good(query) + "more"}; }, "A", kFailed, "damaged"},
      {"ShortAddress", record(ns_t_a, "abc"), "A", kFailed, "damaged"},
      {"LongAddress", record(ns_t_a, "abcde"), "A", kFailed, "damaged"},
      {"NameThatPointsToItself", record(ns_t_cname, "\xc0\x2d"), "CNAME", kFailed, "damaged"},
      {"NameThatPointsBehindTheEnd", record(ns_t_cname, "\xff\xff"), "CNAME", kFailed, "damaged"},
      {"NameWithoutEnd", record(ns_t_cname, "\x3fshort"), "CNAME", kFailed, "damaged"},
      {"NameInAReservedForm", record(ns_t_cname, std::string("\x80x\0", 3)), "CNAME", kFailed, "damaged"},
      {"StringBeyondItsRecord", record(ns_t_txt, "\xfftext"), "TXT", kFailed, "damaged"},
      {"NoString", record(ns_t_txt, ""), "TXT", kFailed, "damaged"},
      {"HalfAnMx", record(ns_t_mx, std::string(1, '\0')), "MX", kFailed, "damaged"},
      {"HalfAnSoa", record(ns_t_soa, DnsName("a.b") + DnsName("c") + "123"), "SOA", kFailed, "damaged"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const DnsServer server([&](const std::string& query, bool) { return each.answer(query); });
    Expect(Check(server, {{"type", each.type}, {"timeOut", 300}}), each.state, each.text);
  }
}

TEST_F(DnsModuleTest, AsksOverTcpWhereUdpDoesNotDo) {
  std::atomic<int> datagrams = 0, connections = 0;
  const Records many(100, kTwo);
  const DnsServer server([&](const std::string& query, bool tcp) {
    ++(tcp ? connections : datagrams);
    return Messages{tcp ? DnsReplyTo(query, many) : DnsReplyTo(query, {}, 0, true)};
  });
  EXPECT_TRUE(Check(server, Json::object()).performance.ends_with(" records=100"));
  EXPECT_EQ(datagrams, 1);
  EXPECT_EQ(connections, 1);
  EXPECT_EQ(Check(server, {{"tcp", true}}).state, kPassed);
  EXPECT_EQ(datagrams, 1);
  EXPECT_EQ(connections, 2);
}

TEST_F(DnsModuleTest, AsksWhatAndWhomTheSettingsSay) {
  std::string asked;
  const DnsServer server([&](const std::string& query, bool) {
    asked = query;
    return Messages{DnsReplyTo(query, {kOne})};
  });
  auto answer = Check(server, {{"name", "{name}.example.org"}, {"recursion", false}, {"timeWarning", 4000}}, "mail");
  EXPECT_EQ(answer.state, kPassed) << answer.text;
  EXPECT_NE(asked.find(DnsName("mail.example.org") + Bytes16(ns_t_a) + Bytes16(ns_c_in)), std::string::npos);
  EXPECT_EQ(asked[2] & 1, 0) << "recursion is asked for";
  EXPECT_TRUE(answer.performance.starts_with("time=") && answer.performance.ends_with("ms;4000 records=1"));
  const Json other = {{"ask", "other"}, {"other", "127.0.0.1"}, {"port", server.Port()}};
  answer = module_.Check({.address = "192.0.2.1", .properties = ModuleDriver::Properties("dns", other)});
  EXPECT_EQ(answer.state, kPassed) << answer.text;
  EXPECT_EQ(asked[2] & 1, 1) << "recursion is not asked for";
  EXPECT_EQ(Check(server, Json::object(), std::string(70, 'x') + ".org").state, kUnknown);
  EXPECT_EQ(Check(server, Json::object(), "").state, kUnknown);
}

TEST_F(DnsModuleTest, TheFormRefusesWhatCannotBeAsked) {
  ExpectRefusals(module_, "",
                 {{{{"type", "A"}, {"expected", {"192.0.2.1"}}}, ""},
                  {{{"type", "A"}, {"expected", {"192.0.2"}}}, "expected"},
                  {{{"type", "AAAA"}, {"expected", {"192.0.2.1"}}}, "expected"},
                  {{{"type", "MX"}, {"expected", {"mail.example.org"}}}, "expected"},
                  {{{"type", "TXT"}, {"expected", {"any text at all"}}}, ""},
                  {{{"ask", "other"}, {"other", "ns.example.org"}}, "other"},
                  {{{"name", "{host}"}}, "name"},
                  {{{"timeWarning", 2}, {"timeCritical", 1}}, "timeCritical"}});
}

}  // namespace
}  // namespace quarl::testing
