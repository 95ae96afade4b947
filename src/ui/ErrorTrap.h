#pragma once

#include <QString>
#include <type_traits>
#include <utility>

#include "base/Error.h"
#include "ui/MessageBoxes.h"

namespace quarl::ui {

/// The error trap of a window's or module's procedures:
///   return trap_("LoadImages", [&] { ...; return true; });
/// gives what the body gives. When the body throws an Error, a box shows its description followed at once by
/// "(Window:Procedure)", and the call gives the result type's default value (false, 0, "", nothing). Only Error is
/// caught. What the body did before stays done. User-interface thread only.
class ErrorTrap {
 public:
  /// @param window the first half of the tag.
  ErrorTrap(QString window, MessageBoxes boxes);

  template <typename Body>
  auto operator()(const char* procedure, Body&& body) const -> std::invoke_result_t<Body> {
    return Run(std::forward<Body>(body), [&](const Error& error) { ShowTagged(procedure, error); });
  }

  /// The box has the description alone, without a tag.
  template <typename Body>
  auto Untagged(Body&& body) const -> std::invoke_result_t<Body> {
    return Run(std::forward<Body>(body), [&](const Error& error) { boxes_.Plain(error.Description()); });
  }

  /// For procedures that end silently on an error: one line in the log, no box.
  template <typename Body>
  auto Quiet(const char* procedure, Body&& body) const -> std::invoke_result_t<Body> {
    return Run(std::forward<Body>(body), [&](const Error& error) { LogTagged(procedure, error); });
  }

 private:
  template <typename Body, typename Report>
  static auto Run(Body&& body, Report&& report) -> std::invoke_result_t<Body> {
    using Result = std::invoke_result_t<Body>;
    try {
      return std::forward<Body>(body)();
    } catch (const Error& error) {
      report(error);
    }
    if constexpr (!std::is_void_v<Result>) return Result{};
  }

  QString Tag(const char* procedure) const;
  void ShowTagged(const char* procedure, const Error& error) const;
  void LogTagged(const char* procedure, const Error& error) const;

  QString window_;
  MessageBoxes boxes_;
};

}  // namespace quarl::ui
