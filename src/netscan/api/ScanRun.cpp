#include "netscan/api/ScanRun.h"

#include <algorithm>
#include <thread>

#include "netscan/api/HostName.h"

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;
constexpr auto kTurn = 50ms;  // a stop is seen, and progress told, this often
constexpr qsizetype kMostWorkgroups = 64;
constexpr std::size_t kSightingsOfAHost = 16;  // on the average
constexpr int kSightingsOfASource = 16;        // of one address

bool IsLoopback(in_addr_t address) {
  return (ntohl(address) >> 24) == IN_LOOPBACKNET;
}

}  // namespace

ScanRun::ScanRun(const ScanSetup& setup, std::stop_token stop, Publish publish)
    : setup_(setup),
      stop_(std::move(stop)),
      publish_(std::move(publish)),
      loop_(setup.now),
      addresses_(SweepAddresses(setup.subnets, setup.bounds.addresses)) {
  for (const Subnet& subnet : setup.subnets)
    if (IsLargerThanASweep(subnet))
      Note(QStringLiteral("Of the large network around %1 only the nearest addresses were asked.")
               .arg(AddressText(subnet.own)));
  if (addresses_.size() >= setup.bounds.addresses)
    Note(QStringLiteral("Only %1 addresses of the attached networks were asked.").arg(setup.bounds.addresses));
  if (setup.makeSources) sources_ = setup.makeSources(setup);
}

bool ScanRun::IsOwn(in_addr_t address) const {
  return IsLoopback(address) || std::find(setup_.own.begin(), setup_.own.end(), address) != setup_.own.end();
}

bool ScanRun::IsAttached(in_addr_t address) const {
  return std::any_of(setup_.subnets.begin(), setup_.subnets.end(),
                     [address](const Subnet& subnet) { return subnet.Holds(address); });
}

bool ScanRun::Swept() const {
  return std::all_of(sources_.begin(), sources_.end(), [this](const auto& source) {
    return source->Probed().value_or(addresses_.size()) >= addresses_.size();
  });
}

bool ScanRun::SourcesAreDone() const {
  return newAddresses_.empty() && newWorkgroups_.isEmpty() &&
         std::all_of(sources_.begin(), sources_.end(), [](const auto& source) { return source->Done(); });
}

// A machine that tells more and more leaves room for the others.
bool ScanRun::IsNew(const Sighting& sighting) {
  const QString teller = sighting.source + QChar(1) + QString::number(sighting.address);
  const QString key = teller + QChar(1) + sighting.name + QChar(1) + sighting.detail;
  if (known_.contains(key) || bySource_.value(teller) >= kSightingsOfASource) return false;
  known_.insert(key);
  ++bySource_[teller];
  return true;
}

void ScanRun::Report(const Sighting& sighting) {
  if (sighting.address == 0 || IsAttached(sighting.address)) Keep(sighting);
}

void ScanRun::Keep(const Sighting& sighting) {
  const in_addr_t address = sighting.address;
  if (IsOwn(address) || (address != 0 && !IsHostAddress(address))) return;
  if (sightings_.size() >= kSightingsOfAHost * setup_.bounds.hosts) return;
  if (!seen_.contains(address) && seen_.size() >= setup_.bounds.hosts) return;
  if (!IsNew(sighting)) return;
  sightings_.push_back(sighting);
  if (address != 0 && seen_.insert(address).second) Suspect(address);
  if (sighting.workgroup.isEmpty() || workgroups_.size() >= kMostWorkgroups) return;
  if (workgroups_.contains(sighting.workgroup)) return;
  workgroups_.insert(sighting.workgroup);
  newWorkgroups_ += sighting.workgroup;
}

void ScanRun::Suspect(in_addr_t address) {
  if (IsOwn(address) || suspected_.size() >= 2 * setup_.bounds.hosts) return;
  if (suspected_.insert(address).second) newAddresses_.push_back(address);
}

void ScanRun::Note(const QString& sentence) {
  notes_ += sentence;
}

// Sources report in the middle of their own work, so the others hear of it only after it.
void ScanRun::PassOn() {
  const auto addresses = std::exchange(newAddresses_, {});
  const auto workgroups = std::exchange(newWorkgroups_, {});
  for (const auto& source : sources_) {
    for (const in_addr_t address : addresses) source->Seen(address);
    for (const QString& workgroup : workgroups) source->SeenWorkgroup(workgroup);
  }
}

