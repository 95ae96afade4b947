#include "forms/FieldEditor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontMetrics>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTextDocument>
#include <limits>

namespace quarl::forms {
namespace {

using kit::Field;
using kit::FieldType;
using kit::Json;
using Changed = std::function<void()>;

constexpr int kTextWidth = 340;
constexpr int kNumberWidth = 110;
constexpr int kLinesShown = 5;
constexpr int kListShown = 4;
constexpr int kDecimals = 3;
constexpr double kLargestNumber = 9007199254740992.0;

FieldEditor MakeText(const Field& field, const Json& value, const Changed& changed, QWidget* parent) {
  auto* line = new QLineEdit(parent);
  line->setMaxLength(std::numeric_limits<int>::max());  // a text is never cut; the limit is judged in bytes
  line->setText(QString::fromStdString(value.get<std::string>()));
  line->setMinimumWidth(kTextWidth);
  if (field.type == FieldType::Secret) {
    line->setEchoMode(QLineEdit::Password);
    line->setPlaceholderText(QStringLiteral("none set"));
    line->setClearButtonEnabled(true);
  }
  line->setCursorPosition(0);
  QObject::connect(line, &QLineEdit::textChanged, line, changed);
  return {line, [line, value, shown = line->text()] {
            return line->text() == shown ? value : Json(line->text().toStdString());
          }};
}

QPlainTextEdit* MakeLinesBox(const std::string& text, int shown, const Changed& changed, QWidget* parent) {
  auto* box = new QPlainTextEdit(QString::fromStdString(text), parent);
  box->setTabChangesFocus(true);
  box->setLineWrapMode(QPlainTextEdit::NoWrap);
  box->setMinimumWidth(kTextWidth);
  const int margins = 2 * (box->frameWidth() + static_cast<int>(box->document()->documentMargin()));
  box->setFixedHeight(QFontMetrics(box->font()).lineSpacing() * shown + margins + 2);
  QObject::connect(box, &QPlainTextEdit::textChanged, box, changed);
  return box;
}

// Unlike toPlainText(), which makes blanks of no-break spaces.
QString LinesOf(const QPlainTextEdit* box) {
  QString text = box->document()->toRawText();
  return text.replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
}

FieldEditor MakeLines(const Json& value, const Changed& changed, QWidget* parent) {
  auto* box = MakeLinesBox(value.get<std::string>(), kLinesShown, changed, parent);
  return {box, [box, value, shown = LinesOf(box)] {
            return LinesOf(box) == shown ? value : Json(LinesOf(box).toStdString());
          }};
}

FieldEditor MakeList(const Json& value, const Changed& changed, QWidget* parent) {
  std::string text;
  for (const Json& entry : value) text.append(text.empty() ? "" : "\n").append(entry.get<std::string>());
  auto* box = MakeLinesBox(text, kListShown, changed, parent);
  box->setPlaceholderText(QStringLiteral("one entry a line"));
  return {box, [box, value, shown = LinesOf(box)] {
            if (LinesOf(box) == shown) return value;
            Json entries = Json::array();
            for (const QString& line : LinesOf(box).split(u'\n'))
              if (!line.trimmed().isEmpty()) entries.push_back(line.trimmed().toStdString());
            return entries;
          }};
}

/// Shows no zeros behind the last digit that counts.
class NumberBox : public QDoubleSpinBox {
 public:
  using QDoubleSpinBox::QDoubleSpinBox;
  QString textFromValue(double value) const override {
    QString text = QDoubleSpinBox::textFromValue(value);
    const QString point = locale().decimalPoint();
    if (!text.contains(point)) return text;
    while (text.endsWith(u'0')) text.chop(1);
    return text.endsWith(point) ? text.chopped(point.size()) : text;
  }
};

template <typename Box>
void Prepare(Box& box, const Field& field) {
  if (!field.unit.empty()) box.setSuffix(u' ' + QString::fromStdString(field.unit));
  box.setMinimumWidth(kNumberWidth);
  box.setGroupSeparatorShown(false);
}

FieldEditor MakeNumber(const Field& field, const Json& value, const Changed& changed, QWidget* parent) {
  auto* box = new NumberBox(parent);
  const bool limited = field.maximum > field.minimum;
  const bool whole = field.type == FieldType::Integer;
  box->setDecimals(whole ? 0 : kDecimals);
  box->setRange(limited ? field.minimum : -kLargestNumber, limited ? field.maximum : kLargestNumber);
  Prepare(*box, field);
  box->setValue(value.get<double>());
  QObject::connect(box, &QDoubleSpinBox::valueChanged, box, changed);
  // What is shown may be rounded: it counts only when it was changed.
  return {box, [box, value, whole, shown = box->value()] {
            if (box->value() == shown) return value;
            return whole ? Json(static_cast<std::int64_t>(box->value())) : Json(box->value());
          }};
}

FieldEditor MakeInteger(const Field& field, const Json& value, const Changed& changed, QWidget* parent) {
  using Limits = std::numeric_limits<int>;
  if (field.maximum <= field.minimum || field.minimum < Limits::min() || field.maximum > Limits::max())
    return MakeNumber(field, value, changed, parent);
  auto* box = new QSpinBox(parent);
  box->setRange(static_cast<int>(field.minimum), static_cast<int>(field.maximum));
  Prepare(*box, field);
  box->setValue(value.get<int>());
  QObject::connect(box, &QSpinBox::valueChanged, box, changed);
  return {box, [box] { return Json(box->value()); }};
}

FieldEditor MakeChoice(const Field& field, const Json& value, const Changed& changed, QWidget* parent) {
  auto* box = new QComboBox(parent);
  for (const kit::Choice& choice : field.choices) {
    box->addItem(QString::fromStdString(choice.label));
    if (value == choice.value) box->setCurrentIndex(box->count() - 1);
  }
  QObject::connect(box, &QComboBox::currentIndexChanged, box, changed);
  return {box, [box, choices = field.choices] {
            return Json(choices.at(static_cast<std::size_t>(box->currentIndex())).value);
          }};
}

FieldEditor MakeBoolean(const Field& field, const Json& value, const Changed& changed, QWidget* parent) {
  auto* box = new QCheckBox(WithoutShortcut(field.label), parent);
  box->setChecked(value.get<bool>());
  QObject::connect(box, &QCheckBox::toggled, box, changed);
  return {box, [box] { return Json(box->isChecked()); }};
}

FieldEditor MakeByType(const Field& field, const Json& value, const Changed& changed, QWidget* parent) {
  switch (field.type) {
    case FieldType::Text:
    case FieldType::Secret:
      return MakeText(field, value, changed, parent);
    case FieldType::Lines:
      return MakeLines(value, changed, parent);
    case FieldType::List:
      return MakeList(value, changed, parent);
    case FieldType::Integer:
      return MakeInteger(field, value, changed, parent);
    case FieldType::Decimal:
      return MakeNumber(field, value, changed, parent);
    case FieldType::Boolean:
      return MakeBoolean(field, value, changed, parent);
    case FieldType::Choice:
      break;
  }
  return MakeChoice(field, value, changed, parent);
}

}  // namespace

FieldEditor MakeFieldEditor(const Field& field, const Json& value, const Changed& changed, QWidget* parent) {
  FieldEditor editor = MakeByType(field, value, changed, parent);
  editor.widget->setObjectName(QString::fromStdString(field.key));
  editor.widget->setAccessibleName(QString::fromStdString(field.label));
  editor.widget->setAccessibleDescription(QString::fromStdString(field.help));
  if (!field.help.empty()) editor.widget->setToolTip(ToolTip(field.help));
  return editor;
}

QString WithoutShortcut(const std::string& text) {
  return QString::fromStdString(text).replace(u'&', QStringLiteral("&&"));
}

QString ToolTip(const std::string& text) {
  return Qt::convertFromPlainText(QString::fromStdString(text), Qt::WhiteSpaceNormal);
}

}  // namespace quarl::forms
