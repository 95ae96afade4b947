#include "alerts/webhook/HttpDelivery.h"

#include <algorithm>
#include <memory>

#include "alerts/common/Curl.h"
#include "kit/Deadline.h"
#include "kit/Error.h"
#include "kit/Text.h"

namespace quarl::alerts {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kKeptAnswer = 2000;
constexpr std::size_t kLongestAnswer = std::size_t{1} << 20;
constexpr int kMostRedirects = 5;

/// What came back: its beginning is kept, and a receiver that does not stop is cut off.
struct Answer {
  std::string beginning;
  std::size_t length = 0;

  static size_t Take(char* data, size_t size, size_t count, void* self) {
    auto& answer = *static_cast<Answer*>(self);
    const std::size_t bytes = size * count;
    answer.beginning.append(data, std::min(bytes, kKeptAnswer - answer.beginning.size()));
    answer.length += bytes;
    return answer.length > kLongestAnswer ? 0 : bytes;
  }
};

struct Attempt {
  CURLcode code = CURLE_OK;
  long status = 0;
  milliseconds retryAfter{0};
  std::string redirect;
  std::string answer;
  std::string reason;

  bool Answered() const { return status >= 100 && (code == CURLE_OK || code == CURLE_WRITE_ERROR); }
  bool Delivered() const { return Answered() && status >= 200 && status < 300; }
  bool Redirects() const { return Answered() && status >= 300 && status < 400 && !redirect.empty(); }
  bool MayBeRepeated() const {
    if (Answered()) return status == 408 || status == 429 || status >= 500;
    constexpr CURLcode kFinal[] = {CURLE_URL_MALFORMAT, CURLE_UNSUPPORTED_PROTOCOL, CURLE_SSL_CACERT_BADFILE,
                                   CURLE_PEER_FAILED_VERIFICATION, CURLE_OUT_OF_MEMORY};
    return std::find(std::begin(kFinal), std::end(kFinal), code) == std::end(kFinal);
  }
};

Attempt Try(const HttpMessage& message, const std::string& url, milliseconds limit) {
  Curl curl;
  CurlList headers;
  Answer answer;
  for (const std::string& header : message.headers) headers.Add(header);
  headers.Add("Expect:");
  curl.Set(CURLOPT_PROTOCOLS_STR, "http,https");
  curl.Set(CURLOPT_URL, url);
  curl.Set(CURLOPT_POST, 1L);
  curl.Set(CURLOPT_CUSTOMREQUEST, message.method);
  curl.Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(message.body.size()));
  curl.Set(CURLOPT_POSTFIELDS, message.body);
  curl.Set(CURLOPT_HTTPHEADER, headers.Get());
  curl.Set(CURLOPT_USERAGENT, "Quarl/" QUARL_MODULE_VERSION);
  curl.SetCertificateCheck(message.checkCertificate, message.authorities);
  curl.Set(CURLOPT_TIMEOUT_MS, static_cast<long>(limit.count()));
  curl.Set(CURLOPT_WRITEFUNCTION, &Answer::Take);
  curl.Set(CURLOPT_WRITEDATA, &answer);
  Attempt attempt;
  attempt.code = curl.Perform();
  attempt.status = curl.Info<long>(CURLINFO_RESPONSE_CODE);
  const auto seconds = std::clamp<curl_off_t>(curl.Info<curl_off_t>(CURLINFO_RETRY_AFTER), 0, 86400);
  attempt.retryAfter = std::chrono::seconds(seconds);
  if (const char* target = curl.Info<char*>(CURLINFO_REDIRECT_URL); target != nullptr) attempt.redirect = target;
  attempt.answer = answer.beginning;
  attempt.reason = curl.Reason(attempt.code);
  return attempt;
}

struct UrlParts {
  std::string scheme, host, port, user;
};

UrlParts PartsOf(const std::string& url) {
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parsed(curl_url(), &curl_url_cleanup);
  if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) return {};
  const auto part = [&](CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(parsed.get(), which, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) return std::string();
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
    return std::string(text);
  };
  return {part(CURLUPART_SCHEME), part(CURLUPART_HOST), part(CURLUPART_PORT), part(CURLUPART_USER)};
}

/// Nobody but the configured receiver gets the body and its secrets; that it moves to TLS is welcome.
bool StaysThere(const std::string& from, const std::string& to) {
  const UrlParts before = PartsOf(from), after = PartsOf(to);
  const bool same = before.scheme == after.scheme && before.port == after.port;
  return !after.host.empty() && before.host == after.host &&
         (same || (before.scheme == "http" && after.scheme == "https"));
}

/// One attempt with the redirects that it leads through.
Attempt TryThrough(const HttpMessage& message, const kit::Deadline& deadline) {
  std::string url = message.url;
  for (int redirects = 0;; ++redirects) {
    Attempt attempt = Try(message, url, std::max(std::min(message.attemptLimit, deadline.Left()), milliseconds(1)));
    if (!attempt.Redirects() || !message.followRedirects || redirects == kMostRedirects) return attempt;
    if (!StaysThere(message.url, attempt.redirect)) return attempt;
    url = attempt.redirect;
  }
}

std::string Sentence(const Attempt& attempt, const HttpMessage& message, const std::vector<std::string>& secrets) {
  if (!attempt.Answered()) return kit::WithoutSecrets("No answer: " + attempt.reason + '.', secrets);
  std::string text = "The receiver answered " + std::to_string(attempt.status);
  if (attempt.Redirects()) {
    text += message.followRedirects ? ", a redirect that leads elsewhere or does not end"
                                    : ", a redirect, which is not followed";
  }
  const std::string answer = kit::OneLine(kit::WithoutSecrets(attempt.answer, secrets), 120);
  return answer.empty() ? text + '.' : text + ": " + answer;
}

}  // namespace

std::string DeliverHttp(const HttpMessage& message, const std::vector<std::string>& secrets, const Wait& wait) {
  const kit::Deadline deadline(message.limit);
  milliseconds next = message.firstWait;
  for (int count = 1;; ++count) {
    const Attempt attempt = TryThrough(message, deadline);
    if (attempt.Delivered()) return {};
    const milliseconds pause = std::max(next, attempt.retryAfter);
    const bool again = attempt.MayBeRepeated() && count < message.attempts && pause < deadline.Left();
    if (!again) return Sentence(attempt, message, secrets);
    wait(pause);
    next *= 2;
  }
}

std::string FaultOfUrl(const std::string& url) {
  const UrlParts parts = PartsOf(url);
  if (parts.host.empty()) return "The URL has no host, or is no URL.";
  return parts.user.empty() ? "" : "A user and a password do not belong into the URL; a header may carry them.";
}

}  // namespace quarl::alerts
