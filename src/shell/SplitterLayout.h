#pragma once

namespace quarl::shell {

struct MainControls;

/// Places tree, splitter and list in the main window's area, and moves the splitter with the mouse. Lengths are
/// logical pixels.
class SplitterLayout {
 public:
  explicit SplitterLayout(const MainControls& controls) : controls_(controls) {}

  /// Fits tree, splitter and list to the area. Sizes that would not be above 0 stay as they are.
  void Fit() const;
  /// Lines up the splitter and the list with the tree.
  void Align() const;
  /// Gives the tree a width, at least 100 and leaving 100 of the window, and everything else its place.
  void SizeControls(int width) const;

  void StartDrag();
  /// @param x where the mouse is, from the splitter's left edge. The bar keeps 40 from the window's edges.
  void Drag(int x) const;
  void EndDrag();

 private:
  const MainControls& controls_;
  bool dragging_ = false;
};

}  // namespace quarl::shell
