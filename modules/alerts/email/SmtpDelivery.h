#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace quarl::alerts {

enum class SmtpSecurity { None, StartTls, Tls };

/// The server that takes mails over, and how.
struct SmtpServer {
  std::string host;  ///< name or address
  long port = 587;
  SmtpSecurity security = SmtpSecurity::StartTls;
  bool checkCertificate = true;
  std::string authorities;  ///< PEM file; "" for those of the system
  std::string login;        ///< "" for none
  std::string password;
  std::chrono::milliseconds limit{30000};
};

/// What the server answered to one recipient that it did not take.
struct SmtpRefusal {
  std::string address;
  std::string reply;  ///< "550 5.1.1 No such user"
  bool permanent = false;
};

struct SmtpOutcome {
  /// Why nobody gets the mail, one sentence; "" when the server has taken it for all but the refused recipients.
  std::string fault;
  std::vector<SmtpRefusal> refused;
};

/// Hands one mail over. A recipient whom the server refuses does not keep the others from getting it.
/// @param from,to plain addresses.
SmtpOutcome DeliverMail(const SmtpServer& server, const std::string& from, const std::vector<std::string>& to,
                        const std::string& text);

}  // namespace quarl::alerts
