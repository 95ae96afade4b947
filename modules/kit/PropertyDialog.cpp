#include "kit/PropertyDialog.h"

#include <algorithm>
#include <forward_list>

#include "kit/Buffers.h"
#include "kit/FormText.h"
#include "kit/Host.h"

namespace quarl::kit {
namespace {

constexpr int16_t kConfirmed = 0;
constexpr int16_t kNotShown = -1;
constexpr std::size_t kValuesRoom = std::size_t{1024} * 1024;  // far more than any properties take

/// One opened dialog, as its calls see it from any thread. Nothing changes after it was made.
struct Opened {
  PropertyDialog dialog;
  Properties stored;
  std::size_t room;  ///< bytes that the properties may take
};

/// Never destroyed: a trial may still run while the process ends.
const Opened& Keep(Opened opened) {
  static auto& all = *new std::forward_list<Opened>;
  return all.emplace_front(std::move(opened));
}

/// The longest text among the values: where to save when all is too long.
std::string LongestField(const Form& form, const Properties& properties) {
  const auto size = [&](const Field& field) { return properties.Value(field.key).dump().size(); };
  const auto longest = std::max_element(form.fields.begin(), form.fields.end(),
                                        [&](const Field& a, const Field& b) { return size(a) < size(b); });
  return longest == form.fields.end() ? "" : longest->key;
}

/// Reads the values of the form into the properties and says what is wrong with them.
std::optional<Finding> TakeValues(const Opened& opened, std::string_view values, Properties& properties) {
  const Json taken = Json::parse(values, nullptr, false);
  if (!taken.is_object()) return Finding{"", "The form gave values that cannot be read."};
  if (auto finding = FirstDefect(*opened.dialog.form, taken)) return finding;
  properties.SetValues(taken);
  Finding judged;
  judged.text = opened.dialog.judge(properties, judged.key);
  if (!judged.text.empty()) return judged;
  const std::size_t size = properties.ToText().size();
  if (size <= opened.room) return std::nullopt;
  return Finding{LongestField(*opened.dialog.form, properties), "The settings take " + std::to_string(size) +
                                                                    " bytes together; at most " +
                                                                    std::to_string(opened.room) + " can be stored."};
}

std::string Labelled(const Form& form, const Finding& finding) {
  const Field* field = FindField(form, finding.key);
  return field == nullptr ? finding.text : field->label + ": " + finding.text;
}

int16_t Try(void* context, const char* values, QuarlBuffer report) {
  const auto& opened = *static_cast<const Opened*>(context);
  try {
    Properties properties = opened.stored;
    if (const auto finding = TakeValues(opened, TextOf(values), properties)) {
      WriteText(report, Labelled(*opened.dialog.form, *finding));
      return 1;
    }
    const Attempt attempt = opened.dialog.attempt(properties);
    WriteText(report, attempt.report);
    return attempt.good ? 0 : 1;
  } catch (const std::exception& error) {
    WriteText(report, error.what());
  }
  return 1;
}

int16_t Validate(void* context, const char* values, QuarlBuffer field, QuarlBuffer report) {
  const auto& opened = *static_cast<const Opened*>(context);
  Finding finding;
  try {
    Properties properties = opened.stored;
    const auto found = TakeValues(opened, TextOf(values), properties);
    if (!found) return 0;
    finding = *found;
  } catch (const std::exception& error) {
    finding.text = error.what();
  }
  WriteText(field, finding.key);
  WriteText(report, finding.text);
  return 1;
}

int16_t Show(const Opened& opened, std::string& values) {
  const std::string form = FormText(*opened.dialog.form, opened.stored.Note(), opened.dialog.tryLabel);
  values = opened.stored.Values().dump();
  values.resize(kValuesRoom);
  QuarlFormCalls calls{sizeof(QuarlFormCalls), const_cast<Opened*>(&opened), nullptr, &Validate};
  if (opened.dialog.attempt) calls.Try = &Try;
  const int16_t shown = ShowForm(form, {values.data(), static_cast<uint32_t>(values.size())}, calls);
  values.resize(std::min(values.find('\0'), values.size()));
  return shown;
}

}  // namespace

int16_t RunPropertyDialog(const PropertyDialog& dialog, QuarlBuffer properties) {
  if (properties.text == nullptr || properties.size == 0) return kNotShown;
  const Opened& opened = Keep({dialog, Properties::Read(TextOf(properties), *dialog.form), properties.size - 1});
  std::string values;
  const int16_t shown = Show(opened, values);
  if (shown != kConfirmed) return shown;
  Properties confirmed = opened.stored;
  if (const auto finding = TakeValues(opened, values, confirmed)) {
    Log(Severity::Error, "The form gave values that were refused: " + Labelled(*dialog.form, *finding));
    return kNotShown;
  }
  WriteFilled(properties, confirmed.ToText(), '\0');
  return kConfirmed;
}

}  // namespace quarl::kit
