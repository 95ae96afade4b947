#include <poll.h>

#include "netscan/api/HostScan.h"
#include "netscan/api/HostSources.h"

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;

// Echoes to neighbours that do not exist stay in a socket's send buffer for seconds, so each window has a channel of
// its own.
class PingSweep final : public HostSource {
 public:
  PingSweep(std::function<std::unique_ptr<EchoChannel>()> open, ScanLoop::Now now)
      : open_(std::move(open)), now_(std::move(now)) {}
  ~PingSweep() override { CloseChannel(); }

  void Start(SourceHost& host) override {
    host_ = &host;
    NextWindow();
  }
  bool Done() const override { return done_; }
  std::optional<std::size_t> Probed() const override { return done_ ? host_->Addresses().size() : begin_ + reported_; }

 private:
  void NextWindow();
  void Step();
  void Take(in_addr_t address, const EchoResult& result);
  void WatchChannel();
  void CloseChannel();

  std::function<std::unique_ptr<EchoChannel>()> open_;
  ScanLoop::Now now_;
  SourceHost* host_ = nullptr;
  std::unique_ptr<EchoChannel> channel_;
  std::optional<EchoSession> session_;
  int watched_ = -1;
  std::size_t begin_ = 0;     ///< of the window under way
  std::size_t reported_ = 0;  ///< in it
  std::uint64_t timer_ = 0;   ///< the newest; older ones have nothing to do
  bool done_ = false;
};

// A channel that has broken down has no descriptor any more.
void PingSweep::WatchChannel() {
  const int descriptor = channel_ ? channel_->Descriptor() : -1;
  if (descriptor == watched_) return;
  if (watched_ >= 0) host_->Loop().Forget(watched_);
  watched_ = descriptor;
  if (watched_ >= 0) host_->Loop().Watch(watched_, POLLIN, [this](short) { Step(); });
}

void PingSweep::CloseChannel() {
  if (watched_ >= 0) host_->Loop().Forget(std::exchange(watched_, -1));
  session_.reset();
  channel_.reset();
}

void PingSweep::NextWindow() {
  CloseChannel();
  begin_ += std::exchange(reported_, 0);
  const auto& all = host_->Addresses();
  if (begin_ < all.size()) channel_ = open_();
  done_ = !channel_;
  if (done_) return;
  const auto first = all.begin() + static_cast<std::ptrdiff_t>(begin_);
  const auto size = static_cast<std::ptrdiff_t>(std::min(all.size() - begin_, EchoLimits::kMaxUnderWay));
  session_.emplace(*channel_, now_);
  session_->Begin({first, first + size}, {}, [this](std::size_t index, const EchoResult& result) {
    Take(host_->Addresses()[begin_ + index], result);
  });
  Step();
}

void PingSweep::Step() {
  const auto wait = session_->Step();
  WatchChannel();
  const std::uint64_t timer = ++timer_;
  host_->Loop().After(session_->Finished() ? 0ms : wait, [this, timer] {
    if (timer != timer_ || !session_) return;
    session_->Finished() ? NextWindow() : Step();
  });
}

void PingSweep::Take(in_addr_t address, const EchoResult& result) {
  ++reported_;
  if (result.status != EchoStatus::Answered) return;
  Sighting sighting;
  sighting.source = QStringLiteral("echo");
  sighting.address = address;
  sighting.echo = result.status;
  host_->Report(sighting);
}

}  // namespace

std::unique_ptr<HostSource> MakePingSweep(const ScanSetup& setup) {
  return std::make_unique<PingSweep>(setup.openEcho, setup.now);
}

}  // namespace quarl::netscan
