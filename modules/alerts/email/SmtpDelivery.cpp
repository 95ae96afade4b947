#include "alerts/email/SmtpDelivery.h"

#include <algorithm>
#include <cstring>

#include "alerts/common/Curl.h"
#include "kit/Text.h"

namespace quarl::alerts {
namespace {

/// Listens to the lines of both sides, because the library tells of a refusal no more than its number.
class Conversation {
 public:
  const std::string& LastRefusal() const { return lastRefusal_; }
  const std::vector<SmtpRefusal>& Refused() const { return refused_; }

  void Said(std::string_view line) {
    constexpr std::string_view kRecipient = "RCPT TO:<";
    const std::size_t end = line.find('>');
    const bool names = line.starts_with(kRecipient) && end != std::string_view::npos;
    recipient_ = names ? line.substr(kRecipient.size(), end - kRecipient.size()) : "";
  }
  void Heard(std::string_view line) {
    // "550-..." is followed by another line of the same reply.
    const bool last = line.size() >= 3 && (line.size() == 3 || line[3] == ' ' || line[3] == '\r');
    if (!last || (line[0] != '4' && line[0] != '5')) return;
    lastRefusal_ = kit::OneLine(line, 150);
    if (!recipient_.empty()) refused_.push_back({recipient_, lastRefusal_, line[0] == '5'});
  }

  static int Listen(CURL*, curl_infotype type, char* data, size_t size, void* self) {
    auto& conversation = *static_cast<Conversation*>(self);
    if (type == CURLINFO_HEADER_OUT) conversation.Said({data, size});
    if (type == CURLINFO_HEADER_IN) conversation.Heard({data, size});
    return 0;
  }

 private:
  std::string recipient_;  ///< whom the next reply is about
  std::string lastRefusal_;
  std::vector<SmtpRefusal> refused_;
};

struct Upload {
  std::string_view rest;

  static size_t Read(char* buffer, size_t size, size_t count, void* self) {
    std::string_view& rest = static_cast<Upload*>(self)->rest;
    const std::size_t length = std::min(size * count, rest.size());
    std::memcpy(buffer, rest.data(), length);
    rest.remove_prefix(length);
    return length;
  }
};

size_t Drop(char*, size_t size, size_t count, void*) {
  return size * count;
}

void SetServer(Curl& curl, const SmtpServer& server) {
  const char* scheme = server.security == SmtpSecurity::Tls ? "smtps://" : "smtp://";
  const bool numeric6 = server.host.find(':') != std::string::npos;
  const std::string host = numeric6 ? '[' + server.host + ']' : server.host;
  curl.Set(CURLOPT_PROTOCOLS_STR, "smtp,smtps");
  curl.Set(CURLOPT_URL, scheme + host + ':' + std::to_string(server.port));
  curl.Set(CURLOPT_USE_SSL, server.security == SmtpSecurity::None ? CURLUSESSL_NONE : CURLUSESSL_ALL);
  curl.SetCertificateCheck(server.checkCertificate, server.authorities);
  curl.Set(CURLOPT_TIMEOUT_MS, static_cast<long>(server.limit.count()));
  curl.Set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(server.limit.count()));
  if (server.login.empty()) return;
  curl.Set(CURLOPT_USERNAME, server.login);
  curl.Set(CURLOPT_PASSWORD, server.password);
}

std::string Fault(const SmtpServer& server, const Curl& curl, CURLcode code, const std::string& reply) {
  std::string fault = "The mail server " + server.host + ':' + std::to_string(server.port);
  if (code == CURLE_LOGIN_DENIED) {
    fault += " does not accept the login";
  } else if (code == CURLE_USE_SSL_FAILED) {
    fault += " offers no STARTTLS";
  } else if (code == CURLE_OPERATION_TIMEDOUT) {
    fault += " did not take the mail in time";
  } else if (!reply.empty()) {
    fault += " refused the mail";
  } else {
    return fault + " cannot be used: " + curl.Reason(code) + '.';
  }
  return reply.empty() ? fault + '.' : fault + ": " + reply + '.';
}

}  // namespace

SmtpOutcome DeliverMail(const SmtpServer& server, const std::string& from, const std::vector<std::string>& to,
                        const std::string& text) {
  Curl curl;
  Conversation conversation;
  Upload upload{text};
  CurlList recipients;
  for (const std::string& address : to) recipients.Add('<' + address + '>');
  SetServer(curl, server);
  curl.Set(CURLOPT_MAIL_FROM, '<' + from + '>');
  curl.Set(CURLOPT_MAIL_RCPT, recipients.Get());
  curl.Set(CURLOPT_MAIL_RCPT_ALLLOWFAILS, 1L);
  curl.Set(CURLOPT_UPLOAD, 1L);
  curl.Set(CURLOPT_READFUNCTION, &Upload::Read);
  curl.Set(CURLOPT_READDATA, &upload);
  curl.Set(CURLOPT_WRITEFUNCTION, &Drop);
  curl.Set(CURLOPT_VERBOSE, 1L);
  curl.Set(CURLOPT_DEBUGFUNCTION, &Conversation::Listen);
  curl.Set(CURLOPT_DEBUGDATA, &conversation);
  const CURLcode code = curl.Perform();
  SmtpOutcome outcome{{}, conversation.Refused()};
  if (code != CURLE_OK) outcome.fault = Fault(server, curl, code, conversation.LastRefusal());
  return outcome;
}

}  // namespace quarl::alerts
