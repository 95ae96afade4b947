#include <algorithm>

#include "Conversation.h"
#include "Escapes.h"
#include "PortForm.h"
#include "kit/Performance.h"
#include "kit/TestModule.h"
#include "kit/Text.h"
#include "tests/common/Settings.h"

namespace quarl::tcpport {
namespace {

using kit::CheckOutcome;
using kit::ConnectionError;
using kit::State;
using std::chrono::milliseconds;

constexpr std::size_t kShownAnswer = 120;

std::string PortName(std::uint16_t port) {
  return "Port " + std::to_string(port);
}

using Checking = kit::Task<CheckOutcome>;

/// Limits and measure of one check.
struct Question {
  const kit::Server& server;
  const kit::Properties& properties;
  std::uint16_t port;
  milliseconds timeOut;
  kit::Deadline deadline{timeOut};
};

CheckOutcome JudgeAnswer(const Answer& answer, const Question& question) {
  const std::string shown = answer.beginning.empty() ? "" : ": " + kit::OneLine(answer.beginning, kShownAnswer);
  if (answer.found) return {State::Passed, PortName(question.port) + " answers as expected" + shown};
  std::string text = PortName(question.port);
  if (answer.beginning.empty())
    text += answer.ended ? " ends the connection without an answer" : " does not answer within the time-out";
  else
    text += answer.tooLong ? " answers too much without the expected text" : " answers otherwise than expected";
  return {State::Failed, text + shown};
}

Checking Talk(kit::Connection& connection, const Question& question) {
  const std::string send = Unescape(question.properties.Text("send"));
  const std::string expect = Unescape(question.properties.Text("expect"));
  const bool tls = question.properties.Flag("tls");
  if (!tls && send.empty() && expect.empty())
    co_return CheckOutcome{State::Passed, PortName(question.port) + " accepts connections"};
  std::unique_ptr<Wire> wire;
  if (tls) {
    const std::string name = question.properties.Text("tlsName");
    auto secured =
        std::make_unique<TlsWire>(connection, TrustOf(question.properties), name.empty() ? question.server.name : name);
    co_await secured->ShakeHands(question.deadline);
    wire = std::move(secured);
  } else {
    wire = std::make_unique<PlainWire>(connection);
  }
  if (!expect.empty()) {
    const Answer answer = co_await Converse(*wire, send, expect, question.deadline);
    co_return JudgeAnswer(answer, question);
  }
  co_await wire->Send(send, question.deadline);
  co_return CheckOutcome{State::Passed,
                         PortName(question.port) + (tls ? " accepts encrypted connections" : " accepts connections")};
}

Checking Connected(const Question& question) {
  try {
    kit::Connection connection;
    co_await connection.Connect(question.server.address, question.port, question.deadline);
    CheckOutcome outcome = co_await Talk(connection, question);
    co_return outcome;
  } catch (const ConnectionError& error) {
    const bool local = error.Why() == ConnectionError::Reason::Local;
    co_return CheckOutcome{local ? State::Unknown : State::Failed, PortName(question.port) + ": " + error.what()};
  } catch (const TlsError& error) {
    co_return CheckOutcome{State::Failed, PortName(question.port) + ": " + error.what()};
  }
}

class PortModule final : public kit::SteppedTestModule {
 public:
  const kit::Form& Fields() const override { return PortForm(); }

  Checking Begin(const kit::Server& server, const kit::Properties& properties, milliseconds limit) const override {
    const auto begin = std::chrono::steady_clock::now();
    const Question question{server, properties, PortOf(properties),
                            checks::TimeWithin(limit, properties.Integer("timeOut"))};
    CheckOutcome outcome = co_await Connected(question);
    outcome.duration = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
    kit::PerformanceData data;
    data.Add({.label = "time",
              .value = static_cast<double>(outcome.duration.count()) / 1e6,
              .unit = "s",
              .minimum = 0,
              .maximum = static_cast<double>(question.timeOut.count()) / 1e3});
    outcome.performance = data.Text();
    co_return outcome;
  }

  std::string Judge(const kit::Properties& properties, std::string& key) const override {
    for (const char* text : {"send", "expect"}) {
      key = text;
      try {
        Unescape(properties.Text(text));
      } catch (const kit::Error& error) {
        return error.what();
      }
    }
    return {};
  }

  std::string About() const override {
    return "TCP port " QUARL_MODULE_VERSION
           "\n\nConnects to a port of a server, with or without TLS, and may send a text and examine the answer.\n\n"
           "Part of Quarl.";
  }
};

}  // namespace
}  // namespace quarl::tcpport

QUARL_STEPPED_TEST_MODULE(quarl::tcpport::PortModule)
