#include "tree/TreeDragMark.h"

#include <QLineEdit>
#include <QPainter>
#include <limits>

namespace quarl::tree {
namespace {

constexpr int kFillAlpha = 64;
constexpr qreal kFrameWidth = 2;

}  // namespace

TreeDragMark::TreeDragMark(ObjectTree& tree) : tree_(tree) {
  tree.setItemDelegate(this);
}

void TreeDragMark::Set(const QString& key) {
  if (key == key_) return;
  key_ = key;
  tree_.viewport()->update();
}

void TreeDragMark::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
  LineDelegate::paint(painter, option, index);
  if (key_.isEmpty() || tree_.Nodes().KeyOf(index) != key_) return;
  const QColor frame = option.palette.color(QPalette::Highlight);
  QColor fill = frame;
  fill.setAlpha(kFillAlpha);
  painter->save();
  painter->setPen(QPen(frame, kFrameWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
  painter->setBrush(fill);
  const qreal inset = kFrameWidth / 2;
  painter->drawRect(QRectF(option.rect).adjusted(inset, inset, -inset, -inset));
  painter->restore();
}

QWidget* TreeDragMark::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const {
  QWidget* editor = LineDelegate::createEditor(parent, option, index);
  // Qt's own limit would cut a longer name without a word.
  if (auto* line = qobject_cast<QLineEdit*>(editor)) line->setMaxLength(std::numeric_limits<int>::max());
  return editor;
}

}  // namespace quarl::tree
