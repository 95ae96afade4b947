#include "alerts/desktop/DesktopNote.h"

#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

#include "kit/Text.h"

namespace quarl::alerts {
namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kObject = "/org/freedesktop/Notifications";
constexpr uint64_t kCallLimit = 10'000'000;  // microseconds

using Bus = std::unique_ptr<sd_bus, decltype(&sd_bus_close_unref)>;
using Message = std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)>;

std::string ReasonOf(int code) {
  return std::generic_category().message(-code);
}

class CallError {
 public:
  CallError() = default;
  CallError(const CallError&) = delete;
  CallError& operator=(const CallError&) = delete;
  ~CallError() { sd_bus_error_free(&error_); }
  sd_bus_error* Get() { return &error_; }
  std::string Reason(int code) const {
    return error_.message != nullptr ? kit::OneLine(error_.message, 120) : ReasonOf(code);
  }

 private:
  sd_bus_error error_ = SD_BUS_ERROR_NULL;
};

/// A connection of this call's own. 0 or a negative error number.
int Open(const std::string& address, Bus& bus) {
  sd_bus* raw = nullptr;
  int code = address.empty() ? sd_bus_open_user(&raw) : sd_bus_new(&raw);
  bus.reset(raw);
  if (code < 0) return code;
  if (!address.empty()) {
    code = sd_bus_set_address(raw, address.c_str());
    if (code >= 0) code = sd_bus_set_bus_client(raw, 1);
    if (code >= 0) code = sd_bus_start(raw);
  }
  return code < 0 ? code : sd_bus_set_method_call_timeout(raw, kCallLimit);
}

/// Whether the service reads the body as markup. 0 or a negative error number.
int AskForMarkup(sd_bus* bus, CallError& error, bool& markup) {
  sd_bus_message* raw = nullptr;
  int code = sd_bus_call_method(bus, kService, kObject, kService, "GetCapabilities", error.Get(), &raw, "");
  const Message reply(raw, &sd_bus_message_unref);
  if (code < 0) return code;
  code = sd_bus_message_enter_container(raw, SD_BUS_TYPE_ARRAY, "s");
  const char* capability = nullptr;
  while (code >= 0 && (code = sd_bus_message_read_basic(raw, SD_BUS_TYPE_STRING, &capability)) > 0) {
    markup = markup || std::strcmp(capability, "body-markup") == 0;
  }
  return code;
}

std::string MarkupOf(const std::string& text) {
  std::string markup;
  for (const char c : text) {
    markup += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  }
  return markup;
}

int Notify(sd_bus* bus, CallError& error, const DesktopNote& note, const std::string& body) {
  constexpr unsigned kReplacesNone = 0;
  constexpr unsigned kNoActions = 0, kHints = 2;
  return sd_bus_call_method(bus, kService, kObject, kService, "Notify", error.Get(), nullptr, "susssasa{sv}i", "Quarl",
                            kReplacesNone, note.icon.c_str(), note.title.c_str(), body.c_str(), kNoActions, kHints,
                            "urgency", "y", static_cast<int>(note.urgency), "desktop-entry", "s", "quarl-console",
                            note.milliseconds);
}

}  // namespace

std::string ShowNote(const DesktopNote& note, const std::string& busAddress) {
  Bus bus(nullptr, &sd_bus_close_unref);
  if (const int code = Open(busAddress, bus); code < 0) {
    return "No desktop session can be reached: " + ReasonOf(code) + '.';
  }
  CallError error;
  bool markup = false;
  int code = AskForMarkup(bus.get(), error, markup);
  if (code >= 0) code = Notify(bus.get(), error, note, markup ? MarkupOf(note.body) : note.body);
  if (code >= 0) return {};
  const bool connected = sd_bus_is_ready(bus.get()) > 0;
  return (connected ? "The desktop shows no notes: " : "No desktop session can be reached: ") + error.Reason(code) +
         '.';
}

}  // namespace quarl::alerts
