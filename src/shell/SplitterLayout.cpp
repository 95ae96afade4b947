#include "shell/SplitterLayout.h"

#include "shell/MainControls.h"

namespace quarl::shell {
namespace {

constexpr int kVerticalMargins = 6;
constexpr int kLeastBarDistance = 40;
constexpr int kLeastWidth = 100;

void SetHeight(QWidget* widget, int height) {
  widget->resize(widget->width(), height);
}

}  // namespace

void SplitterLayout::Fit() const {
  const int height = controls_.area->height() - kVerticalMargins;
  if (height > 0) {
    SetHeight(controls_.KVCTree, height);
    SetHeight(controls_.KVCContent, height);
    SetHeight(controls_.imgSplitter, height);
    SetHeight(controls_.picSplitter, height);
  }
  const int width = controls_.area->width() - controls_.KVCTree->width() - controls_.imgSplitter->width();
  if (width > 0) controls_.KVCContent->resize(width, controls_.KVCContent->height());
}

void SplitterLayout::Align() const {
  const QRect tree = controls_.KVCTree->geometry();
  QWidget* splitter = controls_.imgSplitter;
  splitter->setGeometry(splitter->x(), tree.y(), splitter->width(), tree.height());
  controls_.picSplitter->move(splitter->x(), controls_.picSplitter->y());
  SetHeight(controls_.picSplitter, splitter->height());
  QWidget* content = controls_.KVCContent;
  content->setGeometry(tree.x() + tree.width() + splitter->width(), tree.y(), content->width(), tree.height());
}

void SplitterLayout::SizeControls(int width) const {
  const int window = controls_.area->width();
  if (width < kLeastWidth) width = kLeastWidth;
  if (width > window - kLeastWidth) width = window - kLeastWidth;
  controls_.KVCTree->resize(width, controls_.KVCTree->height());
  controls_.imgSplitter->move(width, controls_.imgSplitter->y());
  controls_.KVCContent->move(width + controls_.imgSplitter->width(), controls_.KVCContent->y());
  Fit();
}

void SplitterLayout::StartDrag() {
  const QRect splitter = controls_.imgSplitter->geometry();
  controls_.picSplitter->setGeometry(splitter.x() + 1, splitter.y(), (splitter.width() + 2) / 2, splitter.height());
  controls_.picSplitter->show();
  controls_.picSplitter->raise();
  dragging_ = true;
}

void SplitterLayout::Drag(int x) const {
  if (!dragging_) return;
  const int window = controls_.area->width();
  int left = x + controls_.imgSplitter->x();
  if (left < kLeastBarDistance) {
    left = kLeastBarDistance;
  } else if (left > window - kLeastBarDistance) {
    left = window - kLeastBarDistance;
  }
  controls_.picSplitter->move(left, controls_.picSplitter->y());
}

void SplitterLayout::EndDrag() {
  if (!dragging_) return;
  SizeControls(controls_.picSplitter->x());
  controls_.picSplitter->hide();
  dragging_ = false;
}

}  // namespace quarl::shell
