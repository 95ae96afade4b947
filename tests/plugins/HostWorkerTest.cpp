#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <map>

#include "plugins/HostFolder.h"
#include "plugins/contract/HostProcess.h"
#include "plugins/contract/HostProtocol.h"

namespace quarl::plugins {
namespace {

/// A worker, and what a service does with one.
class HostWorkerTest : public testing::Test {
 protected:
  void Send(const HostRequest& request) {
    const std::string frame = FrameOf(request);
    for (std::string_view rest = frame; !rest.empty();) {
      pollfd wanted{worker_.Channel(), POLLOUT, 0};
      ASSERT_GT(poll(&wanted, 1, 20000), 0);
      const ssize_t sent = send(worker_.Channel(), rest.data(), rest.size(), MSG_NOSIGNAL);
      ASSERT_GT(sent, 0);
      rest.remove_prefix(static_cast<std::size_t>(sent));
    }
  }

  /// The next reply that ends a request; one with the id 0 when the worker has ended.
  HostReply Receive() {
    for (;;) {
      while (const auto content = frames_.Next()) {
        const auto reply = ReadReply(*content);
        if (reply && reply->IsLast()) return *reply;
      }
      pollfd wanted{worker_.Channel(), POLLIN, 0};
      if (poll(&wanted, 1, 20000) <= 0) return {};
      std::array<char, 4096> bytes;
      const ssize_t size = recv(worker_.Channel(), bytes.data(), bytes.size(), 0);
      if (size <= 0) return {};
      frames_.Add({bytes.data(), static_cast<std::size_t>(size)});
    }
  }

  std::string Native(const char* module) { return InstallPaths::Resolve(folder_.Module(module)).toStdString(); }

  HostRequest Check(std::uint32_t id, const std::string& name, const std::string& address = "10.0.0.1") {
    return CheckRequest(id, Native("probe.dll"), {name, address, "{}", std::chrono::milliseconds(700)});
  }

  HostRequest CheckInSteps(std::uint32_t id, const std::string& properties, int limitMs = 60'000) {
    return CheckRequest(id, Native("probe_steps.dll"),
                        {"web" + std::to_string(id), "10.0.0.1", properties, std::chrono::milliseconds(limitMs)});
  }
  /// The module has closed its end of a named pipe.
  static void ExpectGivenBack(const std::string& pipe) {
    const int end = open(pipe.c_str(), O_WRONLY | O_NONBLOCK);
    EXPECT_TRUE(end < 0 && errno == ENXIO);
    if (end >= 0) close(end);
  }
  void ExpectEnd(bool bySignal) {
    EXPECT_EQ(Receive().id, 0U);
    pollfd ended{worker_.EndWatch(), POLLIN, 0};
    ASSERT_GT(poll(&ended, 1, 20000), 0);
    const auto end = worker_.End();
    ASSERT_TRUE(end);
    EXPECT_EQ(end->bySignal, bySignal);
  }

