#include "TlsWire.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

#include "kit/NoBrokenPipeSignal.h"

namespace quarl::tcpport {
namespace {

std::string LastProblem(const char* otherwise) {
  const unsigned long error = ERR_get_error();
  ERR_clear_error();
  const char* reason = error == 0 ? nullptr : ERR_reason_error_string(error);
  return reason == nullptr ? otherwise : reason;
}

SSL_CTX* MakeContext() {
  // The library's end at the process's end would pull the ground from under checks that still run then.
  OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
  SSL_CTX* context = SSL_CTX_new(TLS_client_method());
  if (context == nullptr) throw kit::Error("TLS is not available: " + LastProblem("unknown reason"));
  SSL_CTX_set_default_verify_paths(context);
  SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
  return context;
}

SSL_CTX* Context() {
  static SSL_CTX* const context = MakeContext();
  return context;
}

bool IsAddress(const std::string& name) {
  std::array<unsigned char, sizeof(in6_addr)> bytes{};
  return inet_pton(AF_INET, name.c_str(), bytes.data()) == 1 || inet_pton(AF_INET6, name.c_str(), bytes.data()) == 1;
}

int SizeOf(std::size_t size) {
  return static_cast<int>(std::min<std::size_t>(size, std::numeric_limits<int>::max()));
}

}  // namespace

void TlsWire::Free::operator()(ssl_st* session) const {
  SSL_free(session);
}

TlsWire::TlsWire(kit::Connection& connection, Trust trust, const std::string& name)
    : connection_(connection), trust_(trust), session_(SSL_new(Context())) {
  if (!session_ || SSL_set_fd(session_.get(), connection.Descriptor()) != 1) throw kit::Error("TLS is not available.");
  Expect(trust, name);
}

TlsWire::~TlsWire() {
  const kit::NoBrokenPipeSignal noSignal;
  session_.reset();
  ERR_clear_error();
}

// The library's queue of errors belongs to the thread, on which other sessions go on while this one waits.
template <typename Operation>
TlsWire::Outcome TlsWire::Try(const Operation& operation) {
  const kit::NoBrokenPipeSignal noSignal;
  ERR_clear_error();
  errno = 0;
  const int result = operation(session_.get());
  const int code = errno;
  return {result, SSL_get_error(session_.get(), result), code};
}

kit::Task<void> TlsWire::ShakeHands(const kit::Deadline& deadline) {
  for (;;) {
    const Outcome outcome = Try(SSL_connect);
    if (outcome.result == 1) co_return;
    const long verdict = SSL_get_verify_result(session_.get());
    if (outcome.error == SSL_ERROR_SSL && trust_ != Trust::Anybody && verdict != X509_V_OK)
      throw TlsError(std::string("The certificate is refused: ") + X509_verify_cert_error_string(verdict));
    const bool goesOn = co_await AwaitAfter(outcome, deadline);
    if (!goesOn) throw TlsError("The server ended the connection instead of shaking hands.");
  }
}

void TlsWire::Expect(Trust trust, const std::string& name) {
  SSL_set_verify(session_.get(), trust == Trust::Anybody ? SSL_VERIFY_NONE : SSL_VERIFY_PEER, nullptr);
  const bool address = IsAddress(name);
  if (!name.empty() && !address)
    SSL_ctrl(session_.get(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, const_cast<char*>(name.c_str()));
  if (trust != Trust::ChainAndName) return;
  if (name.empty()) throw TlsError("There is no server's name that the certificate could be for.");
  X509_VERIFY_PARAM* wanted = SSL_get0_param(session_.get());
  const int set = address ? X509_VERIFY_PARAM_set1_ip_asc(wanted, name.c_str())
                          : X509_VERIFY_PARAM_set1_host(wanted, name.c_str(), name.size());
  if (set != 1) throw TlsError("\"" + name + "\" is no server's name that a certificate could be for.");
}

kit::Task<bool> TlsWire::AwaitAfter(Outcome outcome, const kit::Deadline& deadline) {
  switch (outcome.error) {
    case SSL_ERROR_WANT_READ:
      co_await connection_.Await(POLLIN, deadline);
      co_return true;
    case SSL_ERROR_WANT_WRITE:
      co_await connection_.Await(POLLOUT, deadline);
      co_return true;
    case SSL_ERROR_ZERO_RETURN:
      co_return false;
    case SSL_ERROR_SYSCALL:
      if (outcome.code == 0) co_return false;
      throw kit::ConnectionError(kit::ConnectionError::Reason::Closed, "The other side has broken the connection off");
    default:
      throw TlsError("TLS failed: " + LastProblem("unknown reason"));
  }
}

kit::Task<void> TlsWire::Send(std::string_view bytes, const kit::Deadline& deadline) {
  while (!bytes.empty()) {
    const Outcome outcome = Try([&](SSL* session) { return SSL_write(session, bytes.data(), SizeOf(bytes.size())); });
    if (outcome.result > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(outcome.result));
      continue;
    }
    const bool goesOn = co_await AwaitAfter(outcome, deadline);
    if (!goesOn)
      throw kit::ConnectionError(kit::ConnectionError::Reason::Closed, "The server has ended the connection");
  }
}

kit::Task<std::size_t> TlsWire::Receive(std::span<char> room, const kit::Deadline& deadline) {
  for (;;) {
    const Outcome outcome = Try([&](SSL* session) { return SSL_read(session, room.data(), SizeOf(room.size())); });
    if (outcome.result > 0) co_return static_cast<std::size_t>(outcome.result);
    // Many servers end the connection without ending the session; then what has come is all.
    if (outcome.error == SSL_ERROR_SSL && ERR_GET_REASON(ERR_peek_error()) == SSL_R_UNEXPECTED_EOF_WHILE_READING)
      co_return 0;
    const bool goesOn = co_await AwaitAfter(outcome, deadline);
    if (!goesOn) co_return 0;
  }
}

}  // namespace quarl::tcpport
