#pragma once

#include <netinet/in.h>

#include <QString>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>

namespace quarl::netscan {

/// The first IPv4 address of a host name as the system resolves names, network byte order. Blocks as long as the name
/// servers let it.
std::optional<in_addr_t> ResolveName(const QString& name);
/// The host name of an address; empty when there is none. Blocks likewise.
QString ResolveAddress(in_addr_t address);

struct NameResolver {
  std::function<std::optional<in_addr_t>(const QString&)> name = &ResolveName;
  std::function<QString(in_addr_t)> address = &ResolveAddress;
};

/// Look-ups of many names and addresses at once, on threads of their own, of which nobody waits longer than he wants:
/// a thread that a dead name server holds up ends by itself later.
class NameLookUp {
 public:
  explicit NameLookUp(NameResolver resolver = {});
  ~NameLookUp();
  NameLookUp(const NameLookUp&) = delete;
  NameLookUp& operator=(const NameLookUp&) = delete;

  void AskName(const QString& name);
  void AskAddress(in_addr_t address);

  struct Answers {
    std::map<QString, in_addr_t> addresses;  ///< of names; only those found
    std::map<in_addr_t, QString> names;
  };
  /// Waits until all is answered, or the time is over, or a stop is asked for. Once only.
  Answers Await(std::chrono::milliseconds atMost, const std::stop_token& stop = {});

 private:
  struct Shared;
  static void AnswerAll(const std::shared_ptr<Shared>& shared);
  void Queue(std::function<void(Shared&)> question);
  std::shared_ptr<Shared> shared_;
};

}  // namespace quarl::netscan
