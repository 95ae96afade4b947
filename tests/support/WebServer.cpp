#include "support/WebServer.h"

#include <arpa/inet.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace quarl::testing {
namespace {

constexpr long kDay = 24 * 60 * 60;

class PlainPeer : public WebServer::Peer {
 public:
  explicit PlainPeer(int connection) : connection_(connection) {}
  bool Write(const std::string& bytes) override {
    for (std::size_t done = 0; done < bytes.size();) {
      const ssize_t count = ::send(connection_, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
      if (count <= 0) return false;
      done += static_cast<std::size_t>(count);
    }
    return true;
  }
  std::string Read() override {
    std::array<char, 4096> part{};
    const ssize_t count = ::recv(connection_, part.data(), part.size(), 0);
    return {part.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }

 private:
  int connection_;
};

class TlsPeer : public WebServer::Peer {
 public:
  TlsPeer(SSL_CTX* context, int connection) : tls_(SSL_new(context), &SSL_free) {
    SSL_set_fd(tls_.get(), connection);
    good_ = SSL_accept(tls_.get()) == 1;
  }
  ~TlsPeer() override {
    if (good_) SSL_shutdown(tls_.get());
  }
  bool Good() const { return good_; }
  bool Write(const std::string& bytes) override {
    return SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
  }
  std::string Read() override {
    std::array<char, 4096> part{};
    const int count = SSL_read(tls_.get(), part.data(), static_cast<int>(part.size()));
    return {part.data(), static_cast<std::size_t>(std::max(count, 0))};
  }

 private:
  std::unique_ptr<SSL, decltype(&SSL_free)> tls_;
  bool good_ = false;
};

/// Head, and as much of a body as it announces.
std::string ReadRequest(WebServer::Peer& peer) {
  constexpr const char* kLength = "Content-Length: ";
  std::string request;
  for (;;) {
    const std::size_t end = request.find("\r\n\r\n");
    if (end != std::string::npos) {
      const std::size_t at = request.find(kLength);
      const std::size_t length = at < end ? std::stoul(request.substr(at + std::string(kLength).size())) : 0;
      if (request.size() >= end + 4 + length) return request;
    }
    const std::string part = peer.Read();
    if (part.empty()) return request;
    request += part;
  }
}

int Listen(const std::string& address, std::uint16_t& port) {
  const bool six = address.find(':') != std::string::npos;
  const int listener = ::socket(six ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in6 place6{};
  sockaddr_in place4{};
  place6.sin6_family = AF_INET6;
  place4.sin_family = AF_INET;
  ::inet_pton(AF_INET6, address.c_str(), &place6.sin6_addr);
  ::inet_pton(AF_INET, address.c_str(), &place4.sin_addr);
  auto* const place = six ? reinterpret_cast<sockaddr*>(&place6) : reinterpret_cast<sockaddr*>(&place4);
  socklen_t size = six ? sizeof place6 : sizeof place4;
  if (::bind(listener, place, size) != 0 || ::listen(listener, 16) != 0 || ::getsockname(listener, place, &size) != 0)
    throw std::runtime_error("No listening socket at " + address);
  port = ntohs(six ? place6.sin6_port : place4.sin_port);
  return listener;
}

}  // namespace

Certificate::Certificate(const std::string& names, int days) {
  const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
  const std::unique_ptr<X509, decltype(&X509_free)> own(X509_new(), &X509_free);
  X509_set_version(own.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(own.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(own.get()), -kDay * 100);
  X509_gmtime_adj(X509_getm_notAfter(own.get()), kDay * days);
  X509_set_pubkey(own.get(), key.get());
  X509_NAME* const subject = X509_get_subject_name(own.get());
  X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(names.c_str()), -1, -1,
                             0);
  X509_set_issuer_name(own.get(), subject);
  X509_EXTENSION* const holds = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, names.c_str());
  X509_add_ext(own.get(), holds, -1);
  X509_EXTENSION_free(holds);
  X509_sign(own.get(), key.get(), EVP_sha256());
  context_ = {SSL_CTX_new(TLS_server_method()), &SSL_CTX_free};
  if (SSL_CTX_use_certificate(context_.get(), own.get()) != 1 || SSL_CTX_use_PrivateKey(context_.get(), key.get()) != 1)
    throw std::runtime_error("No certificate could be made");
  path_ = "/tmp/quarl-certificate-XXXXXX";
  const int file = ::mkstemp(path_.data());
  FILE* const stream = ::fdopen(file, "w");
  PEM_write_X509(stream, own.get());
  std::fclose(stream);
}

Certificate::~Certificate() {
  ::unlink(path_.c_str());
}

LoopbackServer::LoopbackServer(Serve serve, const std::string& address)
    : serve_(std::move(serve)), listener_(Listen(address, port_)), thread_([this] { Run(); }) {}

LoopbackServer::~LoopbackServer() {
  ::shutdown(listener_, SHUT_RDWR);
  const int connection = connection_;
  if (connection >= 0) ::shutdown(connection, SHUT_RDWR);
  thread_.join();
  ::close(listener_);
}

void LoopbackServer::Run() {
  sigset_t brokenPipe;  // the other side may end first
  sigemptyset(&brokenPipe);
  sigaddset(&brokenPipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
  for (;;) {
    const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) return;
    connection_ = connection;
    serve_(connection);
    connection_ = -1;
    ::close(connection);
  }
}

WebServer::WebServer(Answer answer, const Certificate* certificate, const std::string& address)
    : answer_(std::move(answer)),
      context_(certificate == nullptr ? nullptr : certificate->Context()),
      server_([this](int connection) { ServeOne(connection); }, address) {}

std::vector<std::string> WebServer::Requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void WebServer::ServeOne(int connection) {
  std::unique_ptr<Peer> peer;
  if (context_ == nullptr) {
    peer = std::make_unique<PlainPeer>(connection);
  } else {
    auto tls = std::make_unique<TlsPeer>(context_.get(), connection);
    if (!tls->Good()) return;
    peer = std::move(tls);
  }
  const std::string request = ReadRequest(*peer);
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
  }
  answer_(request, *peer);
}

}  // namespace quarl::testing
