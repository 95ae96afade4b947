#include "tests/dns/DnsAnswer.h"

#include <arpa/inet.h>
#include <arpa/nameser.h>

#include <array>
#include <ranges>

#include "tests/common/Texts.h"

namespace quarl::checks {
namespace {

/// Reads a record's data from its first byte to its last; after anything that does not fit it is not good.
class DataReader {
 public:
  DataReader(const ns_msg& message, const ns_rr& record)
      : message_(message), at_(ns_rr_rdata(record)), end_(at_ + ns_rr_rdlen(record)) {}

  /// Nothing is wrong and nothing is left.
  bool Done() const { return good_ && at_ == end_; }
  bool Good() const { return good_; }
  bool AtEnd() const { return at_ == end_; }

  std::string Name() {
    std::array<char, NS_MAXDNAME> text{};
    const int used = ns_name_uncompress(ns_msg_base(message_), end_, at_, text.data(), text.size());
    if (!Skip(used)) return {};
    return text[0] == '\0' ? "." : Lower(text.data());
  }
  std::string Number(int bytes) {
    const uint8_t* const from = at_;
    if (!Skip(bytes)) return {};
    uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) value = value << 8U | from[i];
    return std::to_string(value);
  }
  std::string Address(int family, int bytes) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    const uint8_t* const from = at_;
    if (!Skip(bytes)) return {};
    return ::inet_ntop(family, from, text.data(), text.size()) == nullptr ? std::string() : text.data();
  }
  /// A string with its length before it.
  std::string String() {
    const int length = at_ < end_ ? *at_ : 0;
    const uint8_t* const from = at_ + 1;
    if (!Skip(1 + length)) return {};
    return {reinterpret_cast<const char*>(from), static_cast<std::size_t>(length)};
  }

 private:
  bool Skip(int bytes) {
    good_ = good_ && bytes >= 0 && bytes <= end_ - at_;
    if (good_) at_ += bytes;
    return good_;
  }

  const ns_msg& message_;
  const uint8_t* at_;
  const uint8_t* end_;
  bool good_ = true;
};

std::string Data(DataReader& reader, int type) {
  std::string text;
  switch (type) {
    case ns_t_a:
      return reader.Address(AF_INET, 4);
    case ns_t_aaaa:
      return reader.Address(AF_INET6, 16);
    case ns_t_mx:
      text = reader.Number(2) + ' ';
      return text + reader.Name();
    case ns_t_srv:
      for (int i = 0; i < 3; ++i) text += reader.Number(2) + ' ';
      return text + reader.Name();
    case ns_t_soa:
      text = reader.Name() + ' ';
      text += reader.Name();
      for (int i = 0; i < 5; ++i) text += ' ' + reader.Number(4);
      return text;
    case ns_t_txt:
      do {
        text += reader.String();
      } while (reader.Good() && !reader.AtEnd());
      return text;
    default:
      return reader.Name();
  }
}

std::optional<std::string> NormalAddress(const std::string& text, int family) {
  std::array<uint8_t, 16> bytes{};
  std::array<char, INET6_ADDRSTRLEN> normal{};
  if (::inet_pton(family, text.c_str(), bytes.data()) != 1) return std::nullopt;
  if (::inet_ntop(family, bytes.data(), normal.data(), normal.size()) == nullptr) return std::nullopt;
  return normal.data();
}

/// Words in lower case with one blank between them and no dot at their ends.
std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  for (text = Trimmed(text); !text.empty(); text = Trimmed(text)) {
    const std::size_t length = std::min(text.find_first_of(" \t"), text.size());
    std::string word = Lower(text.substr(0, length));
    if (word.size() > 1 && word.back() == '.') word.pop_back();
    words.push_back(std::move(word));
    text.remove_prefix(length);
  }
  return words;
}

std::size_t WordCount(int type) {
  switch (type) {
    case ns_t_mx:
      return 2;
    case ns_t_srv:
      return 4;
    case ns_t_soa:
      return 7;
    default:
      return 1;
  }
}

}  // namespace

const std::vector<DnsType>& DnsTypes() {
  static const std::vector<DnsType> types = {{"A", ns_t_a},     {"AAAA", ns_t_aaaa}, {"CNAME", ns_t_cname},
                                             {"MX", ns_t_mx},   {"NS", ns_t_ns},     {"PTR", ns_t_ptr},
                                             {"SOA", ns_t_soa}, {"SRV", ns_t_srv},   {"TXT", ns_t_txt}};
  return types;
}

std::optional<DnsAnswer> ReadAnswer(const std::vector<uint8_t>& message, int type) {
  ns_msg parsed{};
  if (ns_initparse(message.data(), static_cast<int>(message.size()), &parsed) != 0) return std::nullopt;
  DnsAnswer answer;
  answer.code = ns_msg_getflag(parsed, ns_f_rcode);
  for (int i = 0; i < ns_msg_count(parsed, ns_s_an); ++i) {
    ns_rr record{};
    if (ns_parserr(&parsed, ns_s_an, i, &record) != 0) return std::nullopt;
    if (ns_rr_class(record) != ns_c_in || ns_rr_type(record) != type) continue;
    DataReader reader(parsed, record);
    std::string text = Data(reader, type);
    if (!reader.Done()) return std::nullopt;
    answer.records.push_back(std::move(text));
  }
  return answer;
}

std::string CodeName(int code) {
  constexpr std::array<const char*, 6> kNames = {"NOERROR", "FORMERR", "SERVFAIL", "NXDOMAIN", "NOTIMP", "REFUSED"};
  const auto number = static_cast<std::size_t>(code);
  return number < kNames.size() ? kNames[number] : "response code " + std::to_string(code);
}

std::optional<std::string> Normal(std::string_view text, int type) {
  if (type == ns_t_txt) return std::string(text);
  const std::vector<std::string> words = Words(text);
  if (words.size() != WordCount(type)) return std::nullopt;
  if (type == ns_t_a) return NormalAddress(words[0], AF_INET);
  if (type == ns_t_aaaa) return NormalAddress(words[0], AF_INET6);
  std::string normal;
  for (const std::string& word : words) normal += normal.empty() ? word : ' ' + word;
  return normal;
}

std::optional<std::string> ReverseName(const std::string& address) {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::array<uint8_t, 16> bytes{};
  std::string name;
  if (::inet_pton(AF_INET, address.c_str(), bytes.data()) == 1) {
    for (int i = 3; i >= 0; --i) name += std::to_string(bytes[static_cast<std::size_t>(i)]) + '.';
    return name + "in-addr.arpa";
  }
  if (::inet_pton(AF_INET6, address.c_str(), bytes.data()) != 1) return std::nullopt;
  for (const uint8_t byte : bytes | std::views::reverse) name += {kHex[byte & 15U], '.', kHex[byte >> 4U], '.'};
  return name + "ip6.arpa";
}

}  // namespace quarl::checks
