#pragma once

#include <QDialog>
#include <QPushButton>
#include <QScrollArea>
#include <vector>

#include "forms/FieldRow.h"
#include "forms/FormReader.h"
#include "forms/ResultPanel.h"

namespace quarl::forms {

/// The dialog of a form, "ModuleForm". Closes with OK only when the fields' limits and the module agree to the values.
class FormDialog : public QDialog {
 public:
  /// @param calls context and functions; what they refer to outlives the dialog and every trial
  /// @param room bytes that the values' text may take
  FormDialog(FormRequest request, const QuarlFormCalls& calls, std::size_t room, QWidget* parent = nullptr);

  /// What stands on the screen.
  kit::Json Values() const;

  void accept() override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void Build();
  QWidget* MakeNote();
  QWidget* MakeFields();
  QLayout* MakeButtons();
  QGridLayout* SectionLayout(const std::string& group, QWidget* page);
  void AlignLabels();
  void UpdateEnabled();
  void UpdateButtons();
  void FitToScreen();
  void TryNow();
  /// Shows what is wrong with the values; true when nothing is.
  bool Judge();
  bool JudgeFields(const kit::Json& values);
  bool AskModule(const kit::Json& values);
  void Point(const std::string& key, const QString& text);
  void FocusFirstError();

  FormRequest request_;
  QuarlFormCalls calls_;
  std::size_t room_;
  std::vector<FieldRow> rows_;
  QScrollArea* scroll_ = nullptr;
  ResultPanel* result_ = nullptr;
  QPushButton* try_ = nullptr;
  bool built_ = false;
};

}  // namespace quarl::forms
