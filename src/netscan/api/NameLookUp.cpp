#include "netscan/api/NameLookUp.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace quarl::netscan {
namespace {

constexpr int kThreads = 16;

}  // namespace

std::optional<in_addr_t> ResolveName(const QString& name) {
  if (name.isEmpty() || name.contains(QChar())) return std::nullopt;
  hostent entry{};
  hostent* found = nullptr;
  int error = 0;
  std::vector<char> space(std::size_t{128} * 1024);  // more than any answer of a name server
  if (gethostbyname2_r(name.toUtf8().constData(), AF_INET, &entry, space.data(), space.size(), &found, &error) != 0 ||
      found == nullptr || found->h_addr_list[0] == nullptr || found->h_length != sizeof(in_addr_t))
    return std::nullopt;
  return reinterpret_cast<const in_addr*>(found->h_addr_list[0])->s_addr;
}

QString ResolveAddress(in_addr_t address) {
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = address;
  std::array<char, NI_MAXHOST> host{};
  if (getnameinfo(reinterpret_cast<const sockaddr*>(&name), sizeof name, host.data(), host.size(), nullptr, 0,
                  NI_NAMEREQD) != 0)
    return {};
  return QString::fromUtf8(host.data());
}

/// What the threads and whoever waits for them share; it lives as long as the last of them.
struct NameLookUp::Shared {
  NameResolver resolver;
  std::mutex mutex;
  std::condition_variable_any changed;
  std::deque<std::function<void(Shared&)>> waiting;
  int threads = 0;
  Answers answers;
};

NameLookUp::NameLookUp(NameResolver resolver) : shared_(std::make_shared<Shared>()) {
  shared_->resolver = std::move(resolver);
}

NameLookUp::~NameLookUp() {
  const std::lock_guard lock(shared_->mutex);
  shared_->waiting.clear();
}

void NameLookUp::AskName(const QString& name) {
  Queue([name](Shared& shared) {
    const auto address = shared.resolver.name(name);
    const std::lock_guard lock(shared.mutex);
    if (address) shared.answers.addresses.emplace(name, *address);
  });
}

void NameLookUp::AskAddress(in_addr_t address) {
  Queue([address](Shared& shared) {
    const QString name = shared.resolver.address(address);
    const std::lock_guard lock(shared.mutex);
    if (!name.isEmpty()) shared.answers.names.emplace(address, name);
  });
}

void NameLookUp::AnswerAll(const std::shared_ptr<Shared>& shared) {
  std::unique_lock lock(shared->mutex);
  while (!shared->waiting.empty()) {
    const auto next = std::move(shared->waiting.front());
    shared->waiting.pop_front();
    lock.unlock();
    next(*shared);
    lock.lock();
  }
  --shared->threads;
  shared->changed.notify_all();
}

void NameLookUp::Queue(std::function<void(Shared&)> question) {
  const std::lock_guard lock(shared_->mutex);
  shared_->waiting.push_back(std::move(question));
  if (shared_->threads >= kThreads) return;
  try {
    std::thread(&NameLookUp::AnswerAll, shared_).detach();
    ++shared_->threads;
  } catch (const std::system_error&) {
    // No thread is to be had: this name stays unknown unless another thread still runs.
  }
}

NameLookUp::Answers NameLookUp::Await(std::chrono::milliseconds atMost, const std::stop_token& stop) {
  std::unique_lock lock(shared_->mutex);
  shared_->changed.wait_for(lock, stop, atMost, [this] { return shared_->threads == 0; });
  shared_->waiting.clear();
  return std::exchange(shared_->answers, {});
}

}  // namespace quarl::netscan
