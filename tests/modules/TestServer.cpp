#include "modules/TestServer.h"

#include <sys/socket.h>

#include <array>
#include <fstream>
#include <iterator>

namespace quarl::testing {
namespace {

void SendAll(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void ReadToEnd(int connection) {
  std::array<char, 4096> room;
  while (recv(connection, room.data(), room.size(), 0) > 0) {
  }
}

}  // namespace

TestServer::Serve TestServer::Says(std::string text) {
  return [text](int connection) {
    SendAll(connection, text);
    ReadToEnd(connection);
  };
}

TestServer::Serve TestServer::Answers(std::string question, std::string answer) {
  return [question, answer](int connection) {
    std::string heard;
    std::array<char, 100> room;
    while (heard.find(question) == std::string::npos) {
      const ssize_t received = recv(connection, room.data(), room.size(), 0);
      if (received <= 0) return;
      heard.append(room.data(), static_cast<std::size_t>(received));
    }
    for (std::size_t at = 0; at < answer.size(); at += 2) SendAll(connection, std::string_view(answer).substr(at, 2));
    ReadToEnd(connection);
  };
}

TestServer::Serve TestServer::Listens() {
  return &ReadToEnd;
}

TestCertificate::TestCertificate(const std::string& name, int days) : certificate_("DNS:" + name, days) {
  std::ifstream file(certificate_.Path());
  pem_.assign(std::istreambuf_iterator(file), {});
}

TestServer::Serve TestCertificate::Says(std::string text) const {
  return [context = certificate_.Context(), text](int connection) {
    SSL* session = SSL_new(context.get());
    SSL_set_fd(session, connection);
    std::array<char, 100> room;
    if (SSL_accept(session) == 1 && SSL_write(session, text.data(), static_cast<int>(text.size())) > 0)
      while (SSL_read(session, room.data(), static_cast<int>(room.size())) > 0) {
      }
    SSL_free(session);
  };
}

}  // namespace quarl::testing
