#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tests/common/Reply.h"

namespace quarl::checks {

/// Parts of a web address that a check looks at.
struct UrlParts {
  std::string scheme;  ///< lower case
  std::string host;    ///< ASCII; an IPv6 address in brackets
  bool credentials = false;
};

/// Nothing when the text is no URL.
std::optional<UrlParts> SplitUrl(const std::string& url);

struct HttpRequest {
  std::string url;
  std::string method = "GET";
  std::vector<std::string> headers{};  ///< "Name: value"
  std::string body{};                  ///< sent with POST and PUT
  std::string user{};                  ///< "" for no login
  std::string password{};
  bool digest = false;           ///< the login is digest instead of basic
  std::string connectAddress{};  ///< where the URL's own host is taken to be; "" asks the resolver
  int family = 0;                ///< 4 or 6 to connect by that protocol alone
  bool verify = true;            ///< certificate and name
  std::string authorities{};     ///< file of trusted certificates, "" for the system's
  bool wantCertificate = false;
  long redirects = 0;                 ///< how many are followed
  std::size_t longestBody = 1 << 20;  ///< bytes after which the transfer is ended
  std::chrono::milliseconds limit{10000};
};

struct HttpReply : Reply {
  long status = 0;
  std::string version{};  ///< "HTTP/1.1"
  std::string body{};
  bool cut = false;  ///< the body was longer than the request allows
  std::optional<std::chrono::system_clock::time_point> certificateEnd{};
};

/// Makes one request over a connection of its own, with a name looked up anew and without any proxy. May be called by
/// many threads at once; each keeps one handle, and with it the trusted certificates, until it ends.
HttpReply Fetch(const HttpRequest& request);

}  // namespace quarl::checks
