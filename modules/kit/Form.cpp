#include "kit/Form.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "kit/Text.h"

namespace quarl::kit {
namespace {

bool IsLimited(const Field& field) {
  return field.maximum > field.minimum;
}

std::string Number(double number) {
  char text[40];
  std::snprintf(text, sizeof text, "%.15g", number);
  return text;
}

std::string NumberNeeded(const Field& field) {
  std::string text = field.type == FieldType::Integer ? "A whole number" : "A number";
  if (IsLimited(field)) text += " from " + Number(field.minimum) + " to " + Number(field.maximum);
  return text + " is needed.";
}

std::string NumberDefect(const Field& field, const Json& value) {
  const bool kind = field.type == FieldType::Integer ? value.is_number_integer() : value.is_number();
  if (!kind) return NumberNeeded(field);
  if (value.is_number_unsigned() &&
      value.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    return NumberNeeded(field);
  const auto number = value.get<double>();
  const bool within = !IsLimited(field) || (number >= field.minimum && number <= field.maximum);
  return std::isfinite(number) && within ? "" : NumberNeeded(field);
}

std::string TextDefect(const Field& field, const Json& value, bool severalLines) {
  if (!value.is_string()) return "A text is needed.";
  const auto& text = value.get_ref<const std::string&>();
  if (!IsUtf8(text)) return "The text is no valid UTF-8.";
  if (text.size() > field.longest)
    return "The text takes " + std::to_string(text.size()) + " bytes; at most " + std::to_string(field.longest) +
           " are possible.";
  const bool hostile = std::any_of(text.begin(), text.end(), [&](char byte) {
    const bool control = static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f;
    return control && !(severalLines && (byte == '\n' || byte == '\t'));
  });
  return hostile ? "Control characters may not stand in this text." : "";
}

std::string ListDefect(const Field& field, const Json& value) {
  if (!value.is_array()) return "A list of texts is needed.";
  for (std::size_t at = 0; at < value.size(); ++at) {
    const std::string defect = TextDefect(field, value[at], false);
    if (!defect.empty()) return "Line " + std::to_string(at + 1) + ": " + defect;
  }
  return "";
}

std::string KindDefect(const Field& field, const Json& value) {
  switch (field.type) {
    case FieldType::Text:
    case FieldType::Secret:
      return TextDefect(field, value, false);
    case FieldType::Lines:
      return TextDefect(field, value, true);
    case FieldType::List:
      return ListDefect(field, value);
    case FieldType::Integer:
    case FieldType::Decimal:
      return NumberDefect(field, value);
    case FieldType::Boolean:
      return value.is_boolean() ? "" : "Yes or no is needed.";
    case FieldType::Choice:
      break;
  }
  const auto fits = [&](const Choice& choice) { return value == choice.value; };
  return std::any_of(field.choices.begin(), field.choices.end(), fits) ? "" : "One of the choices is needed.";
}

bool Fits(const Condition& condition, const Json& value) {
  const Json& wanted = condition.value;
  return wanted.is_array() ? std::find(wanted.begin(), wanted.end(), value) != wanted.end() : wanted == value;
}

bool IsBlank(const Json& value) {
  if (value.is_array()) return value.empty();
  return value.is_string() && value.get_ref<const std::string&>().find_first_not_of(" \t\n") == std::string::npos;
}

}  // namespace

Form FormOf(const char* module, const char* title, std::initializer_list<std::vector<Field>> parts) {
  Form form{module, title, {}};
  for (const std::vector<Field>& part : parts) form.fields.insert(form.fields.end(), part.begin(), part.end());
  return form;
}

std::string Defect(const Field& field, const Json& value) {
  std::string defect = KindDefect(field, value);
  if (defect.empty() && field.required && IsBlank(value)) defect = "This field may not be empty.";
  return defect;
}

Json StandardOf(const Field& field) {
  if (!field.standard.is_null()) return field.standard;
  switch (field.type) {
    case FieldType::List:
      return Json::array();
    case FieldType::Integer:
    case FieldType::Decimal:
      return IsLimited(field) ? Json(static_cast<std::int64_t>(field.minimum)) : Json(0);
    case FieldType::Boolean:
      return false;
    case FieldType::Choice:
      return field.choices.empty() ? std::string() : field.choices.front().value;
    default:
      return std::string();
  }
}

bool IsEnabled(const Form& form, const Field& field, const Json& values) {
  const Field* at = &field;
  for (std::size_t depth = 0; at->enabledWhen && depth <= form.fields.size(); ++depth) {
    const auto value = values.find(at->enabledWhen->key);
    if (value == values.end() || !Fits(*at->enabledWhen, *value)) return false;
    at = FindField(form, at->enabledWhen->key);
    if (at == nullptr) return true;
  }
  return true;
}

std::optional<Finding> FirstDefect(const Form& form, const Json& values) {
  for (const Field& field : form.fields) {
    if (!IsEnabled(form, field, values)) continue;
    const auto value = values.find(field.key);
    if (value == values.end()) return Finding{field.key, "This field has no value."};
    std::string defect = Defect(field, *value);
    if (!defect.empty()) return Finding{field.key, std::move(defect)};
  }
  return std::nullopt;
}

const Field* FindField(const Form& form, std::string_view key) {
  const auto fits = [&](const Field& field) { return field.key == key; };
  const auto field = std::find_if(form.fields.begin(), form.fields.end(), fits);
  return field == form.fields.end() ? nullptr : &*field;
}

}  // namespace quarl::kit
