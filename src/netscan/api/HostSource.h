#pragma once

#include <netinet/in.h>

#include <QString>
#include <memory>
#include <optional>
#include <vector>

#include "netscan/api/FoundHost.h"
#include "netscan/api/ScanLoop.h"
#include "netscan/api/Subnets.h"

namespace quarl::netscan {

/// How good a name is: of several the highest is shown.
enum class NameKind { None, LookedUp, Device, Service, Computer };

/// One thing that one source learnt of one machine. All of it comes from the network and may be untrue or hostile.
struct Sighting {
  QString source;         ///< "NetBIOS", "SMB", "mDNS" ...; shown to the user
  in_addr_t address = 0;  ///< network byte order; 0 when unknown
  QString name;           ///< as sent; whoever keeps it cleans it with CleanName()
  NameKind nameKind = NameKind::None;
  QString workgroup;  ///< as sent
  std::optional<quint32> platform;
  struct Version {
    qint32 major = 0, minor = 0, build = 0;
  };
  std::optional<Version> version;
  quint32 type = 0;  ///< bits of the server-type word that this source can vouch for
  QString detail;    ///< what a tool tip says in brackets behind the source
  std::optional<EchoStatus> echo;
};

struct ScanPorts {
  in_port_t nameService = 137;
  in_port_t datagram = 138;
  in_port_t files = 445;
  in_port_t multicastNames = 5353;
  in_port_t webDiscovery = 3702;
};

struct ScanBounds {
  using Time = std::chrono::milliseconds;
  Time source{1000};             ///< a source waits for answers this long after its last question
  Time connection{700};          ///< for each connection, from the first packet to the last
  Time names{1000};              ///< for all look-ups together
  Time sources{10000};           ///< for all sources together
  Time echoes{3000};             ///< for the last echoes, to machines that have not answered one
  std::size_t addresses = 2044;  ///< that are swept; the kernel's neighbour table takes about 340 a second
  std::size_t hosts = 10000;     ///< that are kept; what is seen above that is dropped
  std::size_t connectionsAtOnce = 128;
};

/// What a scan gives to its sources. Lives longer than they; one thread.
class SourceHost {
 public:
  virtual ScanLoop& Loop() = 0;
  virtual const std::vector<Subnet>& Subnets() const = 0;
  /// Addresses to sweep, each once.
  virtual const std::vector<in_addr_t>& Addresses() const = 0;
  virtual const ScanPorts& Ports() const = 0;
  virtual const ScanBounds& Bounds() const = 0;
  virtual bool IsOwn(in_addr_t address) const = 0;
  /// Whether the address lies in an attached network. What is reported of others is dropped: a forged sender would let
  /// anybody send us anywhere.
  virtual bool IsAttached(in_addr_t address) const = 0;
  virtual void Report(const Sighting& sighting) = 0;
  /// Lets every source ask an address of which nobody knows whether a machine is there.
  virtual void Suspect(in_addr_t address) = 0;
  /// Whether every sweep has asked every address.
  virtual bool Swept() const = 0;
  /// A sentence for the result, when this machine or user cannot do something.
  virtual void Note(const QString& sentence) = 0;

 protected:
  ~SourceHost() = default;
};

/// A way of finding machines. It never blocks: it watches descriptors and times of the loop. Whatever happens it is
/// done within its bound. It lives until the loop has turned for the last time.
class HostSource {
 public:
  HostSource() = default;
  HostSource(const HostSource&) = delete;
  HostSource& operator=(const HostSource&) = delete;
  virtual ~HostSource() = default;

  virtual void Start(SourceHost& host) = 0;
  /// Called once with each address that any source has reported or suspects.
  virtual void Seen(in_addr_t /*address*/) {}
  /// Called with each new workgroup that any source has reported.
  virtual void SeenWorkgroup(const QString& /*workgroup*/) {}
  virtual bool Done() const = 0;
  /// How many of the addresses it has asked; nothing from a source that does not sweep.
  virtual std::optional<std::size_t> Probed() const { return std::nullopt; }
};

}  // namespace quarl::netscan
