#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "service/workers/HostedRunner.h"

// What a check costs: CPU time of this process and of all that it started and waited for, a check.
namespace {

using namespace quarl;

constexpr int kChecks = 50'000;
constexpr int kCommands = 1'000;
constexpr int kAtOnce = 16;
constexpr int kCommandsAtOnce = 8;

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double CpuSeconds() {
  double sum = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    getrusage(who, &usage);
    sum += Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  }
  return sum;
}

/// A process that accepts connections and closes them, until this one ends. It is no child of this process: its time is
/// not to be counted, and whoever keeps the children here would end one that nobody knows.
class AcceptingServer {
 public:
  AcceptingServer() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    std::array<int, 2> life{};  // its end at this side is never closed
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listener, 4096) != 0 ||
        pipe2(life.data(), O_CLOEXEC) != 0) {
      std::abort();
    }
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    const pid_t between = fork();
    if (between == 0) {
      if (fork() != 0) _exit(0);
      close(life[1]);
      Accept(listener, life[0]);
    }
    waitpid(between, nullptr, 0);
    close(listener);
    close(life[0]);
  }
  int Port() const { return port_; }

 private:
  [[noreturn]] static void Accept(int listener, int life) {
    for (std::array<pollfd, 2> wanted{{{listener, POLLIN, 0}, {life, POLLIN, 0}}};;) {
      poll(wanted.data(), wanted.size(), -1);
      if (wanted[1].revents != 0) _exit(0);
      close(accept(listener, nullptr, nullptr));
    }
  }

  int port_ = 0;
};

const AcceptingServer& Server() {
  static const AcceptingServer server;
  return server;
}

void Connect(int poll, int slot) {
  const int peer = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<in_port_t>(Server().Port()));
  connect(peer, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  epoll_event event{};
  event.events = EPOLLOUT;
  event.data.u64 = static_cast<std::uint64_t>(peer) << 32U | static_cast<std::uint32_t>(slot);
  epoll_ctl(poll, EPOLL_CTL_ADD, peer, &event);
}

/// The yardstick: one loop that does the same connects, as many at once.
void ConnectByEpoll(benchmark::State& state) {
  Server();
  for ([[maybe_unused]] auto _ : state) {
    const double before = CpuSeconds();
    const int poll = epoll_create1(EPOLL_CLOEXEC);
    int begun = 0;
    while (begun < kAtOnce) Connect(poll, begun++);
    for (int done = 0; done < kChecks;) {
      std::array<epoll_event, kAtOnce> events{};
      const int count = epoll_wait(poll, events.data(), kAtOnce, -1);
      for (int i = 0; i < count; ++i) {
        const int peer = static_cast<int>(events[static_cast<std::size_t>(i)].data.u64 >> 32U);
        int error = 0;
        socklen_t size = sizeof(error);
        getsockopt(peer, SOL_SOCKET, SO_ERROR, &error, &size);
        close(peer);
        if (error != 0) state.SkipWithError("a connect failed");
        ++done;
        if (begun < kChecks) Connect(poll, begun++);
      }
    }
    close(poll);
    state.SetIterationTime((CpuSeconds() - before) / kChecks);
  }
}

/// Runs checks through workers as the service does, so many at once, until all are done. Gives the CPU time of one.
double RunChecks(benchmark::State& state, const QString& module, const QString& properties, int checks, int atOnce) {
  service::ChildKeeper keeper;
  const double before = CpuSeconds();
  {
    const QString layout = QStringLiteral(QUARL_LAYOUT_DIR);
    service::WorkerPool pool({.program = layout + QStringLiteral("/quarl-modulehost"), .threadsAWorker = kAtOnce},
                             keeper);
    service::HostedRunner runner(pool, InstallPaths(layout));
    const service::CheckJob job{1, module, QStringLiteral("local"), QStringLiteral("127.0.0.1"), properties, 30'000};
    QEventLoop loop;
    int begun = 0;
    int done = 0;
    std::function<void()> begin = [&] {
      ++begun;
      runner.Start(job, [&](const service::CheckOutcome& outcome) {
        if (outcome.state != store::TestState::Passed) state.SkipWithError(outcome.text.toUtf8().constData());
        if (++done == checks) loop.quit();
        if (begun < checks) begin();
      });
    };
    for (int i = 0; i < atOnce; ++i) begin();
    loop.exec();
  }
  return (CpuSeconds() - before) / checks;
}

void CheckByWorker(benchmark::State& state) {
  const QString properties =
      QStringLiteral("{\"format\":1,\"module\":\"tcpport\",\"values\":{\"port\":%1}}").arg(Server().Port());
  for ([[maybe_unused]] auto _ : state) {
    state.SetIterationTime(RunChecks(state, QStringLiteral("tcpport.dll"), properties, kChecks, kAtOnce));
  }
}

void SpawnCommand(benchmark::State& state) {
  std::string port = std::to_string(Server().Port());
  std::array<std::string, 5> words{"/usr/lib/nagios/plugins/check_tcp", "-H", "127.0.0.1", "-p", port};
  std::array<char*, words.size() + 1> arguments{};
  for (std::size_t i = 0; i < words.size(); ++i) arguments[i] = words[i].data();
  if (access(words[0].c_str(), X_OK) != 0)
    return state.SkipWithError("check_tcp is missing (monitoring-plugins-basic)");
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  for ([[maybe_unused]] auto _ : state) {
    const double before = CpuSeconds();
    for (int begun = 0, done = 0; done < kCommands; ++done) {
      for (pid_t child = 0; begun < std::min(done + kCommandsAtOnce, kCommands); ++begun) {
        posix_spawn(&child, words[0].c_str(), &actions, nullptr, arguments.data(), environ);
      }
      waitpid(-1, nullptr, 0);
    }
    state.SetIterationTime((CpuSeconds() - before) / kCommands);
  }
  posix_spawn_file_actions_destroy(&actions);
}

void CommandByWorker(benchmark::State& state) {
  const QString properties = QStringLiteral(
                                 "{\"format\":1,\"module\":\"monitoringplugin\",\"values\":{\"program\":\"check_tcp\","
                                 "\"arguments\":[\"-H\",\"{address}\",\"-p\",\"%1\"]}}")
                                 .arg(Server().Port());
  for ([[maybe_unused]] auto _ : state) {
    state.SetIterationTime(
        RunChecks(state, QStringLiteral("monitoringplugin.dll"), properties, kCommands, kCommandsAtOnce));
  }
}

BENCHMARK(ConnectByEpoll)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(CheckByWorker)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(SpawnCommand)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(CommandByWorker)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

}  // namespace
