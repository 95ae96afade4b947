#include "PortForm.h"

#include "tests/common/Fields.h"

namespace quarl::tcpport {
namespace {

using kit::Condition;
using kit::FieldType;

constexpr const char* kConnection = "Connection";
constexpr const char* kConversation = "Conversation";
constexpr const char* kEncryption = "Encryption";
constexpr std::size_t kLongestText = 1000;
constexpr std::size_t kLongestName = 253;

constexpr const char* kFull = "full";
constexpr const char* kChain = "chain";
constexpr const char* kNone = "none";

}  // namespace

const kit::Form& PortForm() {
  static const kit::Form form{
      "tcpport",
      "TCP port properties",
      {{.key = "port",
        .label = "Port",
        .type = FieldType::Integer,
        .standard = 80,
        .group = kConnection,
        .help = "The TCP port of the server, 1 to 65535.",
        .minimum = 1,
        .maximum = 65535},
       checks::TimeOutField({.standard = 5000, .minimum = 50}, kConnection,
                            "For the whole check: connecting, encryption and conversation."),
       {.key = "send",
        .label = "Send",
        .standard = "",
        .group = kConversation,
        .help = "Sent as soon as the connection stands; may be empty. \\r, \\n, \\t and \\xNN stand for such bytes, "
                "\\\\ for a backslash.",
        .longest = kLongestText},
       {.key = "expect",
        .label = "Expect",
        .standard = "",
        .group = kConversation,
        .help = "The check fails unless the answer contains this text; the same escapes. Empty: no answer is awaited.",
        .longest = kLongestText},
       {.key = "tls",
        .label = "Use TLS",
        .type = FieldType::Boolean,
        .standard = false,
        .group = kEncryption,
        .help = "Encrypts the connection at once, as HTTPS, SMTPS and IMAPS do."},
       {.key = "verify",
        .label = "Certificate",
        .type = FieldType::Choice,
        .standard = kFull,
        .group = kEncryption,
        .help = "What the server's certificate must be.",
        .choices = {{kFull, "trusted, and issued for the server's name"},
                    {kChain, "trusted, for any name"},
                    {kNone, "not examined"}},
        .enabledWhen = Condition{"tls", true}},
       {.key = "tlsName",
        .label = "Server's name",
        .standard = "",
        .group = kEncryption,
        .help = "The name that is asked for and must stand in the certificate. Empty: the name that the server has in "
                "Quarl.",
        .longest = kLongestName,
        .enabledWhen = Condition{"tls", true}}}};
  return form;
}

std::uint16_t PortOf(const kit::Properties& properties) {
  return static_cast<std::uint16_t>(properties.Integer("port"));
}

Trust TrustOf(const kit::Properties& properties) {
  const std::string verify = properties.Text("verify");
  if (verify == kNone) return Trust::Anybody;
  return verify == kChain ? Trust::Chain : Trust::ChainAndName;
}

}  // namespace quarl::tcpport
