#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace quarl::alerts {

/// A message for a web service, and how hard to try.
struct HttpMessage {
  std::string url;
  std::string method = "POST";
  std::vector<std::string> headers{};  ///< "Name: value"
  std::string body{};
  bool followRedirects = false;  ///< within the same host only, with the same method and body
  bool checkCertificate = true;
  std::string authorities{};                      ///< PEM file; "" for those of the system
  std::chrono::milliseconds attemptLimit{10000};  ///< for one attempt
  std::chrono::milliseconds limit{30000};         ///< for all attempts and the waits between them
  int attempts = 4;
  std::chrono::milliseconds firstWait{1000};  ///< doubled after each attempt, unless the answer names another
};

/// Waits; tests pass one that does not.
using Wait = std::function<void(std::chrono::milliseconds)>;

/// Delivers a message: "" when an answer from 200 to 299 came, else a sentence about the last attempt. Another attempt
/// is made after 408, 429, 5xx and failures of the connection, as long as its turn comes within the limit.
/// @param secrets texts that no sentence may repeat.
std::string DeliverHttp(const HttpMessage& message, const std::vector<std::string>& secrets, const Wait& wait);

/// "" for a URL that has a host and names no user, else a sentence.
std::string FaultOfUrl(const std::string& url);

}  // namespace quarl::alerts
