#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTextBrowser>

namespace quarl::shell {

/// The window that shows the user guide: a Markdown file with links to its own headings and to the web, and a field
/// to find text in it. Modeless; deletes itself when closed.
class frmHelp : public QDialog {
 public:
  /// Shows the guide in a window over the parent, or brings up the one that is open.
  /// Throws Error with the file's path when the guide cannot be read.
  static void Open(const QString& guideFile, QWidget* parent);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  frmHelp(const QString& guide, QWidget* parent);
  void BuildWindow();
  void Find(QTextDocument::FindFlags direction);
  void Follow(const QUrl& link);

  QTextBrowser* txtGuide_;
  QLineEdit* txtFind_;
  QLabel* lblFound_;
};

}  // namespace quarl::shell
