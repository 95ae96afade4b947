#include <QProcess>
#include <QScrollBar>
#include <QTest>
#include <deque>

#include "shell/MainFixture.h"
#include "support/VirtualDisplay.h"

// A drag has a beginning and an end only on a display with a pointer.

namespace quarl::shell {
namespace {

constexpr int kLongestDragMs = 10'000;

const testing::VirtualDisplay display;

class RealDragTest : public FilledFixture {
 protected:
  using Condition = std::function<bool()>;

  RealDragTest() {
    QFile::copy(Q(QUARL_LAYOUT_DIR "/DRAGMOVE.ico"), Folder("/DRAGMOVE.ico"));
    delete window_->findChild<QWidget*>(Q("frmSplash"));  // it would be under the pointer
    Tree().EnsureVisible(Q("_ALERT_2"));                  // from here on nodes stay where they are
  }
  void SetUp() override {
    if (const std::string lack = display.Lack(); !lack.empty()) GTEST_SKIP() << lack;
  }

  static void Hand(const QStringList& words) { EXPECT_EQ(QProcess::execute(Q("xdotool"), words), 0); }
  QStringList To(const QPoint& point) {
    const QPoint global = Tree().viewport()->mapToGlobal(point);
    return {Q("mousemove"), QString::number(global.x()), QString::number(global.y())};
  }
  /// What the hand does next, once the condition holds.
  void When(Condition condition, const QStringList& words) { steps_.push_back({std::move(condition), words}); }
  void WhenMarked(const char* key, const QStringList& words) {
    When([this, key = Q(key)] { return DropHighlight() == key; }, words);
  }
  /// Takes hold of a node, moves it over a target, and does the rest of the steps until a condition holds.
  void DragUntil(const char* key, const QPoint& target, const Condition& end) {
    const QPoint from = PointOf(Q(key));
    Hand(To(from) + Words("mousedown 1") + To(from + QPoint(30, 0)) + To(target));
    QTimer eye;
    eye.callOnTimeout(window_.get(), [this] {
      if (steps_.empty() || !steps_.front().condition()) return;
      const QStringList words = steps_.front().words;
      steps_.pop_front();
      Hand(words);
    });
    eye.start(2);
    QTimer::singleShot(kLongestDragMs, &eye, [] { Hand(Words("key Escape mouseup 1")); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return steps_.empty() && end(); }, 2 * kLongestDragMs));
  }

 private:
  struct Step {
    Condition condition;
    QStringList words;
  };
  std::deque<Step> steps_;
};

TEST_F(RealDragTest, MovesAServerAndAnAlert) {
  const QStringList drop{Q("mouseup"), Q("1")};
  QImage pointer;
  When(
      [&] {
        if (const QCursor* cursor = QGuiApplication::overrideCursor()) pointer = cursor->pixmap().toImage();
        return DropHighlight() == Q("_GROUP_2");
      },
      drop);
  DragUntil("_SERVER_5", PointOf(Q("_GROUP_2")), [this] { return Window().SelectedKey() == Q("_SERVER_5"); });
  const QImage picture = QIcon(QStringLiteral(QUARL_LAYOUT_DIR "/DRAGMOVE.ico")).pixmap(32, 32).toImage();
  EXPECT_EQ(pointer, picture.copy(1, 1, 31, 31));
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(Children("_GROUP_2"), Q("_SERVER_6 _SERVER_5 _ALERTS_2"));
  WhenMarked("_SERVER_7", drop);
  DragUntil("_ALERT_2", PointOf(Q("_SERVER_7")), [this] { return Window().SelectedKey() == Q("_ALERT_2"); });
  EXPECT_EQ(Children("_ALERTS_7"), Q("_ALERT_2"));
  ExpectTreeLikeFresh();
  EXPECT_EQ(DropHighlight(), QString());
}

TEST_F(RealDragTest, FailedDropIsReportedWhenTheDragIsOver) {
  faulty_.ThrowFrom(Q("ServerStore.UpdateServer"));
  ExpectFault("KVCTree_DragDrop");
  WhenMarked("_GROUP_2", Words("mouseup 1"));
  DragUntil("_SERVER_5", PointOf(Q("_GROUP_2")), [this] { return Window().SelectedKey() == Q("_SERVER_5"); });
  ExpectTreeLikeFresh();
}

TEST_F(RealDragTest, EscapeDropsNothing) {
  WhenMarked("_GROUP_2", Words("key Escape"));
  WhenMarked("", Words("mouseup 1"));
  DragUntil("_SERVER_5", PointOf(Q("_GROUP_2")), [this] { return Window().SelectedKey() == Q("_SERVER_5"); });
  ExpectTreeLikeFresh();
  EXPECT_EQ(faulty_.Calls(Q("ServerStore.GetServer")), 0);
}

TEST_F(RealDragTest, ScrollsUntilThePointerLeaves) {
  for (int i = 0; i < 60; ++i) std::ignore = stores_.Servers().AddServer(Q("s%1").arg(i), {}, 0);
  tree::TreeBuilder(stores_, Nodes(), {}).LoadTree();
  const QScrollBar& bar = *Tree().verticalScrollBar();
  When([&] { return bar.value() >= 2; }, To({60, Tree().height() / 2}));
  When([this] { return !Timer("scrollTimer").isActive(); }, Words("key Escape mouseup 1"));
  DragUntil("_SERVER_5", {60, Tree().viewport()->height() - 4},
            [this] { return Window().SelectedKey() == Q("_SERVER_5"); });
  ExpectTreeLikeFresh();
}

TEST_F(RealDragTest, MenuKeyReachesTreeAndList) {
  for (QWidget* view : {static_cast<QWidget*>(&Tree()), static_cast<QWidget*>(&List())}) {
    Click("_GROUP_1");
    view->setFocus();
    if (view == &List()) QTest::keyClick(view, Qt::Key_Down);
    Hand(Words("key Menu"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activePopupWidget() != nullptr; }));
    EXPECT_EQ(TakePopUp(), view == &Tree() ? Q("mGroup") : Q("mServer"));
  }
}

}  // namespace
}  // namespace quarl::shell
