#pragma once

#include <string>

#include "kit/ModuleBasics.h"
#include "kit/Properties.h"
#include "quarl_module.h"

namespace quarl::kit {

enum class EventKind : int32_t {
  Test = QUARL_EVENT_TEST,
  Problem = QUARL_EVENT_PROBLEM,
  Recovery = QUARL_EVENT_RECOVERY
};

/// The facts of an alert; see QuarlEvent.
struct Event {
  EventKind kind = EventKind::Test;
  std::string subject;
  std::string message;
  std::string serverName;
  std::string serverAddress;
  std::string groupName;
  std::string testName;
  std::string resultText;
  int64_t time = 0;
  int64_t since = 0;
  std::string problemId;
  std::string messageId;
};

/// An alert module. One object serves all calls of a process, from many threads at once.
class AlertModule {
 public:
  virtual ~AlertModule() = default;
  /// The same object at each call.
  virtual const Form& Fields() const = 0;
  /// Delivers one message. The properties are free of defects, by their fields' limits and by Judge. "" when it was
  /// delivered, else one sentence. May throw std::exception, which counts as a failure with its text.
  virtual std::string Send(const Event& event, const Properties& properties) const = 0;
  /// What no single field can tell; "" when all is well, else a sentence, and the key of the field in key.
  virtual std::string Judge(const Properties& properties, std::string& key) const;
  virtual int16_t BufferSize() const { return 16384; }
  virtual std::string About() const = 0;
};

/// Defined by QUARL_ALERT_MODULE.
const AlertModule& TheAlertModule();

// The module's exported functions, each for one module object; they let no exception out. See quarl_module.h.
int16_t SetProperties(const AlertModule& module, QuarlBuffer serverName, QuarlBuffer serverAddress,
                      QuarlBuffer properties) noexcept;
/// What QuarlAlert is told.
struct TestAlert {
  QuarlBuffer serverName, serverAddress, subject, message;
};
/// Sends an event of kind Test with a message id of its own.
int16_t SendTestAlert(const AlertModule& module, const TestAlert& alert, QuarlBuffer properties,
                      QuarlBuffer resultText) noexcept;
int16_t SendEvent(const AlertModule& module, const QuarlEvent* event, const char* properties,
                  QuarlBuffer resultText) noexcept;

}  // namespace quarl::kit

/// All functions of an alert module around one class; stands once, in the .cpp that is a direct source of the module.
/// The object is never destroyed: threads may still be in it when the process ends.
#define QUARL_ALERT_MODULE(Class)                                                                                 \
  const quarl::kit::AlertModule& quarl::kit::TheAlertModule() {                                                   \
    static const Class& module = *new Class;                                                                      \
    return module;                                                                                                \
  }                                                                                                               \
  QUARL_DEFINE_MODULE(QUARL_MODULE_ALERT)                                                                         \
  QUARL_DEFINE_MODULE_BASICS(quarl::kit::TheAlertModule())                                                        \
  int16_t QuarlAlert(QuarlBuffer serverName, QuarlBuffer serverAddress, QuarlBuffer subject, QuarlBuffer message, \
                     QuarlBuffer properties, QuarlBuffer resultText) {                                            \
    return quarl::kit::SendTestAlert(quarl::kit::TheAlertModule(), {serverName, serverAddress, subject, message}, \
                                     properties, resultText);                                                     \
  }                                                                                                               \
  int16_t QuarlAlertEvent(const QuarlEvent* event, const char* properties, QuarlBuffer resultText) {              \
    return quarl::kit::SendEvent(quarl::kit::TheAlertModule(), event, properties, resultText);                    \
  }
