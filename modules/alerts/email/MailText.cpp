#include "alerts/email/MailText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "kit/Text.h"

namespace quarl::alerts {
namespace {

constexpr std::size_t kLongestLine = 76;
constexpr std::size_t kLongestText = 900;  ///< of a header
constexpr std::size_t kLongestPiece = 3;   ///< of a body, "=C3"

bool IsAlphanumeric(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

std::string Hex(char c) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return {'=', kDigits[byte >> 4U], kDigits[byte & 15U]};
}

/// Lines of a header that are folded where a word would make them too long.
class HeaderLine {
 public:
  explicit HeaderLine(const std::string& name) : text_(name + ':'), column_(text_.size()) {}
  void AddWord(const std::string& word) {
    if (column_ + 1 + word.size() > kLongestLine && column_ > 1) {
      text_ += "\r\n";
      column_ = 0;
    }
    text_ += ' ' + word;
    column_ += 1 + word.size();
  }
  std::string Text() const { return text_ + "\r\n"; }

 private:
  std::string text_;
  std::size_t column_;
};

/// Encoded words of whole characters, each short enough for any line of its own.
std::vector<std::string> EncodedWords(const std::string& text) {
  constexpr std::size_t kLongestPart = 48;
  std::vector<std::string> words;
  std::string part;
  for (std::size_t i = 0; i < text.size();) {
    std::string character;
    do {
      character += text[i] == ' ' ? "_" : IsAlphanumeric(text[i]) ? std::string(1, text[i]) : Hex(text[i]);
    } while (++i < text.size() && IsContinuation(text[i]));
    if (part.size() + character.size() > kLongestPart) words.push_back("=?UTF-8?Q?" + std::exchange(part, {}) + "?=");
    part += character;
  }
  if (!part.empty()) words.push_back("=?UTF-8?Q?" + part + "?=");
  return words;
}

bool IsPlain(const std::string& text) {
  return text.find("=?") == std::string::npos &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < '\x7F'; });
}

std::vector<std::string> PlainWords(const std::string& text) {
  std::vector<std::string> words;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    words.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return words;
}

/// A text on one line as words of a header.
std::vector<std::string> TextWords(const std::string& text) {
  std::vector<std::string> words = PlainWords(text);
  const bool fits =
      std::all_of(words.begin(), words.end(), [](const auto& word) { return word.size() < kLongestLine; });
  return IsPlain(text) && fits ? words : EncodedWords(text);
}

/// The name before an address: as it stands when it has letters, digits and blanks only, else quoted or encoded.
std::vector<std::string> NameWords(const std::string& name) {
  const bool simple = std::all_of(name.begin(), name.end(), [](char c) { return IsAlphanumeric(c) || c == ' '; });
  if (simple || !IsPlain(name) || name.size() > 60) return simple ? TextWords(name) : EncodedWords(name);
  std::string quoted = "\"";
  for (const char c : name) quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
  return {quoted + '"'};
}

std::string AddressHeader(const char* header, const std::vector<MailAddress>& mailboxes) {
  if (mailboxes.empty()) return {};
  HeaderLine line(header);
  for (std::size_t i = 0; i < mailboxes.size(); ++i) {
    const MailAddress& mailbox = mailboxes[i];
    for (const std::string& word : NameWords(mailbox.name)) line.AddWord(word);
    const std::string address = mailbox.name.empty() ? mailbox.address : '<' + mailbox.address + '>';
    line.AddWord(address + (i + 1 < mailboxes.size() ? "," : ""));
  }
  return line.Text();
}

std::string TextHeader(const std::string& header, const std::string& text) {
  HeaderLine line(header);
  for (const std::string& word : TextWords(kit::OneLine(text, kLongestText))) line.AddWord(word);
  return line.Text();
}

/// The names of days and months are English here whatever the locale is.
std::string DateText(int64_t seconds) {
  constexpr std::array kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  if (::localtime_r(&time, &parts) == nullptr || parts.tm_year > 8099) return DateText(0);
  const long minutes = parts.tm_gmtoff / 60;
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "%s, %02d %s %04d %02d:%02d:%02d %c%02ld%02ld",
                kDays.at(static_cast<std::size_t>(parts.tm_wday)), parts.tm_mday,
                kMonths.at(static_cast<std::size_t>(parts.tm_mon)), parts.tm_year + 1900, parts.tm_hour, parts.tm_min,
                parts.tm_sec, minutes < 0 ? '-' : '+', std::labs(minutes) / 60, std::labs(minutes) % 60);
  return text.data();
}

/// One line of a body, with soft breaks. A dot at its beginning and blanks at its end are encoded, so that no relay
/// can lose them.
std::string QuotedPrintableLine(std::string_view line) {
  std::string result;
  std::size_t column = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (column + kLongestPiece > kLongestLine - 1) {
      result += "=\r\n";
      column = 0;
    }
    const char c = line[i];
    const bool last = i + 1 == line.size();
    const bool plain = (c > ' ' && c < '\x7F' && c != '=' && (c != '.' || column > 0)) || (c == ' ' && !last);
    const std::string piece = plain ? std::string(1, c) : Hex(c);
    result += piece;
    column += piece.size();
  }
  return result + "\r\n";
}

std::string Body(const std::string& text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    result += QuotedPrintableLine(std::string_view(text).substr(at, end - at));
    at = end + 1;
  }
  return result;
}

}  // namespace

std::string MailText(const Mail& mail) {
  std::string text = "Date: " + DateText(mail.date) + "\r\n";
  text += AddressHeader("From", {mail.from});
  text += AddressHeader("To", mail.to);
  text += AddressHeader("Cc", mail.cc);
  text += TextHeader("Subject", mail.subject);
  text += "Message-ID: <" + mail.id + ">\r\n";
  if (!mail.thread.empty()) {
    text += "In-Reply-To: <" + mail.thread + ">\r\n";
    text += "References: <" + mail.thread + ">\r\n";
  }
  for (const auto& [name, value] : mail.headers) text += TextHeader(name, value);
  text +=
      "MIME-Version: 1.0\r\n"
      "Content-Type: text/plain; charset=UTF-8\r\n"
      "Content-Transfer-Encoding: quoted-printable\r\n"
      "\r\n";
  return text + Body(mail.body);
}

std::string IdPart(const std::string& text) {
  std::string part;
  for (const char c : text) part += IsAlphanumeric(c) || c == '-' ? std::string(1, c) : Hex(c);
  return part;
}

}  // namespace quarl::alerts
