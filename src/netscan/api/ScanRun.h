#pragma once

#include <QSet>
#include <map>
#include <stop_token>
#include <unordered_set>

#include "netscan/api/HostMerge.h"
#include "netscan/api/HostScan.h"

namespace quarl::netscan {

/// The work of one scan, from the first question to the merged list. Blocks its thread.
class ScanRun final : private SourceHost {
 public:
  using Publish = std::function<void(const ScanProgress&)>;

  /// @param setup must outlive the run.
  ScanRun(const ScanSetup& setup, std::stop_token stop, Publish publish);

  ScanResult Run();
  ScanProgress Progress() const;

 private:
  ScanLoop& Loop() override { return loop_; }
  const std::vector<Subnet>& Subnets() const override { return setup_.subnets; }
  const std::vector<in_addr_t>& Addresses() const override { return addresses_; }
  const ScanPorts& Ports() const override { return setup_.ports; }
  const ScanBounds& Bounds() const override { return setup_.bounds; }
  bool IsOwn(in_addr_t address) const override;
  bool IsAttached(in_addr_t address) const override;
  bool Swept() const override;
  void Report(const Sighting& sighting) override;
  void Suspect(in_addr_t address) override;
  void Note(const QString& sentence) override;

  bool AskSources();
  bool SourcesAreDone() const;
  void PassOn();
  bool IsNew(const Sighting& sighting);
  void Keep(const Sighting& sighting);
  void StartLookUps(NameLookUp& lookUp) const;
  void Forget(const QString& name);
  void TakeLookUps(const NameLookUp::Answers& answers);
  void AskEchoes();
  std::vector<MergedHost> Merged() const;

  const ScanSetup& setup_;
  std::stop_token stop_;
  Publish publish_;
  ScanLoop loop_;  // before the sources, which use it
  std::vector<in_addr_t> addresses_;
  std::vector<std::unique_ptr<HostSource>> sources_;
  std::vector<Sighting> sightings_;
  QSet<QString> known_;           ///< what stands in sightings_
  QHash<QString, int> bySource_;  ///< how many of each source and address do
  QStringList notes_;
  std::unordered_set<in_addr_t> seen_, suspected_;
  std::vector<in_addr_t> newAddresses_;  ///< not yet passed on to the sources
  QStringList newWorkgroups_;
  QSet<QString> workgroups_;
  std::map<in_addr_t, EchoStatus> echoes_;  ///< the last ones
};

}  // namespace quarl::netscan
