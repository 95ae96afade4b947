#include "tests/http/HttpRequest.h"

#include <curl/curl.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "kit/NoBrokenPipeSignal.h"

namespace quarl::checks {
namespace {

constexpr std::size_t kLongestHead = std::size_t{256} * 1024;

struct FreeHandle {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
struct FreeUrl {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using List = std::unique_ptr<curl_slist, FreeList>;

void Append(List& list, const std::string& text) {
  curl_slist* const longer = curl_slist_append(list.get(), text.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  std::ignore = list.release();
  list.reset(longer);
}

CURL* ThreadHandle() {
  static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (ready != CURLE_OK) throw std::runtime_error("The HTTP library cannot be used.");
  thread_local const std::unique_ptr<CURL, FreeHandle> handle(curl_easy_init());
  if (handle == nullptr) throw std::bad_alloc();
  curl_easy_reset(handle.get());
  return handle.get();
}

/// What the callbacks of one transfer fill.
struct Arrival {
  HttpReply& reply;
  std::size_t longestBody;
  std::size_t head = 0;
  bool headTooLong = false;
};

std::size_t TakeBody(char* data, std::size_t, std::size_t count, void* context) {
  auto& arrival = *static_cast<Arrival*>(context);
  const std::size_t kept = std::min(count, arrival.longestBody - arrival.reply.body.size());
  arrival.reply.body.append(data, kept);
  arrival.reply.cut = arrival.reply.cut || kept < count;
  return kept;
}

std::size_t TakeHead(char*, std::size_t, std::size_t count, void* context) {
  auto& arrival = *static_cast<Arrival*>(context);
  arrival.head += count;
  arrival.headTooLong = arrival.head > kLongestHead;
  return arrival.headTooLong ? 0 : count;
}

template <class Value>
void Set(CURL* handle, CURLoption option, Value value) {
  const CURLcode code = curl_easy_setopt(handle, option, value);
  if (code != CURLE_OK)
    throw std::runtime_error(std::string("The request cannot be made: ") + curl_easy_strerror(code));
}

void SetTransfer(CURL* handle, const HttpRequest& request) {
  Set(handle, CURLOPT_NOSIGNAL, 1L);
  Set(handle, CURLOPT_QUICK_EXIT, 1L);
  Set(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  Set(handle, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  Set(handle, CURLOPT_PROXY, "");
  Set(handle, CURLOPT_FRESH_CONNECT, 1L);
  Set(handle, CURLOPT_FORBID_REUSE, 1L);
  Set(handle, CURLOPT_DNS_CACHE_TIMEOUT, 0L);
  // A resumed session would show the certificate of an earlier one.
  Set(handle, CURLOPT_SSL_SESSIONID_CACHE, 0L);
  Set(handle, CURLOPT_USERAGENT, "Quarl");
  Set(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(request.limit.count()));
  Set(handle, CURLOPT_FOLLOWLOCATION, request.redirects > 0 ? 1L : 0L);
  // The answer to a challenge counts as a redirection.
  if (request.redirects > 0) Set(handle, CURLOPT_MAXREDIRS, request.redirects + (request.digest ? 1 : 0));
  Set(handle, CURLOPT_IPRESOLVE,
      request.family == 4   ? CURL_IPRESOLVE_V4
      : request.family == 6 ? CURL_IPRESOLVE_V6
                            : CURL_IPRESOLVE_WHATEVER);
}

void SetTrust(CURL* handle, const HttpRequest& request) {
  Set(handle, CURLOPT_SSL_VERIFYPEER, request.verify ? 1L : 0L);
  Set(handle, CURLOPT_SSL_VERIFYHOST, request.verify ? 2L : 0L);
  Set(handle, CURLOPT_CERTINFO, request.wantCertificate ? 1L : 0L);
  if (request.authorities.empty()) return;
  Set(handle, CURLOPT_CAINFO, request.authorities.c_str());
  Set(handle, CURLOPT_CAPATH, nullptr);
}

void SetContent(CURL* handle, const HttpRequest& request, const List& headers) {
  Set(handle, CURLOPT_URL, request.url.c_str());
  if (request.method == "HEAD") {
    Set(handle, CURLOPT_NOBODY, 1L);
  } else if (request.method == "POST" || request.method == "PUT") {
    Set(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    Set(handle, CURLOPT_COPYPOSTFIELDS, request.body.c_str());
  }
  if (request.method != "GET" && request.method != "HEAD" && request.method != "POST") {
    Set(handle, CURLOPT_CUSTOMREQUEST, request.method.c_str());
  }
  Set(handle, CURLOPT_HTTPHEADER, headers.get());
  if (request.user.empty()) return;
  Set(handle, CURLOPT_HTTPAUTH, request.digest ? CURLAUTH_DIGEST : CURLAUTH_BASIC);
  Set(handle, CURLOPT_USERNAME, request.user.c_str());
  Set(handle, CURLOPT_PASSWORD, request.password.c_str());
}

List HeadersOf(const HttpRequest& request) {
  List headers;
  // An answer "100 Continue" is not waited for.
  Append(headers, "Expect:");
  for (const std::string& header : request.headers) Append(headers, header);
  return headers;
}

/// "HOST::ADDRESS:" for the URL's own host at any port; a redirection to another host is looked up.
List PlaceOf(const HttpRequest& request) {
  List place;
  const std::optional<UrlParts> parts = SplitUrl(request.url);
  if (request.connectAddress.empty() || !parts) return place;
  const bool colons = request.connectAddress.find(':') != std::string::npos;
  const std::string address = colons ? '[' + request.connectAddress + ']' : request.connectAddress;
  Append(place, parts->host + "::" + address + ':');
  return place;
}

/// End of the server's own certificate, which comes first.
std::optional<std::chrono::system_clock::time_point> CertificateEnd(CURL* handle) {
  constexpr std::string_view kLabel = "Expire date:";
  curl_certinfo* chain = nullptr;
  if (curl_easy_getinfo(handle, CURLINFO_CERTINFO, &chain) != CURLE_OK || chain == nullptr) return std::nullopt;
  for (const curl_slist* entry = chain->num_of_certs > 0 ? chain->certinfo[0] : nullptr; entry != nullptr;
       entry = entry->next) {
    const std::string_view text = entry->data;
    if (!text.starts_with(kLabel)) continue;
    const time_t end = curl_getdate(entry->data + kLabel.size(), nullptr);
    if (end != -1) return std::chrono::system_clock::from_time_t(end);
  }
  return std::nullopt;
}

/// The URL itself is good, so that a bad address or protocol is one that the server leads to.
HttpReply::End EndOf(CURLcode code) {
  switch (code) {
    case CURLE_OK:
      return HttpReply::End::Answered;
    case CURLE_FAILED_INIT:
    case CURLE_NOT_BUILT_IN:
    case CURLE_OUT_OF_MEMORY:
    case CURLE_INTERFACE_FAILED:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ENGINE_INITFAILED:
      return HttpReply::End::NotMade;
    default:
      return HttpReply::End::NoAnswer;
  }
}

std::string VersionText(long version) {
  switch (version) {
    case CURL_HTTP_VERSION_1_0:
      return "HTTP/1.0";
    case CURL_HTTP_VERSION_1_1:
      return "HTTP/1.1";
    case CURL_HTTP_VERSION_2_0:
      return "HTTP/2";
    default:
      return "HTTP";
  }
}

void Conclude(CURL* handle, CURLcode code, const char* error, const Arrival& arrival) {
  HttpReply& reply = arrival.reply;
  curl_off_t time = 0;
  long version = 0;
  std::ignore = curl_easy_getinfo(handle, CURLINFO_TOTAL_TIME_T, &time);
  std::ignore = curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &reply.status);
  std::ignore = curl_easy_getinfo(handle, CURLINFO_HTTP_VERSION, &version);
  reply.time = std::chrono::microseconds(time);
  reply.version = VersionText(version);
  if (reply.cut && code == CURLE_WRITE_ERROR) code = CURLE_OK;
  reply.end = EndOf(code);
  if (code == CURLE_OK) return;
  reply.error = *error != '\0' ? error : curl_easy_strerror(code);
  if (arrival.headTooLong) reply.error = "The answer's headers are longer than 256 KiB";
}

}  // namespace

std::optional<UrlParts> SplitUrl(const std::string& url) {
  const std::unique_ptr<CURLU, FreeUrl> parsed(curl_url());
  if (parsed == nullptr) throw std::bad_alloc();
  if (curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) return {};
  const auto part = [&](CURLUPart which, unsigned flags) -> std::optional<std::string> {
    char* text = nullptr;
    if (curl_url_get(parsed.get(), which, &text, flags) != CURLUE_OK) return std::nullopt;
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
    return std::string(text);
  };
  std::optional<std::string> host = part(CURLUPART_HOST, CURLU_PUNYCODE);
  if (!host) host = part(CURLUPART_HOST, 0);
  const bool credentials = part(CURLUPART_USER, 0) || part(CURLUPART_PASSWORD, 0);
  return UrlParts{part(CURLUPART_SCHEME, 0).value_or(""), host.value_or(""), credentials};
}

HttpReply Fetch(const HttpRequest& request) {
  HttpReply reply;
  Arrival arrival{reply, request.longestBody};
  std::array<char, CURL_ERROR_SIZE> error{};
  CURL* const handle = ThreadHandle();
  const List headers = HeadersOf(request);
  const List place = PlaceOf(request);
  SetTransfer(handle, request);
  SetTrust(handle, request);
  SetContent(handle, request, headers);
  Set(handle, CURLOPT_CONNECT_TO, place.get());
  Set(handle, CURLOPT_ERRORBUFFER, error.data());
  Set(handle, CURLOPT_WRITEFUNCTION, &TakeBody);
  Set(handle, CURLOPT_WRITEDATA, static_cast<void*>(&arrival));
  Set(handle, CURLOPT_HEADERFUNCTION, &TakeHead);
  Set(handle, CURLOPT_HEADERDATA, static_cast<void*>(&arrival));
  const kit::NoBrokenPipeSignal quiet;
  const CURLcode code = curl_easy_perform(handle);
  Conclude(handle, code, error.data(), arrival);
  if (request.wantCertificate) reply.certificateEnd = CertificateEnd(handle);
  // Nothing of this call may be reached through the thread's handle later.
  curl_easy_reset(handle);
  return reply;
}

}  // namespace quarl::checks
