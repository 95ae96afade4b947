#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QProcess>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTest>
#include <csignal>
#include <deque>

#include "tree/InteractionsRig.h"

// A drag has a beginning and an end only on a display with a pointer.

namespace quarl::tree {
namespace {

constexpr int kStartMs = 10'000;

/// A display of its own, up before the application object is made; without one the tests are skipped.
class VirtualDisplay {
 public:
  VirtualDisplay() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return;
    std::string descriptor = std::to_string(ends[1]);
    std::string words[] = {"Xvfb", "-displayfd", descriptor, "-screen", "0", "800x600x24", "-nolisten", "tcp"};
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    if (posix_spawnp(&server_, words[0].c_str(), nullptr, nullptr, arguments.data(), environ) != 0) server_ = 0;
    close(ends[1]);
    std::string number;
    pollfd ready{ends[0], POLLIN, 0};
    for (char digit = 0; server_ > 0 && poll(&ready, 1, kStartMs) == 1 && read(ends[0], &digit, 1) == 1;) {
      if (digit != '\n') {
        number += digit;
        continue;
      }
      name_ = ":" + number;
      break;
    }
    close(ends[0]);
    qputenv("QT_QPA_PLATFORM", name_.empty() ? "offscreen" : "xcb");
    if (!name_.empty()) qputenv("DISPLAY", name_.c_str());
  }
  ~VirtualDisplay() {
    if (server_ <= 0) return;
    kill(server_, SIGTERM);
    waitpid(server_, nullptr, 0);
  }
  /// What is missing for tests on the display; empty when nothing is.
  std::string Lack() const {
    if (name_.empty()) return "Xvfb could not be started";
    return QStandardPaths::findExecutable(Q("xdotool")).isEmpty() ? "xdotool is not installed" : "";
  }

 private:
  pid_t server_ = 0;
  std::string name_;
};
const VirtualDisplay display;

class RealDragTest : public InteractionsRig {
 protected:
  using Condition = std::function<bool()>;

  RealDragTest() {
    scrollTimer.callOnTimeout(&window, [this] { trap("scrollTimer_Timer", [&] { drag.ScrollTick(); }); });
    tree.EnsureVisible(Q("_ALERT_2"));  // from here on nodes stay where they are
  }
  void SetUp() override {
    if (const std::string lack = display.Lack(); !lack.empty()) GTEST_SKIP() << lack;
  }

  static void Hand(const QStringList& words) { EXPECT_EQ(QProcess::execute(Q("xdotool"), words), 0); }
  QStringList To(const QPoint& point) {
    const QPoint global = tree.viewport()->mapToGlobal(point);
    return {Q("mousemove"), QString::number(global.x()), QString::number(global.y())};
  }
  /// What the hand does next, once the condition holds.
  void When(Condition condition, const QStringList& words) { steps_.push_back({std::move(condition), words}); }
  void WhenMarked(const char* key, const QStringList& words) {
    When([this, key = Q(key)] { return drag.DropHighlight() == key; }, words);
  }
  /// Takes hold of a node, moves it over a target, and does the rest of the steps until a condition holds.
  void DragUntil(const char* key, const QPoint& target, const Condition& end) {
    const QPoint from = PointOf(key);
    Hand(To(from) + QStringList{Q("mousedown"), Q("1")} + To(from + QPoint(30, 0)) + To(target));
    QTimer eye;
    eye.callOnTimeout(&window, [this] {
      if (steps_.empty() || !steps_.front().condition()) return;
      const QStringList words = steps_.front().words;
      steps_.pop_front();
      Hand(words);
    });
    eye.start(2);
    QTimer::singleShot(kStartMs, &eye, [] { Hand({Q("key"), Q("Escape"), Q("mouseup"), Q("1")}); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return steps_.empty() && end(); }, 2 * kStartMs));
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
        return drag.DropHighlight() == Q("_GROUP_2");
      },
      drop);
  DragUntil("_SERVER_5", PointOf("_GROUP_2"), [this] { return selected == Q("_SERVER_5"); });
  const QImage picture = QIcon(QStringLiteral(QUARL_LAYOUT_DIR "/DRAGMOVE.ico")).pixmap(32, 32).toImage();
  EXPECT_EQ(pointer, picture.copy(1, 1, 31, 31));
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(Children("_GROUP_2"), Q("_SERVER_6 _SERVER_5 _ALERTS_2"));
  WhenMarked("_SERVER_7", drop);
  DragUntil("_ALERT_2", PointOf("_SERVER_7"), [this] { return selected == Q("_ALERT_2"); });
  EXPECT_EQ(Children("_ALERTS_7"), Q("_ALERT_2"));
  EXPECT_EQ(Picture(nodes), FreshPicture());
  EXPECT_EQ(drag.DropHighlight(), QString());
}

TEST_F(RealDragTest, FailedDropIsReportedWhenTheDragIsOver) {
  stores.ThrowFrom(Q("ServerStore.UpdateServer"));
  dialogs.ExpectBox(Fault("KVCTree_DragDrop"), Q("OKButton"));
  WhenMarked("_GROUP_2", {Q("mouseup"), Q("1")});
  DragUntil("_SERVER_5", PointOf("_GROUP_2"), [this] { return selected == Q("_SERVER_5"); });
  EXPECT_EQ(Picture(nodes), FreshPicture());
}

TEST_F(RealDragTest, EscapeDropsNothing) {
  WhenMarked("_GROUP_2", {Q("key"), Q("Escape")});
  WhenMarked("", {Q("mouseup"), Q("1")});
  DragUntil("_SERVER_5", PointOf("_GROUP_2"), [this] { return selected == Q("_SERVER_5"); });
  EXPECT_EQ(Picture(nodes), FreshPicture());
  EXPECT_EQ(stores.Calls(Q("ServerStore.GetServer")), 0);
}

TEST_F(RealDragTest, ScrollsUntilThePointerLeaves) {
  for (int i = 0; i < 60; ++i) std::ignore = sql.Servers().AddServer(Q("s%1").arg(i), {}, 0);
  TreeBuilder(sql, nodes, {}).LoadTree();
  const QScrollBar& bar = *tree.verticalScrollBar();
  When([&] { return bar.value() >= 2; }, To({60, tree.height() / 2}));
  When([this] { return !scrollTimer.isActive(); }, {Q("key"), Q("Escape"), Q("mouseup"), Q("1")});
  DragUntil("_SERVER_5", {60, tree.viewport()->height() - 4}, [this] { return selected == Q("_SERVER_5"); });
  EXPECT_EQ(Picture(nodes), FreshPicture());
}

TEST_F(RealDragTest, MenuKeyReachesTreeAndList) {
  for (QWidget* view : {static_cast<QWidget*>(&tree), static_cast<QWidget*>(&list)}) {
    Click("_GROUP_1");
    view->setFocus();
    if (view == &list) Key(list, Qt::Key_Down);
    calls.clear();
    Hand({Q("key"), Q("Menu")});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !calls.empty(); }));
    EXPECT_EQ(calls.last(), view == &tree ? Q("mGroup") : Q("mServer"));
  }
}

}  // namespace
}  // namespace quarl::tree
