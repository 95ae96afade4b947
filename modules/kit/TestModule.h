#pragma once

#include <chrono>
#include <string>

#include "kit/ModuleBasics.h"
#include "kit/Properties.h"
#include "kit/Steps.h"
#include "quarl_module.h"

namespace quarl::kit {

enum class State : int16_t { Passed = QUARL_PASSED, Unknown = QUARL_UNKNOWN, Failed = QUARL_FAILED };

struct Server {
  std::string name;
  std::string address;  ///< dotted text
};

struct CheckOutcome {
  State state = State::Unknown;
  std::string text{};                      ///< one line
  std::string performance{};               ///< the Monitoring Plugins' form: "rta=0.42ms;100;500;0", or ""
  std::chrono::microseconds duration{-1};  ///< negative: measured around the call
};

/// A test module. One object serves all calls of a process, from many threads at once.
class TestModule {
 public:
  virtual ~TestModule() = default;
  /// The same object at each call.
  virtual const Form& Fields() const = 0;
  /// Makes one check within the limit. The properties are free of defects, by their fields' limits and by Judge. May
  /// throw std::exception, which counts as Unknown with its text.
  virtual CheckOutcome Check(const Server& server, const Properties& properties,
                             std::chrono::milliseconds limit) const = 0;
  /// What no single field can tell; "" when all is well, else a sentence, and the key of the field in key.
  virtual std::string Judge(const Properties& properties, std::string& key) const;
  virtual int16_t BufferSize() const { return 4096; }
  /// For the about box: "Ping 0.1.0 ..." and what it does.
  virtual std::string About() const = 0;
};

/// A test module whose checks wait without a thread, so that thousands can be on their way at once.
class SteppedTestModule : public TestModule {
 public:
  /// As Check(). The arguments live until the task has ended. No step may block.
  virtual Task<CheckOutcome> Begin(const Server& server, const Properties& properties,
                                   std::chrono::milliseconds limit) const = 0;
  CheckOutcome Check(const Server& server, const Properties& properties, std::chrono::milliseconds limit) const final;
  /// Checks that one process is to have on its way, 1 to 1000.
  virtual int16_t AtOnce() const { return 1000; }
};

// The module's exported functions, each for one module object; they let no exception out. See quarl_module.h.
int16_t SetProperties(const TestModule& module, QuarlBuffer serverName, QuarlBuffer serverAddress,
                      QuarlBuffer properties) noexcept;
int16_t RunCheck(const TestModule& module, const QuarlCheckRequest* request, QuarlCheckResult* result) noexcept;
int16_t RunCheckStep(const SteppedTestModule& module, const QuarlCheckRequest* request, QuarlCheckWait* wait,
                     QuarlCheckResult* result) noexcept;

}  // namespace quarl::kit

/// All functions of a test module around one class; stands once, in the .cpp that is a direct source of the module.
/// The object is never destroyed: threads may still be in it when the process ends.
#define QUARL_TEST_MODULE(Class)                                                   \
  static const Class& TheTestModule() {                                            \
    static const Class& module = *new Class;                                       \
    return module;                                                                 \
  }                                                                                \
  QUARL_DEFINE_MODULE(QUARL_MODULE_TEST)                                           \
  QUARL_DEFINE_MODULE_BASICS(TheTestModule())                                      \
  int16_t QuarlCheck(const QuarlCheckRequest* request, QuarlCheckResult* result) { \
    return quarl::kit::RunCheck(TheTestModule(), request, result);                 \
  }

/// The same for a SteppedTestModule.
#define QUARL_STEPPED_TEST_MODULE(Class)                                                                     \
  QUARL_TEST_MODULE(Class)                                                                                   \
  int16_t QuarlCheckStep(const QuarlCheckRequest* request, QuarlCheckWait* wait, QuarlCheckResult* result) { \
    return quarl::kit::RunCheckStep(TheTestModule(), request, wait, result);                                 \
  }                                                                                                          \
  int16_t QuarlChecksAtOnce(void) {                                                                          \
    return TheTestModule().AtOnce();                                                                         \
  }
