#include "tree/LineDelegate.h"

#include "ui/OneLine.h"

namespace quarl::tree {
namespace {

constexpr qsizetype kLongestText = 1000;

}  // namespace

QString LineDelegate::displayText(const QVariant& value, const QLocale& /*locale*/) const {
  return ui::OneLine(value.toString(), kLongestText);
}

}  // namespace quarl::tree
