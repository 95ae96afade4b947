#include "kit/Properties.h"

#include <algorithm>

#include "kit/Error.h"
#include "kit/ShallowJson.h"
#include "kit/Text.h"

namespace quarl::kit {
namespace {

constexpr int kFormat = 1;
constexpr int kDeepest = 32;  // levels of a stored text
constexpr std::size_t kLongestShownName = 40;

const char* PlaceOf(const Field& field) {
  return field.type == FieldType::Secret ? "secrets" : "values";
}

void AddLine(std::string& note, const std::string& line) {
  if (!note.empty()) note += '\n';
  note += line;
}

std::string Refusal(const Json& document, const Form& form) {
  constexpr const char* kUnreadable = "The stored settings cannot be read. Standard values are shown.";
  if (!document.is_object()) return kUnreadable;
  const auto format = document.find("format");
  const auto module = document.find("module");
  if (format == document.end() || !format->is_number_integer() || *format < 1 || module == document.end() ||
      !module->is_string())
    return kUnreadable;
  const auto& name = module->get_ref<const std::string&>();
  if (name != form.module)
    return "The stored settings belong to another module (\"" + OneLine(name, kLongestShownName) +
           "\"). Standard values are shown.";
  if (*format > kFormat)
    return "The stored settings were written by a newer version of this module. Standard values are shown.";
  return "";
}

/// What is empty may be kept; whoever uses the values finds that out.
std::string DefectOfKept(Field field, const Json& value) {
  field.required = false;
  return Defect(field, value);
}

/// Members of these names are objects of their own afterwards.
void EnsureObject(Json& document, const char* name) {
  const auto member = document.find(name);
  if (member == document.end() || !member->is_object()) document[name] = Json::object();
}

}  // namespace

Properties Properties::Read(std::string_view text, const Form& form) {
  Properties properties;
  properties.form_ = &form;
  text = text.substr(0, text.find('\0'));
  Json document = text.empty() ? Json() : ParseShallow(text, kDeepest);
  if (!text.empty()) properties.note_ = Refusal(document, form);
  const bool usable = !text.empty() && properties.note_.empty();
  properties.document_ = usable ? std::move(document) : Json::object();
  for (const char* place : {"values", "secrets"}) EnsureObject(properties.document_, place);
  for (const Field& field : form.fields) {
    const Json& stored = properties.document_[PlaceOf(field)];
    const auto value = stored.find(field.key);
    properties.values_[field.key] = value == stored.end() ? StandardOf(field) : *value;
  }
  properties.ReplaceDefects();
  return properties;
}

void Properties::ReplaceDefects() {
  for (const Field& field : form_->fields) {
    Json& value = values_[field.key];
    const Json standard = StandardOf(field);
    if (value == standard) continue;
    const std::string defect = DefectOfKept(field, value);
    if (defect.empty()) continue;
    AddLine(note_, field.label + ": the stored value was replaced by the standard one. " + defect);
    value = standard;
  }
}

const Json& Properties::Value(std::string_view key) const {
  const auto value = values_.find(std::string(key));
  if (value == values_.end()) throw Error("There is no field \"" + std::string(key) + "\".");
  return *value;
}

std::string Properties::Text(std::string_view key) const {
  return Value(key).get<std::string>();
}

long long Properties::Integer(std::string_view key) const {
  return Value(key).get<long long>();
}

double Properties::Decimal(std::string_view key) const {
  return Value(key).get<double>();
}

bool Properties::Flag(std::string_view key) const {
  return Value(key).get<bool>();
}

std::vector<std::string> Properties::List(std::string_view key) const {
  return Value(key).get<std::vector<std::string>>();
}

Json Properties::Values() const {
  return values_;
}

void Properties::SetValues(const Json& values) {
  for (const Field& field : form_->fields) {
    const auto value = values.find(field.key);
    if (value != values.end() && DefectOfKept(field, *value).empty()) values_[field.key] = *value;
  }
}

std::string Properties::ToText() const {
  Json document{{"format", kFormat}, {"module", form_->module}};
  for (const auto& [name, member] : document_.items())
    if (name != "format" && name != "module") document[name] = member;
  for (const Field& field : form_->fields) document[PlaceOf(field)][field.key] = values_.at(field.key);
  if (document["secrets"].empty()) document.erase("secrets");
  return document.dump();
}

}  // namespace quarl::kit
