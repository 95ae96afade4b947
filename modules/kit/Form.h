#pragma once

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarl::kit {

using Json = nlohmann::ordered_json;

enum class FieldType {
  Text,     ///< one line; JSON string
  Lines,    ///< several lines; JSON string with "\n"
  List,     ///< one entry a line; JSON array of strings
  Secret,   ///< one line that is not shown; JSON string, kept under "secrets" of the properties
  Integer,  ///< JSON integer
  Decimal,  ///< JSON number
  Boolean,  ///< JSON boolean
  Choice,   ///< JSON string, one of choices
};

struct Choice {
  std::string value;
  std::string label;
};

/// A field can be used only while another field has a value, or one of an array of values.
struct Condition {
  std::string key;
  Json value;
};

struct Field {
  std::string key;    ///< member name in the values
  std::string label;  ///< for people, without a colon
  FieldType type = FieldType::Text;
  Json standard{};      ///< value of a new record; of the type's JSON kind
  std::string group{};  ///< title of the frame it stands in, "" for none
  std::string unit{};   ///< shown behind numbers: "ms", "%"
  std::string help{};   ///< one or two sentences
  double minimum = 0;   ///< numbers; no limits when the maximum is not above the minimum
  double maximum = 0;
  bool required = false;       ///< texts and lists: may not be empty
  std::size_t longest = 1024;  ///< texts, lines, secrets: bytes; lists: bytes of one entry
  std::vector<Choice> choices{};
  std::optional<Condition> enabledWhen{};
};

/// The fields of a module, in the order in which they are shown.
struct Form {
  std::string module;  ///< name in the properties, "ping"; never changes
  std::string title;   ///< of the dialog
  std::vector<Field> fields;
};

/// A form of these parts, one behind the other.
Form FormOf(const char* module, const char* title, std::initializer_list<std::vector<Field>> parts);

/// "" when a value may stand in a field, else one sentence without the field's name.
std::string Defect(const Field& field, const Json& value);

/// The value that a field has when nothing else is known: its standard, or where that is null the empty value of its
/// type (for a choice the first one).
Json StandardOf(const Field& field);

/// Whether a field can be used, by its condition and those of the fields that this one names.
bool IsEnabled(const Form& form, const Field& field, const Json& values);

/// What is wrong with the values of a form: the key of a field and a sentence.
struct Finding {
  std::string key;
  std::string text;
};

/// The first defect of an enabled field, in the form's order; a field without a value counts as defect.
std::optional<Finding> FirstDefect(const Form& form, const Json& values);

/// The field of a key; nullptr when there is none.
const Field* FindField(const Form& form, std::string_view key);

}  // namespace quarl::kit
