#include "alerts/desktop/DesktopModule.h"

#include "alerts/common/EventFacts.h"
#include "alerts/desktop/DesktopNote.h"
#include "kit/SettingsError.h"
#include "kit/Text.h"

namespace quarl::alerts {
namespace {

using kit::FieldType;

constexpr std::size_t kLongestBody = 4000;

std::vector<kit::Field> NoteFields() {
  return {
      {.key = "title",
       .label = "Title",
       .standard = "{subject}",
       .help = "May contain " + PlaceholderNames() + '.',
       .required = true},
      {.key = "body",
       .label = "Text",
       .type = FieldType::Lines,
       .standard = "{message}",
       .help = "The same.",
       .longest = 2000},
      {.key = "urgent",
       .label = "Show problems as urgent",
       .type = FieldType::Boolean,
       .standard = true,
       .help = "Most desktops show such a note until it is closed, whatever the time below says."},
      {.key = "time",
       .label = "Disappears after",
       .type = FieldType::Integer,
       .standard = 0,
       .unit = "s",
       .help = "0 for a note that stays until it is closed.",
       .maximum = 86400},
      {.key = "bus",
       .label = "Session bus",
       .help = "Its D-Bus address, as in unix:path=/run/user/1000/bus; empty for that of the user who runs this."},
  };
}

DesktopNote ComposeNote(const kit::Event& event, const kit::Properties& properties) {
  const std::vector<Fact> facts = FactsOf(event);
  for (const char* key : {"title", "body"}) {
    if (const std::string fault = FaultOfTemplate(properties.Text(key)); !fault.empty())
      throw kit::SettingsError(key, fault);
  }
  const bool problem = event.kind == kit::EventKind::Problem;
  const std::string body = kit::ToUtf8(Expand(properties.Text("body"), facts));
  DesktopNote note;
  note.icon = problem ? "dialog-error" : "dialog-information";
  note.title = kit::OneLine(Expand(properties.Text("title"), facts));
  note.body = kit::CutUtf8(body, kLongestBody);
  if (note.body.size() < body.size()) note.body += "\n...";
  note.urgency = problem && properties.Flag("urgent") ? Urgency::Critical : Urgency::Normal;
  note.milliseconds = static_cast<int32_t>(properties.Integer("time") * 1000);
  return note;
}

}  // namespace

const kit::Form& DesktopModule::Fields() const {
  static const kit::Form form{"desktop", "Desktop note", NoteFields()};
  return form;
}

std::string DesktopModule::Send(const kit::Event& event, const kit::Properties& properties) const {
  return ShowNote(ComposeNote(event, properties), properties.Text("bus"));
}

std::string DesktopModule::Judge(const kit::Properties& properties, std::string& key) const {
  return kit::Judged(key, [&] { return ComposeNote(SampleEvent(), properties); });
}

std::string DesktopModule::About() const {
  return "Desktop note " QUARL_MODULE_VERSION
         "\n\nShows alerts as notes on the desktop, through the notification service of the user's session.";
}

}  // namespace quarl::alerts
