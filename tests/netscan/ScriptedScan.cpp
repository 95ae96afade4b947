#include "netscan/ScriptedScan.h"

#include <arpa/inet.h>

#include <algorithm>
#include <deque>
#include <thread>

namespace quarl::netscan {
namespace {

class ScriptedSource final : public HostSource {
 public:
  explicit ScriptedSource(const ScriptedScan& scan) : scan_(scan) {}
  void Start(SourceHost& host) override {
    for (const Sighting& machine : scan_.machines) host.Report(machine);
    host.Note(Q("The note of a source."));
  }
  void Seen(in_addr_t address) override { scan_.heard->push_back(address); }
  bool Done() const override { return !*scan_.held; }

 private:
  ScriptedScan scan_;
};

class ScriptedEcho final : public EchoChannel {
 public:
  explicit ScriptedEcho(std::vector<in_addr_t> silent) : silent_(std::move(silent)) {}
  EchoMethod Method() const override { return EchoMethod::Raw; }
  bool Send(std::uint16_t sequence, in_addr_t address) override {
    const bool answers = std::find(silent_.begin(), silent_.end(), address) == silent_.end();
    answers_.push_back({sequence, address, answers ? EchoStatus::Answered : EchoStatus::HostUnreachable});
    return true;
  }
  std::optional<EchoAnswer> Receive() override {
    if (answers_.empty()) return std::nullopt;
    const EchoAnswer answer = answers_.front();
    answers_.pop_front();
    return answer;
  }
  void Wait(std::chrono::milliseconds /*atMost*/) override { std::this_thread::yield(); }

 private:
  std::vector<in_addr_t> silent_;
  std::deque<EchoAnswer> answers_;
};

}  // namespace

ScanSetup ScriptedScan::Setup() const {
  ++*searches;
  ScanSetup setup;
  setup.subnets = {{"cable", 1, inet_addr("10.0.0.250"), inet_addr("255.255.252.0"), inet_addr("10.0.3.255")}};
  setup.makeSources = [scan = *this](const ScanSetup&) {
    std::vector<std::unique_ptr<HostSource>> sources;
    sources.push_back(std::make_unique<ScriptedSource>(scan));
    return sources;
  };
  setup.openEcho = [quiet = silent] { return std::make_unique<ScriptedEcho>(quiet); };
  setup.resolver.name = [](const QString&) { return std::nullopt; };
  setup.resolver.address = [](in_addr_t) { return QString(); };
  return setup;
}

Sighting Saw(const char* source, const char* address, const char* name, NameKind kind) {
  Sighting sighting;
  sighting.source = QLatin1String(source);
  sighting.address = *address == '\0' ? 0 : inet_addr(address);
  sighting.name = QString::fromUtf8(name);
  sighting.nameKind = *name == '\0' ? NameKind::None : kind;
  return sighting;
}

Sighting Machine(const QString& name, const char* address, Family family) {
  Sighting seen = Saw("NetBIOS", address, name.toUtf8().constData());
  seen.detail = Q("workgroup <b>LAB</b>");
  if (family == Family::Server) seen.type = kNtServerType;
  if (family == Family::Windows98) {
    seen.platform = kDosPlatform;
    seen.version = Sighting::Version{4, 10, 0};
  }
  return seen;
}

}  // namespace quarl::netscan
