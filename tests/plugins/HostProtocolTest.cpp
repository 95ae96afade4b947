#include <gtest/gtest.h>

#include <limits>

#include "plugins/contract/HostProtocol.h"

namespace quarl::plugins {
namespace {

using namespace std::string_literals;

HostRequest Sample() {
  HostRequest request;
  request.id = 0xfedcba98;
  request.operation = HostOperation::SetProperties;
  request.kind = ModuleKind::Alert;
  request.ownerWindow = 0x8000000000000001ULL;
  request.applicationTitle = "Quarl";
  request.texts = {"/m.dll", "a\0b"s, "", "\xff\0"s};
  return request;
}

std::string Content(const std::string& frame) {
  FrameBuffer frames;
  frames.Add(frame);
  return std::string(frames.Next().value_or("no frame"));
}

TEST(HostProtocolTest, RequestsAndRepliesComeBackWhole) {
  const auto request = ReadRequest(Content(FrameOf(Sample())));
  ASSERT_TRUE(request);
  EXPECT_EQ(request->id, 0xfedcba98);
  EXPECT_EQ(request->operation, HostOperation::SetProperties);
  EXPECT_EQ(request->kind, ModuleKind::Alert);
  EXPECT_EQ(request->ownerWindow, 0x8000000000000001ULL);
  EXPECT_EQ(request->applicationTitle, "Quarl");
  EXPECT_EQ(request->texts, Sample().texts);

  HostReply reply;
  reply.id = 7;
  reply.result = -32768;
  reply.texts = {"x\0y"s, ""};
  reply.numbers = {-1, std::numeric_limits<std::int64_t>::min()};
  const auto back = ReadReply(Content(FrameOf(reply)));
  ASSERT_TRUE(back);
  EXPECT_EQ(back->result, -32768);
  EXPECT_EQ(back->texts, reply.texts);
  EXPECT_EQ(back->numbers, reply.numbers);
}

TEST(HostProtocolTest, AChangedLengthOrByteNeverReadsBehindTheEnd) {
  const std::string content = Content(FrameOf(Sample()));
  for (std::size_t size = 0; size < content.size(); ++size) EXPECT_FALSE(ReadRequest(content.substr(0, size))) << size;
  EXPECT_FALSE(ReadRequest(content + '\0'));
  int refused = 0;
  for (std::size_t at = 0; at < content.size(); ++at) {
    for (const char value : {'\0', '\1', '\x7f', '\xff'}) {
      std::string changed = content;
      changed[at] = value;
      refused += ReadRequest(changed) ? 0 : 1;
      std::ignore = ReadReply(changed);
    }
  }
  EXPECT_GT(refused, 40);
}

TEST(HostProtocolTest, AFrameComesOutOnlyWholeAndWithinTheLimit) {
  const std::string frame = FrameOf(Sample());
  FrameBuffer frames;
  for (const char byte : frame + frame) {
    EXPECT_FALSE(frames.Broken());
    frames.Add({&byte, 1});
  }
  EXPECT_TRUE(frames.Next());
  EXPECT_TRUE(frames.Next());
  EXPECT_FALSE(frames.Next());
  frames.Add("\xff\xff\xff\x7f");
  EXPECT_FALSE(frames.Next());
  EXPECT_TRUE(frames.Broken());

  HostReply reply;
  reply.texts = {std::string(kLargestText, 'x')};
  EXPECT_TRUE(ReadReply(Content(FrameOf(reply))));
  reply.texts.front() += 'x';
  EXPECT_THROW(FrameOf(reply), std::length_error);
}

}  // namespace
}  // namespace quarl::plugins
