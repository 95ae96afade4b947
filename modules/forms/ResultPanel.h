#pragma once

#include <QFrame>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTimer>
#include <functional>
#include <optional>

#include "forms/Trial.h"

namespace quarl::forms {

/// Runs trials, one at a time, and shows how long the one under way takes and what the last one reported. Hidden until
/// there is something to show.
class ResultPanel : public QFrame {
 public:
  /// @param stateChanged called when a trial has begun and when it has ended
  ResultPanel(std::function<void()> stateChanged, QWidget* parent);

  bool IsRunning() const { return trial_.has_value(); }
  /// Only while none is running.
  void Start(const QuarlFormCalls& calls, const std::string& values);
  /// Shows a sentence that is no trial's.
  void ShowProblem(const QString& text);
  void Clear();

 private:
  void Look();
  void ShowReport(bool good, const QString& report);

  std::function<void()> stateChanged_;
  std::optional<Trial> trial_;
  QTimer look_;
  QLabel* picture_;
  QLabel* head_;
  QPlainTextEdit* text_;
};

}  // namespace quarl::forms
