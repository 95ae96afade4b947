#include "ModuleCall.h"

#include <exception>

#include "AnswerRoom.h"
#include "CallTexts.h"

namespace quarl::host {
namespace {

using plugins::HostOperation;
using plugins::HostReply;
using plugins::HostRequest;

// The operations whose arguments are texts that come back.
HostReply CallWithTexts(const HelperLibrary& helper, const HostRequest& request) {
  CallTexts texts(request.id);
  std::vector<QuarlBuffer> b;
  for (const std::string& text : request.texts) b.push_back(texts.Add(text));
  HostReply reply;
  switch (request.operation) {
    case HostOperation::About:
      reply.result = helper.Call<decltype(&About)>("About", b.at(0));
      break;
    case HostOperation::GetBufferSize:
      reply.result = helper.Call<decltype(&GetBufferSize)>("GetBufferSize", b.at(0));
      break;
    case HostOperation::SetProperties:
      reply.result = helper.Call<decltype(&SetProperties)>("SetProperties", b.at(0), b.at(1), b.at(2), b.at(3));
      break;
    default:
      reply.result =
          helper.Call<decltype(&Alert)>("Alert", b.at(0), b.at(1), b.at(2), b.at(3), b.at(4), b.at(5), b.at(6));
  }
  reply.texts = texts.Texts();
  return reply;
}

HostReply CallCheck(const HelperLibrary& helper, const HostRequest& request) {
  thread_local CheckRooms rooms;
  rooms.Begin(request.id);
  std::string path = request.texts.front();
  const QuarlBuffer pathBuffer{path.data(), static_cast<uint32_t>(path.size() + 1)};
  const QuarlCheckRequest question = QuestionOf(request);
  QuarlCheckResult result = rooms.Result();
  const int16_t state = helper.Call<decltype(&Check)>("Check", pathBuffer, &question, &result);
  return rooms.Reply(request.id, state, result);
}

HostReply CallAlertEvent(const HelperLibrary& helper, const HostRequest& request) {
  const plugins::EventFacts facts = EventFactsOf(request);
  CallTexts texts(request.id);
  const QuarlBuffer path = texts.Add(request.texts.front());
  QuarlEvent event{};
  event.size = sizeof(QuarlEvent);
  event.kind = static_cast<int32_t>(facts.kind);
  event.subject = facts.subject.c_str();
  event.message = facts.message.c_str();
  event.serverName = facts.serverName.c_str();
  event.serverAddress = facts.serverAddress.c_str();
  event.groupName = facts.groupName.c_str();
  event.testName = facts.testName.c_str();
  event.resultText = facts.resultText.c_str();
  event.time = facts.time;
  event.since = facts.since;
  event.problemId = facts.problemId.c_str();
  event.messageId = facts.messageId.c_str();
  const QuarlBuffer resultText = texts.AddFilled(plugins::kResultTextSize + 1, ' ');
  HostReply reply;
  reply.result = helper.Call<decltype(&AlertEvent)>("AlertEvent", path, &event, facts.properties.c_str(), resultText);
  reply.texts = {texts.Texts().back()};
  return reply;
}

HostReply Answer(const HelperLibrary& helper, const HostRequest& request) {
  switch (request.operation) {
    case HostOperation::Check:
      return CallCheck(helper, request);
    case HostOperation::AlertEvent:
      return CallAlertEvent(helper, request);
    default:
      return CallWithTexts(helper, request);
  }
}

}  // namespace

HostReply CallModule(const HelperLibrary& helper, const HostRequest& request) noexcept {
  try {
    HostReply reply = Answer(helper, request);
    reply.id = request.id;
    return reply;
  } catch (const CallError& error) {
    return Refusal(request.id, error.what());
  } catch (const std::exception& error) {
    return Refusal(request.id, std::string("The module could not be called: ") + error.what() + '.');
  }
}

HostReply Refusal(std::uint32_t request, const std::string& sentence) {
  HostReply reply;
  reply.id = request;
  reply.word = plugins::HostWord::Failed;
  reply.texts = {sentence};
  return reply;
}

}  // namespace quarl::host
