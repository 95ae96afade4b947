#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/ProcessIdentity.h"

namespace quarl {
namespace {

TEST(ProcessIdentityTest, AProcessIsGoneOnceItHasEnded) {
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    for (;;) ::pause();
  }
  const ProcessIdentity running = ProcessIdentity::Of(child);
  EXPECT_FALSE(running.IsGone());
  EXPECT_NE(running, ProcessIdentity::Current());
  ProcessIdentity earlier = running;
  --earlier.startTicks;
  EXPECT_TRUE(earlier.IsGone()) << "its number belongs to another one";

  ASSERT_EQ(::kill(child, SIGKILL), 0);
  siginfo_t info{};
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
  EXPECT_TRUE(running.IsGone()) << "ended, and not yet collected";
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_TRUE(running.IsGone());
}

TEST(ProcessIdentityTest, WhatNobodyHereCanTellIsNotCalledGone) {
  ProcessIdentity gone = ProcessIdentity::Of(0x7fffffff);
  EXPECT_EQ(gone.startTicks, 0);
  gone.startTicks = 1;
  EXPECT_TRUE(gone.IsGone());
  struct {
    const char* what;
    void (*change)(ProcessIdentity&);
    bool known;
  } const cases[] = {
      {"in a container", [](ProcessIdentity& p) { p.scope = QStringLiteral("pid:[1]"); }, false},
      {"no scope", [](ProcessIdentity& p) { p.scope.clear(); }, false},
      {"no run", [](ProcessIdentity& p) { p.boot.clear(); }, false},
      {"another machine", [](ProcessIdentity& p) { p.boot = p.machine = QStringLiteral("x"); }, false},
      {"a copy of this machine", [](ProcessIdentity& p) { p.boot = p.host = QStringLiteral("x"); }, false},
      {"an earlier run", [](ProcessIdentity& p) { p.boot = QStringLiteral("x"); }, !gone.machine.isEmpty()},
  };
  for (const auto& [what, change, known] : cases) {
    ProcessIdentity changed = gone;
    change(changed);
    EXPECT_EQ(changed.IsGone(), known) << what;
  }
}

}  // namespace
}  // namespace quarl
