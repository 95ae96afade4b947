#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <charconv>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <tuple>

#include "DialogHost.h"
#include "ModuleCall.h"
#include "OverrunWatch.h"
#include "Worker.h"

// quarl-modulehost             makes the one call that is asked for on descriptor 3
// quarl-modulehost --worker N  makes many, N at once, until the other end of descriptor 3 has gone

namespace {

using namespace quarl;

constexpr int kUsage = 64;
constexpr int kNotSent = 70;
constexpr int kMostThreads = 1024;

bool IsSocket(int descriptor) {
  int type = 0;
  socklen_t size = sizeof(type);
  return getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_STREAM;
}

bool OtherEndHasGone() {
  pollfd channel{plugins::kHostChannel, POLLRDHUP, 0};
  return poll(&channel, 1, 0) > 0;
}

// Ends with its starter and leaves no core file: 0 would still let a handler program collect one, 1 does not.
void PrepareProcess() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (OtherEndHasGone()) _exit(0);
  const rlimit nothing{1, 1};
  setrlimit(RLIMIT_CORE, &nothing);
}

std::string ProgramFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
}

plugins::HostReply MakeCall(host::DialogHost& dialogs, const std::string& folder, const plugins::HostRequest& request) {
  try {
    const host::HelperLibrary helper(folder, request.kind, dialogs.For(request));
    const plugins::HostReply reply = host::CallModule(helper, request);
    return dialogs.Failure().empty() ? reply : host::Refusal(request.id, dialogs.Failure());
  } catch (const host::CallError& error) {
    return host::Refusal(request.id, error.what());
  }
}

int Run(int threads) {
  PrepareProcess();
  host::HostChannel channel(plugins::kHostChannel);
  host::OverrunWatch::Install(channel);
  const std::string folder = ProgramFolder();
  host::DialogHost dialogs(channel, folder);
  if (threads > 0) {
    host::Serve(channel, folder, dialogs.Plain(), threads);
    return 0;
  }
  const auto request = channel.Receive();
  if (!request) return kUsage;
  const plugins::HostReply reply = MakeCall(dialogs, folder, *request);
  std::ignore = std::fflush(nullptr);
  return channel.Send(reply) ? 0 : kNotSent;
}

// -1: not to be understood; 0: one call.
int Threads(int argc, char** argv) {
  if (argc == 1) return 0;
  int threads = -1;
  if (argc == 3 && std::strcmp(argv[1], "--worker") == 0) {
    const char* const end = argv[2] + std::strlen(argv[2]);
    if (std::from_chars(argv[2], end, threads).ptr != end) return -1;
  }
  return threads >= 1 && threads <= kMostThreads ? threads : -1;
}

}  // namespace

int main(int argc, char** argv) {
  const int threads = Threads(argc, argv);
  if (threads < 0 || !IsSocket(plugins::kHostChannel)) {
    std::ignore = std::fputs("quarl-modulehost is started by Quarl's programs, not by hand.\n", stderr);
    return kUsage;
  }
  int code = kNotSent;
  try {
    code = Run(threads);
  } catch (const std::exception& error) {
    std::ignore = std::fprintf(stderr, "%s\n", error.what());
  }
  // A module's threads and destructors are not waited for.
  std::ignore = std::fflush(nullptr);
  _exit(code);
}
