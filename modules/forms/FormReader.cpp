#include "forms/FormReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "kit/Error.h"
#include "kit/ShallowJson.h"
#include "kit/Text.h"

namespace quarl::forms {
namespace {

using kit::Error;
using kit::Field;
using kit::FieldType;
using kit::Json;

constexpr int kDeepest = 16;
constexpr std::size_t kMostFields = 200;
constexpr std::size_t kMostChoices = 1000;
constexpr std::size_t kLongestLine = 200;
constexpr std::size_t kLongestText = 4000;
constexpr std::size_t kLongestValue = 1024 * 1024;
constexpr double kLargestNumber = 9007199254740992.0;  // whole numbers up to here are exact

constexpr std::array<std::pair<std::string_view, FieldType>, 8> kTypes{{{"text", FieldType::Text},
                                                                        {"lines", FieldType::Lines},
                                                                        {"list", FieldType::List},
                                                                        {"secret", FieldType::Secret},
                                                                        {"integer", FieldType::Integer},
                                                                        {"decimal", FieldType::Decimal},
                                                                        {"boolean", FieldType::Boolean},
                                                                        {"choice", FieldType::Choice}}};

Json ParseObject(std::string_view text, const char* what) {
  Json object = kit::ParseShallow(text, kDeepest);
  if (!object.is_object()) throw Error(std::string(what) + " is no JSON object that can be read.");
  return object;
}

/// A member that is a text; "" where it is missing.
std::string TextMember(const Json& object, const char* name) {
  const auto member = object.find(name);
  if (member == object.end()) return {};
  if (!member->is_string()) throw Error(std::string("The member \"") + name + "\" is no text.");
  return member->get<std::string>();
}

std::string LineMember(const Json& object, const char* name) {
  return kit::OneLine(TextMember(object, name), kLongestLine);
}

std::string LinesMember(const Json& object, const char* name) {
  std::string text = TextMember(object, name);
  const auto hostile = [](char byte) { return byte != '\n' && static_cast<unsigned char>(byte) < 0x20; };
  std::replace_if(text.begin(), text.end(), hostile, ' ');
  return std::string(kit::CutUtf8(text, kLongestText));
}

double NumberMember(const Json& object, const char* name) {
  const auto member = object.find(name);
  if (member == object.end()) return 0;
  if (!member->is_number() || std::abs(member->get<double>()) > kLargestNumber)
    throw Error(std::string("The member \"") + name + "\" is no number that can be shown.");
  return member->get<double>();
}

FieldType TypeMember(const Json& object) {
  const std::string name = TextMember(object, "type");
  const auto fits = [&](const auto& type) { return type.first == name; };
  const auto* const type = std::find_if(kTypes.begin(), kTypes.end(), fits);
  if (type == kTypes.end()) throw Error("There is no type of field \"" + kit::OneLine(name, kLongestLine) + "\".");
  return type->second;
}

std::vector<kit::Choice> Choices(const Json& object, const std::string& key) {
  const auto member = object.find("choices");
  if (member == object.end() || !member->is_array() || member->empty() || member->size() > kMostChoices)
    throw Error("The field \"" + key + "\" has no choices.");
  std::vector<kit::Choice> choices;
  for (const Json& choice : *member) {
    if (!choice.is_object()) throw Error("A choice of the field \"" + key + "\" is no object.");
    choices.push_back({TextMember(choice, "value"), LineMember(choice, "label")});
    if (choices.back().label.empty()) choices.back().label = kit::OneLine(choices.back().value, kLongestLine);
  }
  return choices;
}

Field ReadField(const Json& object) {
  if (!object.is_object()) throw Error("A field is no object.");
  Field field{TextMember(object, "key"), LineMember(object, "label"), TypeMember(object)};
  if (field.key.empty() || field.key != kit::OneLine(field.key, kLongestLine))
    throw Error("A field has no key, or one that is no short line.");
  if (field.label.empty()) field.label = field.key;
  field.group = LineMember(object, "group");
  field.unit = LineMember(object, "unit");
  field.help = LinesMember(object, "help");
  field.minimum = NumberMember(object, "minimum");
  field.maximum = NumberMember(object, "maximum");
  const auto required = object.find("required");
  field.required = required != object.end() && *required == true;
  const double longest = NumberMember(object, "longest");
  field.longest = longest >= 1 ? static_cast<std::size_t>(std::min<double>(longest, kLongestValue)) : kLongestValue;
  if (field.type == FieldType::Choice) field.choices = Choices(object, field.key);
  const auto condition = object.find("enabledWhen");
  if (condition == object.end()) return field;
  if (!condition->is_object() || !condition->contains("value"))
    throw Error("The condition of the field \"" + field.key + "\" cannot be read.");
  field.enabledWhen = kit::Condition{TextMember(*condition, "key"), (*condition)["value"]};
  return field;
}

void CheckKeys(const kit::Form& form) {
  for (const Field& field : form.fields) {
    if (kit::FindField(form, field.key) != &field) throw Error("The key \"" + field.key + "\" stands there twice.");
    if (field.enabledWhen && kit::FindField(form, field.enabledWhen->key) == nullptr)
      throw Error("The condition of the field \"" + field.key + "\" names no field.");
  }
}

Json FittingValues(const kit::Form& form, const Json& values) {
  Json fitting = Json::object();
  for (const Field& field : form.fields) {
    const auto value = values.find(field.key);
    if (value == values.end()) throw Error("The field \"" + field.key + "\" has no value.");
    Field optional = field;
    optional.required = false;
    const std::string defect = kit::Defect(optional, *value);
    if (!defect.empty()) throw Error("The value of the field \"" + field.key + "\" cannot be shown. " + defect);
    if (value->is_number() && std::abs(value->get<double>()) > kLargestNumber)
      throw Error("The value of the field \"" + field.key + "\" is too large to be shown.");
    fitting[field.key] = *value;
  }
  return fitting;
}

}  // namespace

FormRequest ReadForm(std::string_view description, std::string_view values) {
  const Json object = ParseObject(description, "The form");
  FormRequest request;
  request.form.title = LineMember(object, "title");
  request.note = LinesMember(object, "note");
  request.tryLabel = LineMember(object, "tryLabel");
  const auto fields = object.find("fields");
  if (fields == object.end() || !fields->is_array() || fields->empty() || fields->size() > kMostFields)
    throw Error("The form has no fields, or too many.");
  for (const Json& field : *fields) request.form.fields.push_back(ReadField(field));
  CheckKeys(request.form);
  request.values = FittingValues(request.form, ParseObject(values, "The text of the values"));
  return request;
}

}  // namespace quarl::forms