ScanProgress ScanRun::Progress() const {
  ScanProgress progress;
  progress.sources = static_cast<int>(sources_.size());
  progress.addresses = static_cast<int>(addresses_.size());
  std::size_t probed = addresses_.size();
  for (const auto& source : sources_) {
    if (source->Done()) ++progress.sourcesDone;
    probed = std::min(probed, source->Probed().value_or(probed));
  }
  progress.addressesProbed = static_cast<int>(probed);
  progress.hosts = static_cast<int>(seen_.size());
  return progress;
}

bool ScanRun::AskSources() {
  const auto end = loop_.Time() + setup_.bounds.sources;
  for (const auto& source : sources_) source->Start(*this);
  auto told = loop_.Time() - kTurn;
  while (!SourcesAreDone()) {
    if (stop_.stop_requested() || loop_.Time() >= end) return false;
    loop_.Turn(kTurn);
    PassOn();
    if (loop_.Time() - told < kTurn) continue;
    told = loop_.Time();
    publish_(Progress());
  }
  return true;
}

std::vector<MergedHost> ScanRun::Merged() const {
  auto hosts = MergeSightings(sightings_);
  for (MergedHost& host : hosts)
    if (const auto echo = echoes_.find(host.address); !host.echo && echo != echoes_.end()) host.echo = echo->second;
  return hosts;
}

// Only for what discovery itself could not find out.
void ScanRun::StartLookUps(NameLookUp& lookUp) const {
  for (const MergedHost& host : Merged()) {
    if (host.address == 0) lookUp.AskName(host.machine.name);
    if (host.machine.name.isEmpty()) lookUp.AskAddress(host.address);
  }
}

// A name without address that turned out to be our own.
void ScanRun::Forget(const QString& name) {
  std::erase_if(sightings_, [&](const Sighting& seen) { return seen.address == 0 && CleanName(seen.name) == name; });
}

void ScanRun::TakeLookUps(const NameLookUp::Answers& answers) {
  const auto keep = [this](in_addr_t address, const QString& name, NameKind kind) {
    Sighting sighting;
    sighting.source = QStringLiteral("name server");
    sighting.address = address;
    sighting.name = name;
    sighting.nameKind = kind;
    Keep(sighting);
  };
  for (const auto& [address, name] : answers.names) keep(address, name, NameKind::LookedUp);
  for (const auto& [name, address] : answers.addresses) {
    if (IsOwn(address)) Forget(name);
    keep(address, name, NameKind::Service);
  }
}

// All at once, so that any number of silent machines up to a window costs one time-out.
void ScanRun::AskEchoes() {
  std::vector<in_addr_t> silent;
  for (const MergedHost& host : Merged())
    if (host.address != 0 && !host.echo) silent.push_back(host.address);
  if (silent.empty() || !setup_.echoFound || !setup_.openEcho || stop_.stop_requested()) return;
  const auto channel = setup_.openEcho();
  if (!channel) return;
  for (const in_addr_t address : silent) echoes_[address] = EchoStatus::TimedOut;
  EchoSession session(*channel, setup_.now);
  session.Begin(silent, {},
                [&](std::size_t index, const EchoResult& result) { echoes_[silent[index]] = result.status; });
  const auto end = loop_.Time() + setup_.bounds.echoes;
  for (;;) {
    const auto wait = session.Step();
    if (session.Finished() || stop_.stop_requested() || loop_.Time() >= end) return;
    channel->Wait(wait);
  }
}

ScanResult ScanRun::Run() {
  ScanResult result;
  result.complete = AskSources();
  NameLookUp lookUp(setup_.resolver);
  StartLookUps(lookUp);
  const auto namesEnd = loop_.Time() + setup_.bounds.names;
  AskEchoes();
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(namesEnd - loop_.Time());
  TakeLookUps(lookUp.Await(std::max(left, 0ms), stop_));
  AskEchoes();  // those whose address was only looked up
  result.hosts = ListHosts(Merged());
  result.notes = notes_;
  result.complete = result.complete && !stop_.stop_requested();
  return result;
}

}  // namespace quarl::netscan
