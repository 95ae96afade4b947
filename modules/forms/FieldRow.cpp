#include "forms/FieldRow.h"

#include <QHBoxLayout>

#include "forms/FormColours.h"

namespace quarl::forms {
namespace {

using kit::FieldType;

bool IsWide(FieldType type) {
  return type == FieldType::Text || type == FieldType::Secret || type == FieldType::Lines || type == FieldType::List;
}

QLabel* MakeSmallLabel(QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  QFont font = label->font();
  font.setPointSizeF(font.pointSizeF() * 0.9);
  label->setFont(font);
  return label;
}

QLayout* MakeLine(QWidget* editor, const kit::Field& field, QWidget* parent) {
  auto* line = new QHBoxLayout;
  line->addWidget(editor);
  if (!IsWide(field.type)) {
    line->addStretch();
  } else if (!field.unit.empty()) {
    auto* unit = new QLabel(QString::fromStdString(field.unit), parent);
    unit->setTextFormat(Qt::PlainText);
    line->addWidget(unit);
  }
  return line;
}

}  // namespace

FieldRow::FieldRow(const kit::Field& field, const kit::Json& value, const std::function<void()>& changed,
                   QGridLayout& layout)
    : field_(&field), editor_(MakeFieldEditor(field, value, changed, layout.parentWidget())) {
  QWidget* parent = layout.parentWidget();
  const int row = layout.rowCount();
  if (field.type != FieldType::Boolean) {
    label_ = new QLabel(WithoutShortcut(field.label + ":"), parent);
    label_->setObjectName(QString::fromStdString(field.key) + QStringLiteral("Label"));
    label_->setTextFormat(Qt::PlainText);
    label_->setBuddy(editor_.widget);
    label_->setToolTip(editor_.widget->toolTip());
    const bool high = field.type == FieldType::Lines || field.type == FieldType::List;
    layout.addWidget(label_, row, 0, high ? Qt::AlignTop : Qt::AlignVCenter);
  } else {
    layout.addWidget(new QWidget(parent), row, 0);  // an empty column would have no distance to the next
  }
  layout.addLayout(MakeLine(editor_.widget, field, parent), row, 1);
  if (IsWide(field.type) && !field.help.empty()) AddHelp(layout);
  error_ = MakeSmallLabel(parent);
  error_->setObjectName(QString::fromStdString(field.key) + QStringLiteral("Error"));
  SetTextColour(*error_, ErrorColour(error_->palette()));
  error_->hide();
  layout.addWidget(error_, layout.rowCount(), 1);
}

void FieldRow::AddHelp(QGridLayout& layout) {
  help_ = MakeSmallLabel(layout.parentWidget());
  help_->setObjectName(QString::fromStdString(field_->key) + QStringLiteral("Help"));
  help_->setText(QString::fromStdString(field_->help));
  SetTextColour(*help_, QuietColour(help_->palette()));
  layout.addWidget(help_, layout.rowCount(), 1);
}

void FieldRow::SetEnabled(bool enabled) {
  editor_.widget->setEnabled(enabled);
  if (label_ != nullptr) label_->setEnabled(enabled);
  if (help_ != nullptr) help_->setEnabled(enabled);
}

void FieldRow::ShowError(const QString& text) {
  error_->setText(text);
  error_->setVisible(!text.isEmpty());
  const QString help = QString::fromStdString(field_->help);
  editor_.widget->setAccessibleDescription(text.isEmpty() ? help : text);
}

}  // namespace quarl::forms
