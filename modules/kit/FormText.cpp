#include "kit/FormText.h"

namespace quarl::kit {
namespace {

const char* NameOf(FieldType type) {
  switch (type) {
    case FieldType::Text:
      return "text";
    case FieldType::Lines:
      return "lines";
    case FieldType::List:
      return "list";
    case FieldType::Secret:
      return "secret";
    case FieldType::Integer:
      return "integer";
    case FieldType::Decimal:
      return "decimal";
    case FieldType::Boolean:
      return "boolean";
    case FieldType::Choice:
      break;
  }
  return "choice";
}

Json Described(const Field& field) {
  Json description{{"key", field.key}, {"label", field.label}, {"type", NameOf(field.type)}};
  if (!field.group.empty()) description["group"] = field.group;
  if (!field.unit.empty()) description["unit"] = field.unit;
  if (!field.help.empty()) description["help"] = field.help;
  if (field.maximum > field.minimum) {
    description["minimum"] = field.minimum;
    description["maximum"] = field.maximum;
  }
  if (field.required) description["required"] = true;
  description["longest"] = field.longest;
  for (const Choice& choice : field.choices)
    description["choices"].push_back({{"value", choice.value}, {"label", choice.label}});
  if (field.enabledWhen)
    description["enabledWhen"] = {{"key", field.enabledWhen->key}, {"value", field.enabledWhen->value}};
  return description;
}

}  // namespace

std::string FormText(const Form& form, const std::string& note, const std::string& tryLabel) {
  Json text{{"title", form.title}};
  if (!note.empty()) text["note"] = note;
  if (!tryLabel.empty()) text["tryLabel"] = tryLabel;
  text["fields"] = Json::array();
  for (const Field& field : form.fields) text["fields"].push_back(Described(field));
  return text.dump();
}

}  // namespace quarl::kit
