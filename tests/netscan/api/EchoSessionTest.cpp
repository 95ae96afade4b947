#include <gtest/gtest.h>

#include <map>
#include <set>

#include "netscan/api/EchoSession.h"

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;
using TimePoint = EchoSession::Clock::time_point;

// A network whose time passes only while somebody waits.
class StepNetwork : public EchoChannel {
 public:
  struct Host {
    std::chrono::milliseconds delay;
    EchoStatus status = EchoStatus::Answered;
    in_addr_t answersAs = 0;  // 0: as itself
  };
  std::map<in_addr_t, Host> hosts;  // the others are silent
  bool busy = false;
  TimePoint now{1h};
  std::size_t sent = 0;
  std::multiset<TimePoint> leaving;
  std::size_t mostInHalfASecond = 0;

  EchoMethod Method() const override { return EchoMethod::Raw; }
  bool Send(std::uint16_t sequence, in_addr_t address) override {
    if (busy) return false;
    ++sent;
    leaving.insert(now);
    leaving.erase(leaving.begin(), leaving.upper_bound(now - 500ms));
    mostInHalfASecond = std::max(mostInHalfASecond, leaving.size());
    if (const auto host = hosts.find(address); host != hosts.end()) {
      const in_addr_t from = host->second.answersAs != 0 ? host->second.answersAs : address;
      arriving_.insert({now + host->second.delay, {sequence, from, host->second.status}});
    }
    return true;
  }
  std::optional<EchoAnswer> Receive() override {
    if (arriving_.empty() || arriving_.begin()->first > now) return std::nullopt;
    const EchoAnswer answer = arriving_.begin()->second;
    arriving_.erase(arriving_.begin());
    return answer;
  }
  void Wait(std::chrono::milliseconds atMost) override {
    const TimePoint end = now + atMost;
    now = arriving_.empty() ? end : std::max(now, std::min(end, arriving_.begin()->first));
  }

 private:
  std::multimap<TimePoint, EchoAnswer> arriving_;
};

class EchoSessionTest : public ::testing::Test {
 protected:
  std::map<std::size_t, EchoResult> Ask(const std::vector<in_addr_t>& addresses, const EchoLimits& limits = {}) {
    std::map<std::size_t, EchoResult> results;
    session.AskAll(addresses, limits, [&](std::size_t index, const EchoResult& result) {
      EXPECT_TRUE(results.emplace(index, result).second) << "reported twice: " << index;
    });
    EXPECT_EQ(results.size(), addresses.size());
    return results;
  }
  static std::vector<in_addr_t> Addresses(std::size_t count) {
    std::vector<in_addr_t> addresses;
    for (std::size_t index = 0; index < count; ++index)
      addresses.push_back(htonl(0x0a000001 + static_cast<uint32_t>(index)));
    return addresses;
  }

  StepNetwork network;
  EchoSession session{network, [this] { return network.now; }};
};

TEST_F(EchoSessionTest, SilentHostsCostOneTimeOutAWindow) {
  const std::pair<std::size_t, std::chrono::milliseconds> cases[] = {{0, 0ms},     {1, 500ms},    {200, 500ms},
                                                                     {254, 500ms}, {255, 1000ms}, {762, 1500ms}};
  for (const auto& [count, time] : cases) {
    const TimePoint begin = network.now;
    for (const auto& [index, result] : Ask(Addresses(count))) EXPECT_EQ(result.status, EchoStatus::TimedOut) << index;
    EXPECT_EQ(network.now - begin, time) << count;
  }
  EXPECT_EQ(network.mostInHalfASecond, 254U);
}

TEST_F(EchoSessionTest, EachAddressGetsItsOwnAnswer) {
  const auto addresses = Addresses(6);
  network.hosts[addresses[0]] = {30ms};
  network.hosts[addresses[1]] = {10ms, EchoStatus::HostUnreachable};
  network.hosts[addresses[2]] = {499ms};
  network.hosts[addresses[3]] = {501ms};                                         // late
  network.hosts[addresses[4]] = {5ms, EchoStatus::Answered, htonl(0x0a0000ff)};  // somebody else answers
  const auto results = Ask({addresses.begin(), addresses.end()});
  const EchoStatus expected[] = {EchoStatus::Answered, EchoStatus::HostUnreachable, EchoStatus::Answered,
                                 EchoStatus::TimedOut, EchoStatus::TimedOut,        EchoStatus::TimedOut};
  for (std::size_t index = 0; index < addresses.size(); ++index) EXPECT_EQ(results.at(index).status, expected[index]);
  EXPECT_EQ(results.at(0).roundTrip, 30ms);
  EXPECT_EQ(results.at(5).roundTrip, 500ms);
}

TEST_F(EchoSessionTest, ALateAnswerIsNotTakenForTheNextEcho) {
  const in_addr_t slow = Addresses(1)[0];
  network.hosts[slow] = {700ms};
  const auto results = Ask({slow, slow, slow}, {500ms, 1});
  for (const auto& [index, result] : results) EXPECT_EQ(result.status, EchoStatus::TimedOut) << index;
  network.hosts[slow] = {20ms};
  EXPECT_EQ(session.Ask(slow).roundTrip, 20ms);
  EXPECT_EQ(session.Ask(htonl(0x0a0000fe), {80ms}).roundTrip, 80ms);
}

TEST_F(EchoSessionTest, MoreAddressesThanSequences) {
  // The first host answers last, so its sequence is still under way when the numbers begin again.
  auto addresses = Addresses(70000);
  for (const in_addr_t address : addresses) network.hosts[address] = {0ms};
  network.hosts[addresses[0]] = {400ms};
  for (const auto& [index, result] : Ask(addresses)) ASSERT_EQ(result.status, EchoStatus::Answered) << index;
  EXPECT_EQ(network.sent, 70000U);
}

TEST_F(EchoSessionTest, ABusyChannelIsTriedAgainForABoundedTime) {
  network.busy = true;
  const TimePoint begin = network.now;
  EXPECT_EQ(session.Ask(Addresses(1)[0]).status, EchoStatus::NoResources);
  EXPECT_GE(network.now - begin, 3s) << "the kernel needs that long to give up absent neighbours";
  EXPECT_LE(network.now - begin, 10s);
}

TEST_F(EchoSessionTest, StopsFromItsReportAndFromOutside) {
  auto addresses = Addresses(1000);
  for (const in_addr_t address : addresses) network.hosts[address] = {1ms};
  std::stop_source source;
  std::size_t reports = 0;
  const auto report = [&](std::size_t, const EchoResult&) {
    if (++reports == 10) source.request_stop();
  };
  EXPECT_FALSE(session.AskAll(addresses, {}, report, source.get_token()));
  EXPECT_EQ(reports, 10U);
  const std::size_t sent = network.sent;
  EXPECT_FALSE(session.AskAll(addresses, {}, report, source.get_token()));
  EXPECT_EQ(network.sent, sent);
  EXPECT_TRUE(session.AskAll(addresses, {}, report)) << "the next run begins anew";
}

}  // namespace
}  // namespace quarl::netscan
