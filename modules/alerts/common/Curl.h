#pragma once

#include <curl/curl.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "kit/NoBrokenPipeSignal.h"

namespace quarl::alerts {

/// A transfer, with what every module wants of one: no signals, no proxy for this machine itself, a buffer for the
/// reason of a failure. One thread at a time.
class Curl {
 public:
  Curl();
  CURL* Handle() const { return handle_.get(); }

  /// Throws std::runtime_error for an option that the library does not take.
  template <typename Value>
  void Set(CURLoption option, Value value) {
    if (curl_easy_setopt(handle_.get(), option, value) != CURLE_OK) Refuse(option);
  }
  void Set(CURLoption option, const std::string& value) { Set(option, value.c_str()); }

  CURLcode Perform() {
    const kit::NoBrokenPipeSignal quiet;
    reason_[0] = '\0';
    return curl_easy_perform(handle_.get());
  }
  /// Why the last transfer failed, without a full stop.
  std::string Reason(CURLcode code) const;

  template <typename Value>
  Value Info(CURLINFO info, Value fallback = {}) const {
    Value value = fallback;
    return curl_easy_getinfo(handle_.get(), info, &value) == CURLE_OK ? value : fallback;
  }

  /// Checks the peer's certificate against the system's authorities or those of a file, or not at all.
  void SetCertificateCheck(bool check, const std::string& authorities);

 private:
  [[noreturn]] static void Refuse(CURLoption option);

  std::unique_ptr<char[]> reason_;
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle_;
};

/// A list of strings for an option that takes one; must outlive the transfer.
class CurlList {
 public:
  void Add(const std::string& line);
  curl_slist* Get() const { return list_.get(); }

 private:
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> list_{nullptr, &curl_slist_free_all};
};

}  // namespace quarl::alerts