  HostFolder folder_;
  HostProcess worker_{folder_.Path(QStringLiteral("quarl-modulehost")),
                      {QStringLiteral("--worker"), QStringLiteral("3")}};
  FrameBuffer frames_;
};

TEST_F(HostWorkerTest, ManyChecksRunAtOnceAndEndInAnyOrder) {
  const std::string pipe = folder_.MakePipe().toStdString();
  Send(Check(1, "wait", pipe));
  std::map<std::uint32_t, HostReply> replies;
  for (std::uint32_t id = 2; id < 200; ++id) Send(Check(id, "server" + std::to_string(id)));
  for (std::uint32_t id = 2; id < 200; ++id) {
    const HostReply reply = Receive();
    replies[reply.id] = reply;
  }
  EXPECT_EQ(replies.size(), 198U);
  EXPECT_EQ(replies.count(1), 0U);
  for (const auto& [id, reply] : replies) {
    EXPECT_EQ(reply.word, HostWord::Answered);
    EXPECT_EQ(reply.result, 3);
    EXPECT_EQ(reply.texts.at(0), "server" + std::to_string(id) + " at 10.0.0.1 with {}");
    EXPECT_EQ(reply.texts.at(1), "limit=700");
    EXPECT_EQ(reply.numbers, std::vector<std::int64_t>{1234});
  }
  close(open(pipe.c_str(), O_WRONLY));
  EXPECT_EQ(Receive().id, 1U);
}

TEST_F(HostWorkerTest, AllFactsOfAnEventArriveOrAsManyAsTheModuleTakes) {
  const EventFacts event{"S", "M", "", "10.0.0.2", "G", "T", "R", "P", "I", "{p}", 2, 1700000000, 1600000000};
  Send(EventRequest(5, Native("probe_event.dll"), event));
  HostReply reply = Receive();
  EXPECT_EQ(reply.result, 0);
  EXPECT_EQ(reply.texts.at(0).substr(0, reply.texts.at(0).find('\0')),
            "2 S M  10.0.0.2 G T R 1700000000 1600000000 P I {p}");
  EXPECT_EQ(reply.texts.at(0).size(), kResultTextSize);
  Send(EventRequest(6, Native("probe_alert.dll"), event));
  reply = Receive();
  EXPECT_EQ(reply.result, 4);
  EXPECT_EQ(reply.texts.at(0), std::string("G|S|{p}\0", 8) + std::string(kResultTextSize - 8, ' '));
}

TEST_F(HostWorkerTest, AFaultEndsTheWorkerAndSaysWhichRequest) {
  Send(Check(8, "fine"));
  EXPECT_EQ(Receive().id, 8U);
  Send(Check(9, "overrun 1"));
  const HostReply reply = Receive();
  EXPECT_EQ(reply.word, HostWord::Overrun);
  EXPECT_EQ(reply.id, 9U);
  ExpectEnd(true);
  EXPECT_EQ(EndSentence(QStringLiteral("x.dll"), *worker_.End()),
            QStringLiteral("The module x.dll crashed (SIGSEGV)."));
}

TEST_F(HostWorkerTest, ManyChecksInStepsWaitOnOneThread) {
  const std::string pipe = folder_.MakePipe().toStdString();
  constexpr std::uint32_t kChecks = 900;
  for (std::uint32_t id = 1; id <= kChecks; ++id) Send(CheckInSteps(id, "pipe " + pipe));
  Send(CheckInSteps(kChecks + 1, "time 30"));
  // The requests are served in their order, so all others wait by now.
  HostReply reply = Receive();
  EXPECT_EQ(reply.id, kChecks + 1);
  EXPECT_EQ(reply.texts.at(0), "web901 after 2 steps, came 0");
  const std::string thread = reply.texts.at(1);
  close(open(pipe.c_str(), O_WRONLY));
  std::map<std::uint32_t, HostReply> replies;
  for (std::uint32_t id = 1; id <= kChecks; ++id) {
    reply = Receive();
    replies[reply.id] = reply;
  }
  EXPECT_EQ(replies.size(), kChecks);
  for (const auto& [id, each] : replies) {
    EXPECT_EQ(each.result, 1);
    EXPECT_EQ(each.texts, (std::vector<std::string>{
                              "web" + std::to_string(id) + " after 2 steps, came " + std::to_string(POLLHUP), thread}));
    EXPECT_EQ(each.numbers, std::vector<std::int64_t>{77});
  }
}

TEST_F(HostWorkerTest, WhatHasComeCountsEvenWhenTheTimeIsOverToo) {
  const std::string pipe = folder_.MakePipe().toStdString();
  constexpr std::uint32_t kChecks = 600;  // more than one look at the descriptors gives
  for (std::uint32_t id = 1; id <= kChecks; ++id) Send(CheckInSteps(id, "soon " + pipe));
  Send(CheckInSteps(kChecks + 1, "time 0"));
  EXPECT_EQ(Receive().id, kChecks + 1);
  const auto tell = [this](int signal) { syscall(SYS_pidfd_send_signal, worker_.EndWatch(), signal, nullptr, 0); };
  tell(SIGSTOP);
  close(open(pipe.c_str(), O_WRONLY));
  poll(nullptr, 0, 1200);  // the time of all passes
  tell(SIGCONT);
  for (std::uint32_t id = 1; id <= kChecks; ++id) {
    const std::string text = Receive().texts.at(0);
    EXPECT_NE(text.find("came " + std::to_string(POLLHUP)), std::string::npos) << text;
  }
}

TEST_F(HostWorkerTest, ACheckThatDoesNotEndAtItsLimitIsGivenUpAlone) {
  const std::string pipe = folder_.MakePipe().toStdString();
  Send(CheckInSteps(1, "pipe " + pipe));
  const std::string kept = folder_.MakePipe().toStdString();
  Send(CheckInSteps(2, "keep " + kept, 200));
  HostReply reply = Receive();
  EXPECT_EQ(reply.id, 2U);
  EXPECT_EQ(reply.word, HostWord::TimedOut);
  ExpectGivenBack(kept);
  close(open(pipe.c_str(), O_WRONLY));
  reply = Receive();
  EXPECT_EQ(reply.id, 1U);
  EXPECT_EQ(reply.word, HostWord::Answered);
}

TEST_F(HostWorkerTest, AStepThatGoesWrongIsToldOf) {
  const std::string kept = folder_.MakePipe().toStdString();
  Send(CheckInSteps(1, "deaf " + kept));
  HostReply reply = Receive();
  EXPECT_EQ(reply.word, HostWord::Failed);
  EXPECT_EQ(reply.texts.at(0).rfind("The module waits for what cannot be waited for: ", 0), 0U) << reply.texts.at(0);
  ExpectGivenBack(kept);
  Send(CheckInSteps(2, "no end"));
  EXPECT_EQ(Receive().texts.at(0), std::string(kCheckTextSize - 1, 'x'));
  Send(CheckInSteps(3, "fail"));
  reply = Receive();
  EXPECT_EQ(reply.result, 3);
  EXPECT_EQ(reply.texts.at(0), "web3 after 2 steps, came 0") << "no word of the check before is left";
  Send(CheckInSteps(6, "early"));
  EXPECT_EQ(Receive().texts.at(0), "");
  Send(CheckInSteps(4, "pipe " + folder_.MakePipe().toStdString()));
  Send(CheckInSteps(5, "overrun"));
  reply = Receive();
  EXPECT_EQ(reply.word, HostWord::Overrun);
  EXPECT_EQ(reply.id, 5U);
  ExpectEnd(true);
}

TEST_F(HostWorkerTest, AStepThatDoesNotComeBackEndsTheWorkerAndIsNamed) {
  Send(CheckInSteps(1, "pipe " + folder_.MakePipe().toStdString()));
  Send(CheckInSteps(2, "stuck"));
  const HostReply reply = Receive();
  EXPECT_EQ(reply.word, HostWord::Stuck);
  EXPECT_EQ(reply.id, 2U);
  EXPECT_EQ(reply.texts.at(0), "A step of this check did not come back within 5 seconds.");
  ExpectEnd(false);
}

TEST_F(HostWorkerTest, WhatNeedsADialogOrCannotBeLoadedIsRefusedAndTheRestGoesOn) {
  HostRequest about;
  about.id = 3;
  about.texts = {Native("probe.dll")};
  Send(about);
  EXPECT_EQ(Receive().word, HostWord::Failed);
  Send(CheckRequest(4, Native("probe_abi.dll"), {}));
  const HostReply reply = Receive();
  EXPECT_EQ(reply.word, HostWord::Failed);
  EXPECT_NE(reply.texts.at(0).find("interface number 77"), std::string::npos);
  Send(Check(5, "fine"));
  EXPECT_EQ(Receive().word, HostWord::Answered);
}

}  // namespace
}  // namespace quarl::plugins
