#pragma once

#include <string>
#include <utility>
#include <vector>

#include "alerts/email/MailAddress.h"

namespace quarl::alerts {

/// A mail as its sender thinks of it; texts are UTF-8.
struct Mail {
  MailAddress from;
  std::vector<MailAddress> to;
  std::vector<MailAddress> cc;
  std::string subject;
  std::string body;                                          ///< lines end in "\n"
  int64_t date = 0;                                          ///< seconds since 1970-01-01 UTC
  std::string id;                                            ///< of the message, without < and >
  std::string thread;                                        ///< id that all mails of a thread refer to; "" for none
  std::vector<std::pair<std::string, std::string>> headers;  ///< further ones; plain ASCII
};

/// The mail as it is sent: seven-bit lines of at most 78 characters that end in CR LF (a line that a text has no way
/// to fold may be longer), quoted-printable body. No text can begin a header of its own. Dots are not doubled yet.
std::string MailText(const Mail& mail);

/// A text that may stand before the @ of a message id: what other characters it has are encoded, so that two texts
/// never give one id.
std::string IdPart(const std::string& text);

}  // namespace quarl::alerts
