#include "ui/BoxText.h"

#include <QStringList>

#include "ui/ConsoleLog.h"

namespace quarl::ui {
namespace {

constexpr qsizetype kLongestWord = 60;
constexpr QChar kBreakHere(0x200B);
constexpr QChar kEllipsis(0x2026);

bool SplitsPair(const QString& text, qsizetype position) {
  return position > 0 && position < text.size() && text.at(position).isLowSurrogate();
}

QString WithoutMiddleLines(const QString& text) {
  const QStringList lines = text.split(u'\n');
  if (lines.size() <= kBoxLineLimit) return text;
  const qsizetype half = kBoxLineLimit / 2;
  const QStringList kept = lines.first(half) + QStringList(QString(kEllipsis)) + lines.last(half - 1);
  return kept.join(u'\n');
}

QString WithoutMiddle(const QString& text) {
  if (text.size() <= kBoxTextLimit) return text;
  qsizetype head = kBoxTextLimit * 3 / 4;
  qsizetype tail = text.size() - (kBoxTextLimit - head);
  if (SplitsPair(text, head)) --head;
  if (SplitsPair(text, tail)) ++tail;
  return text.first(head) + kEllipsis + text.sliced(tail);
}

QString WithBreakPoints(const QString& text) {
  QString result;
  qsizetype run = 0;
  for (const QChar character : text) {
    run = character.isSpace() ? 0 : run + 1;
    if (run > kLongestWord && !character.isLowSurrogate()) {
      result += kBreakHere;
      run = 1;
    }
    result += character;
  }
  return result;
}

}  // namespace

QString FitForBox(const QString& text) {
  const QString shown = WithoutMiddle(WithoutMiddleLines(text));
  if (shown.size() != text.size()) qCWarning(consoleLog).noquote() << "Message shortened on the screen:" << text;
  return WithBreakPoints(shown);
}

}  // namespace quarl::ui
