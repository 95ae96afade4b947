#include "alerts/common/Curl.h"

namespace quarl::alerts {
namespace {

CURL* NewHandle() {
  static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (ready != CURLE_OK) throw std::runtime_error("The network library cannot be used.");
  CURL* handle = curl_easy_init();
  if (handle == nullptr) throw std::runtime_error("No memory for a network transfer.");
  return handle;
}

}  // namespace

Curl::Curl() : reason_(new char[CURL_ERROR_SIZE]{}), handle_(NewHandle(), &curl_easy_cleanup) {
  Set(CURLOPT_ERRORBUFFER, reason_.get());
  Set(CURLOPT_NOSIGNAL, 1L);
  Set(CURLOPT_QUICK_EXIT, 1L);  // a name that is still looked up when the time is over is not waited for
  Set(CURLOPT_NOPROXY, "localhost,127.0.0.1,::1");
}

std::string Curl::Reason(CURLcode code) const {
  std::string reason = reason_[0] != '\0' ? reason_.get() : curl_easy_strerror(code);
  while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
  return reason;
}

void Curl::SetCertificateCheck(bool check, const std::string& authorities) {
  Set(CURLOPT_SSL_VERIFYPEER, check ? 1L : 0L);
  Set(CURLOPT_SSL_VERIFYHOST, check ? 2L : 0L);
  if (check && !authorities.empty()) Set(CURLOPT_CAINFO, authorities);
}

void Curl::Refuse(CURLoption option) {
  throw std::runtime_error("The network library does not take option " + std::to_string(option) + '.');
}

void CurlList::Add(const std::string& line) {
  curl_slist* longer = curl_slist_append(list_.get(), line.c_str());
  if (longer == nullptr) throw std::runtime_error("No memory for a network transfer.");
  // The same list, unless it was empty.
  std::ignore = list_.release();
  list_.reset(longer);
}

}  // namespace quarl::alerts
