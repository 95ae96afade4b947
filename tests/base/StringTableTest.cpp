#include <gtest/gtest.h>

#include "base/Error.h"
#include "base/StringTable.h"

namespace quarl {
namespace {

TEST(StringTableTest, EveryNumberHasATextAndTrailingBlanksStay) {
  for (int id = kFirstText; id <= kLastText; ++id) {
    EXPECT_FALSE(LoadText(static_cast<Text>(id)).trimmed().isEmpty()) << id;
  }
  EXPECT_TRUE(LoadText(Text::AlertTestFailed).endsWith(QStringLiteral(": ")));
  EXPECT_TRUE(LoadText(Text::AlertTestSucceeded).endsWith(QStringLiteral(": ")));
}

TEST(StringTableTest, ANumberOutsideTheTableIsAnError) {
  EXPECT_THROW(LoadText(static_cast<Text>(kFirstText - 1)), Error);
  EXPECT_THROW(LoadText(static_cast<Text>(kLastText + 1)), Error);
}

}  // namespace
}  // namespace quarl
