#include "modules/ModuleDriver.h"

#include <dlfcn.h>

#include <stdexcept>
#include <vector>

namespace quarl::testing {
namespace {

ModuleDriver::User theUser;
std::pair<std::string, std::string> theAbout;

/// A text in a buffer that ends where it says, for the sanitizers.
class Room {
 public:
  Room(const std::string& text, std::size_t size, char filler) : bytes_(text) {
    if (bytes_.size() > size) throw std::runtime_error("The text does not fit its buffer");
    bytes_.resize(size, filler);
    bytes_.push_back('\0');
  }
  explicit Room(const std::string& text) : Room(text, text.size(), '\0') {}
  QuarlBuffer Buffer() { return {bytes_.data(), static_cast<uint32_t>(bytes_.size())}; }
  std::string Text() const { return bytes_.c_str(); }

 private:
  std::string bytes_;
};

using Answer = ModuleDriver::OpenForm::Answer;
constexpr std::size_t kReport = 4096;

void Connect(ModuleDriver::OpenForm& form, const QuarlFormCalls& calls) {
  if (calls.Try != nullptr)
    form.attempt = [&calls](const Json& values) {
      Room report("", kReport, '\0');
      const int16_t result = calls.Try(calls.context, values.dump().c_str(), report.Buffer());
      return Answer{result, {}, report.Text()};
    };
  form.validate = [&calls](const Json& values) {
    Room field("", kReport, '\0');
    Room report("", kReport, '\0');
    const int16_t result = calls.Validate(calls.context, values.dump().c_str(), field.Buffer(), report.Buffer());
    return Answer{result, field.Text(), report.Text()};
  };
}

int16_t ShowForm(const char* description, QuarlBuffer values, const QuarlFormCalls* calls) {
  ModuleDriver::OpenForm form{Json::parse(description), Json::parse(values.text), {}, {}};
  Connect(form, *calls);
  const int16_t result = theUser(form);
  const std::string text = form.values.dump();
  if (text.size() >= values.size) return -1;
  text.copy(values.text, text.size());
  values.text[text.size()] = '\0';
  return result;
}

int16_t ShowText(const char* title, const char* text) {
  theAbout = {title, text};
  return 0;
}

const QuarlHost kHost{sizeof(QuarlHost), &ShowForm, &ShowText, nullptr, nullptr, 0};

std::string WithoutBlanks(std::string text) {
  text.resize(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace

ModuleDriver::ModuleDriver(const std::string& module) {
  const std::string path = module.front() == '/' ? module : QUARL_LAYOUT_DIR "/plugins/" + module + ".dll";
  library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library_ == nullptr) throw std::runtime_error(dlerror());
  if (Find<int16_t()>("QuarlModuleAbi")() != QUARL_MODULE_ABI) throw std::runtime_error(path + ": wrong ABI");
  if (Find<int16_t(const QuarlHost*)>("QuarlModuleStart")(&kHost) != 0) throw std::runtime_error(path + ": not ready");
}

ModuleDriver::~ModuleDriver() = default;  // a module is not unloaded before the process ends

template <typename Function>
Function* ModuleDriver::Find(const char* name) const {
  void* const function = dlsym(library_, name);
  if (function == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<Function*>(function);
}

std::string ModuleDriver::Properties(const std::string& module, const Json& values, const Json& secrets) {
  return Json{{"format", 1}, {"module", module}, {"values", values}, {"secrets", secrets}}.dump();
}

int16_t ModuleDriver::Kind() const {
  return Find<int16_t()>("QuarlModuleKind")();
}

int16_t ModuleDriver::BufferSize() const {
  return Find<int16_t()>("QuarlGetBufferSize")();
}

std::pair<std::string, std::string> ModuleDriver::About() {
  theAbout = {};
  Find<int16_t()>("QuarlAbout")();
  return theAbout;
}

ModuleDriver::CheckAnswer ModuleDriver::Check(const CheckQuestion& question) const {
  Room text("", 1023, 'x');
  Room performance("", 1023, 'x');
  const QuarlCheckRequest request{sizeof(QuarlCheckRequest), question.serverName.c_str(), question.address.c_str(),
                                  question.properties.c_str(), static_cast<uint32_t>(question.timeLimit.count())};
  QuarlCheckResult result{sizeof(QuarlCheckResult), text.Buffer(), performance.Buffer(), -1};
  const int16_t state = Find<int16_t(const QuarlCheckRequest*, QuarlCheckResult*)>("QuarlCheck")(&request, &result);
  return {state, text.Text(), performance.Text(), std::chrono::microseconds(result.duration)};
}

std::unique_ptr<ModuleDriver::Steps> ModuleDriver::BeginSteps(const CheckQuestion& question) const {
  using Step = int16_t(const QuarlCheckRequest*, QuarlCheckWait*, QuarlCheckResult*);
  struct Check final : Steps {
    Check(Step* function, CheckQuestion asked) : step(function), question(std::move(asked)) {}
    bool Go(int16_t came) override {
      wait.events = came;
      return step(&request, &wait, &result) == QUARL_WAITING;
    }
    Step* step;
    CheckQuestion question;
    Room text{"", 1023, 'x'}, performance{"", 1023, 'x'};
    QuarlCheckRequest request{sizeof(QuarlCheckRequest), question.serverName.c_str(), question.address.c_str(),
                              question.properties.c_str(), static_cast<uint32_t>(question.timeLimit.count())};
    QuarlCheckWait wait{sizeof(QuarlCheckWait), nullptr, -1, 0, 0};
    QuarlCheckResult result{sizeof(QuarlCheckResult), text.Buffer(), performance.Buffer(), -1};
  };
  return std::make_unique<Check>(Find<Step>("QuarlCheckStep"), question);
}

ModuleDriver::AlertAnswer ModuleDriver::Alert(QuarlEvent event, const std::string& properties) const {
  event.size = sizeof event;
  for (auto* text : {&event.subject, &event.message, &event.serverName, &event.serverAddress, &event.groupName,
                     &event.testName, &event.resultText, &event.problemId, &event.messageId})
    if (*text == nullptr) *text = "";
  Room report("", 255, ' ');
  const auto alert = Find<int16_t(const QuarlEvent*, const char*, QuarlBuffer)>("QuarlAlertEvent");
  const int16_t result = alert(&event, properties.c_str(), report.Buffer());
  return {result, WithoutBlanks(report.Text())};
}

ModuleDriver::AlertAnswer ModuleDriver::TestAlert(const std::string& serverName, const std::string& subject,
                                                  const std::string& message, const std::string& properties) const {
  Room rooms[] = {Room(serverName),
                  Room("127.0.0.1"),
                  Room(subject),
                  Room(message),
                  Room(properties, static_cast<std::size_t>(BufferSize()), '\0'),
                  Room("", 255, ' ')};
  const auto alert =
      Find<int16_t(QuarlBuffer, QuarlBuffer, QuarlBuffer, QuarlBuffer, QuarlBuffer, QuarlBuffer)>("QuarlAlert");
  const int16_t result = alert(rooms[0].Buffer(), rooms[1].Buffer(), rooms[2].Buffer(), rooms[3].Buffer(),
                               rooms[4].Buffer(), rooms[5].Buffer());
  return {result, WithoutBlanks(rooms[5].Text())};
}

ModuleDriver::Edited ModuleDriver::SetProperties(const std::string& properties, const User& user,
                                                 const std::string& serverName, const std::string& address) {
  theUser = user;
  Room name(serverName);
  Room dotted(address);
  Room text(properties, static_cast<std::size_t>(BufferSize()), '\0');
  const auto set = Find<int16_t(QuarlBuffer, QuarlBuffer, QuarlBuffer)>("QuarlSetProperties");
  const int16_t result = set(name.Buffer(), dotted.Buffer(), text.Buffer());
  return {result, text.Text()};
}

}  // namespace quarl::testing
