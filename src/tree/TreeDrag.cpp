#include "tree/TreeDrag.h"

#include <QApplication>
#include <QDrag>
#include <QScrollBar>
#include <utility>

#include "base/Error.h"
#include "base/NodeKey.h"
#include "tree/TreeDragDrop.h"

namespace quarl::tree {
namespace {

constexpr int kEdge = 10;
constexpr int kPointerSize = 32;
constexpr QPoint kHotSpot(1, 1);

}  // namespace

TreeDrag::TreeDrag(ObjectTree& tree, store::Stores& stores, const InstallPaths& paths, QTimer& scrollTimer)
    : tree_(tree), stores_(stores), paths_(paths), scrollTimer_(scrollTimer), mark_(tree) {}

QString TreeDrag::Format() {
  return QStringLiteral("application/x-quarl-node");
}

void TreeDrag::MouseDown(Qt::MouseButton button, const QPoint& position) {
  dragKey_.clear();
  if (button != Qt::LeftButton) return;
  const QString key = tree_.HitTest(position);
  const NodeKind kind = NodeKey::KindOf(key);
  if (kind != NodeKind::Alert && kind != NodeKind::Server) return;
  // Left of it are the branch marks, which only open and close.
  if (!tree_.visualRect(tree_.Nodes().IndexOf(key)).contains(position)) return;
  tree_.Select(key);
  dragKey_ = key;
  pressed_ = position;
}

bool TreeDrag::MouseMove(Qt::MouseButtons buttons, const QPoint& position) {
  if (dragKey_.isEmpty() || !buttons.testFlag(Qt::LeftButton)) return true;
  if ((position - pressed_).manhattanLength() < QApplication::startDragDistance()) return true;
  Drag(dragKey_);
  return false;
}

void TreeDrag::Drag(const QString& key) {
  const QPixmap pointer = LoadPointer();
  auto* data = new QMimeData;
  data->setData(Format(), key.toUtf8());
  auto* drag = new QDrag(&tree_);
  drag->setMimeData(data);
  drag->setDragCursor(pointer, Qt::MoveAction);
  // Without a picture of its own Qt would show one beside the pointer.
  QPixmap nothing(1, 1);
  nothing.fill(Qt::transparent);
  drag->setPixmap(nothing);
  drag->exec(Qt::MoveAction);
}

QPixmap TreeDrag::LoadPointer() const {
  const QString path = InstallPaths::Resolve(paths_.ApplicationFolder() + QStringLiteral("\\DRAGMOVE.ico"));
  const QPixmap picture = QIcon(path).pixmap(QSize(kPointerSize, kPointerSize), tree_.devicePixelRatioF());
  if (picture.isNull()) throw Error(QStringLiteral("The drag cursor \"%1\" cannot be read.").arg(path));
  // Qt's drag cursors point with their upper left corner.
  const QPoint corner = kHotSpot * picture.devicePixelRatio();
  return picture.copy(QRect(corner, picture.rect().bottomRight()));
}

void TreeDrag::MouseUp() {
  scrollTimer_.stop();
  mark_.Set({});
  dragKey_.clear();
}

bool TreeDrag::IsTarget(const QString& key) const {
  const NodeKind kind = NodeKey::KindOf(key);
  return kind == NodeKind::Group || (kind == NodeKind::Server && NodeKey::KindOf(dragKey_) == NodeKind::Alert);
}

void TreeDrag::Mark(const QPoint& position) {
  const QString key = tree_.HitTest(position);
  mark_.Set(IsTarget(key) ? key : QString());
}

bool TreeDrag::DragOver(const QMimeData& source, const QPoint& position) {
  // Another console may drag a node of another store over this one.
  if (dragKey_.isEmpty() || source.data(Format()) != dragKey_.toUtf8()) return false;
  hovered_ = position;
  Mark(position);
  Scroll(position.y() + tree_.viewport()->y());
  return !DropHighlight().isEmpty();
}

void TreeDrag::Scroll(int y) {
  const int height = tree_.height();
  const bool up = y >= 0 && y < kEdge;
  if (!up && (y <= height - kEdge || y >= height)) {
    scrollTimer_.stop();
    return;
  }
  direction_ = up ? kUp : kDown;
  if (!scrollTimer_.isActive()) scrollTimer_.start();
}

void TreeDrag::ScrollTick() {
  tree_.verticalScrollBar()->triggerAction(direction_ == kUp ? QAbstractSlider::SliderSingleStepSub
                                                             : QAbstractSlider::SliderSingleStepAdd);
  if (!dragKey_.isEmpty()) Mark(hovered_);
}

void TreeDrag::DragLeave() {
  scrollTimer_.stop();
  mark_.Set({});
}

void TreeDrag::DragDrop() {
  const QString target = DropHighlight();
  const QString key = dragKey_;
  MouseUp();
  if (target.isEmpty()) return;
  TreeDragDrop drop(tree_, stores_);
  if (NodeKey::KindOf(key) == NodeKind::Server) {
    drop.MoveServer(key, target);
  } else {
    drop.MoveAlert(key, target);
  }
}

}  // namespace quarl::tree
