#include <algorithm>

#include "netscan/api/HostSources.h"
#include "netscan/api/NeighbourTable.h"

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;
constexpr auto kBetweenReads = 150ms;

class NeighbourSource final : public HostSource {
 public:
  void Start(SourceHost& host) override {
    host_ = &host;
    Read();
  }
  bool Done() const override { return done_; }

 private:
  // The sweeps make the kernel look for every machine of the link, so a reading a moment after them finds them all.
  void Read() {
    done_ = swept_;
    swept_ = host_->Swept();
    for (const Neighbour& neighbour : ReadNeighbours())
      if (IsAttached(neighbour)) Tell(neighbour);
    if (!done_) host_->Loop().After(kBetweenReads, [this] { Read(); });
  }

  bool IsAttached(const Neighbour& neighbour) const {
    const auto& subnets = host_->Subnets();
    return std::any_of(subnets.begin(), subnets.end(), [&](const Subnet& subnet) {
      return subnet.index == neighbour.interface && subnet.Holds(neighbour.address);
    });
  }

  void Tell(const Neighbour& neighbour) {
    if (!neighbour.confirmed) return host_->Suspect(neighbour.address);
    Sighting sighting;
    sighting.source = QStringLiteral("neighbour table");
    sighting.address = neighbour.address;
    host_->Report(sighting);
  }

  SourceHost* host_ = nullptr;
  bool swept_ = false;  ///< at the last reading
  bool done_ = false;
};

}  // namespace

std::unique_ptr<HostSource> MakeNeighbourSource() {
  return std::make_unique<NeighbourSource>();
}

}  // namespace quarl::netscan
