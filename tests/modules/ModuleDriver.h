#pragma once

#include <nlohmann/json.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "quarl_module.h"

namespace quarl::testing {

using Json = nlohmann::ordered_json;

/// A built module of the layout, opened as the module host opens it, and its functions called as it calls them. One at
/// a time; Check and the alerts may be called by many threads.
class ModuleDriver {
 public:
  /// @param module kind's folder and name, "tests/ping", or a file's absolute path. A module that cannot be opened
  /// throws std::runtime_error.
  explicit ModuleDriver(const std::string& module);
  ~ModuleDriver();
  ModuleDriver(const ModuleDriver&) = delete;
  ModuleDriver& operator=(const ModuleDriver&) = delete;

  /// The properties string of values (and secrets) for this module; what is left out has its standard value.
  static std::string Properties(const std::string& module, const Json& values, const Json& secrets = Json::object());

  int16_t Kind() const;
  int16_t BufferSize() const;
  /// Title and text of the about box.
  std::pair<std::string, std::string> About();

  struct CheckAnswer {
    int16_t state = 0;
    std::string text;
    std::string performance;
    std::chrono::microseconds duration{0};
  };
  struct CheckQuestion {
    std::string address = "127.0.0.1";
    std::string properties;
    std::string serverName = "server";
    std::chrono::milliseconds timeLimit{20000};
  };
  CheckAnswer Check(const CheckQuestion& question) const;

  /// A check by QuarlCheckStep.
  class Steps;
  /// Alive no longer than this object.
  std::unique_ptr<Steps> BeginSteps(const CheckQuestion& question) const;

  struct AlertAnswer {
    int16_t result = 0;
    std::string text;  ///< the blanks at the end not counted
  };
  /// QuarlAlertEvent. Members of the event that are nullptr become "".
  AlertAnswer Alert(QuarlEvent event, const std::string& properties) const;
  /// QuarlAlert, as the console's alert test calls it.
  AlertAnswer TestAlert(const std::string& serverName, const std::string& subject, const std::string& message,
                        const std::string& properties) const;

  /// A form that is open, for the one who plays the user.
  struct OpenForm {
    Json form;    ///< as the module described it
    Json values;  ///< as they would stand on the screen; what is here at the end is confirmed
    struct Answer {
      int16_t result = 0;
      std::string field;
      std::string report;
    };
    std::function<Answer(const Json& values)> attempt;  ///< the button that tries the values
    std::function<Answer(const Json& values)> validate;
  };
  /// Gives what ShowForm gives: 0 confirmed, 1 cancelled.
  using User = std::function<int16_t(OpenForm& form)>;
  struct Edited {
    int16_t result = 0;
    std::string properties;  ///< the buffer afterwards, up to its first NUL
  };
  /// QuarlSetProperties with a user who answers the form.
  Edited SetProperties(const std::string& properties, const User& user, const std::string& serverName = "server",
                       const std::string& address = "127.0.0.1");

 private:
  template <typename Function>
  Function* Find(const char* name) const;
  void* library_ = nullptr;
};

class ModuleDriver::Steps {
 public:
  virtual ~Steps() = default;
  /// Makes one step; whether the check goes on.
  virtual bool Go(int16_t came) = 0;
};

}  // namespace quarl::testing
