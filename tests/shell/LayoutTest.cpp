#include <QTest>

#include "shell/MainFixture.h"

namespace quarl::shell {
namespace {

class LayoutTest : public MainFixture {
 protected:
  LayoutTest() {
    Start();
    Window().resize(900, 500);
    splitter_ = Window().findChild<QWidget*>(Q("imgSplitter"));
    bar_ = Window().findChild<QWidget*>(Q("picSplitter"));
  }

  int AreaWidth() { return Window().centralWidget()->width(); }
  // Presses the splitter in its middle and moves to x, counted from the area's left edge.
  void DragTo(int x) {
    QTest::mousePress(splitter_, Qt::LeftButton, {}, QPoint(2, 50));
    QTest::mouseMove(splitter_, QPoint(x - splitter_->x(), 50));
  }
  void Drop() { QTest::mouseRelease(splitter_, Qt::LeftButton, {}, QPoint(2, 50)); }

  void ExpectSideBySide() {
    const QRect tree = Tree().geometry();
    const QRect list = List().geometry();
    EXPECT_EQ(splitter_->geometry(), QRect(tree.right() + 1, tree.y(), 5, tree.height()));
    EXPECT_EQ(list.x(), tree.right() + 1 + 5);
    EXPECT_EQ(list.y(), tree.y());
    EXPECT_EQ(list.height(), tree.height());
    EXPECT_EQ(list.right() + 1, AreaWidth());
    EXPECT_EQ(tree.height(), Window().centralWidget()->height() - 6);
  }

  QWidget* splitter_;
  QWidget* bar_;
};

TEST_F(LayoutTest, TreeAndListFillTheWindow) {
  ExpectSideBySide();
  EXPECT_FALSE(bar_->isVisible());
  Window().resize(1100, 700);
  ExpectSideBySide();
}

TEST_F(LayoutTest, TheSplitterMovesTheBorderBetweenTreeAndList) {
  DragTo(400);
  EXPECT_TRUE(bar_->isVisible());
  EXPECT_EQ(bar_->geometry(), QRect(400, splitter_->y(), 3, splitter_->height()));
  Drop();
  EXPECT_FALSE(bar_->isVisible());
  EXPECT_EQ(Tree().width(), 400);
  ExpectSideBySide();
}

TEST_F(LayoutTest, TheSplitterKeepsItsDistances) {
  const int width = AreaWidth();
  // Where the splitter is moved to, where its bar stands then, and the tree's width.
  const std::tuple<int, int, int> cases[] = {{-200, 40, 100},
                                             {39, 40, 100},
                                             {40, 40, 100},
                                             {99, 99, 100},
                                             {150, 150, 150},
                                             {width - 50, width - 50, width - 100},
                                             {width - 40, width - 40, width - 100},
                                             {width + 300, width - 40, width - 100}};
  for (const auto& [to, bar, treeWidth] : cases) {
    DragTo(to);
    EXPECT_EQ(bar_->x(), bar) << to;
    Drop();
    EXPECT_EQ(Tree().width(), treeWidth) << to;
    ExpectSideBySide();
  }
}

TEST_F(LayoutTest, OnlyAPressedLeftButtonMovesIt) {
  const int before = Tree().width();
  QTest::mouseMove(splitter_, QPoint(100, 50));
  Drop();
  QTest::mouseClick(splitter_, Qt::RightButton);
  EXPECT_FALSE(bar_->isVisible());
  EXPECT_EQ(Tree().width(), before);
}

TEST_F(LayoutTest, SizesStayWhenThereIsNoRoom) {
  const QRect tree = Tree().geometry();
  const QRect list = List().geometry();
  QWidget* area = Window().centralWidget();
  area->resize(tree.width() + 5, 6);
  EXPECT_EQ(Tree().geometry(), tree);
  EXPECT_EQ(List().geometry(), list);
  area->resize(tree.width() + 6, 7);
  EXPECT_EQ(Tree().height(), 1);
  EXPECT_EQ(List().width(), 1);
}

TEST_F(LayoutTest, AWindowOfNoSizeAtAllSurvives) {
  Window().resize(1, 1);
  QTest::qWait(0);
  Window().resize(900, 500);
  QTest::qWait(0);
  ExpectSideBySide();
}

}  // namespace
}  // namespace quarl::shell
