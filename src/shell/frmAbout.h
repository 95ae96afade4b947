#pragma once

#include <QDialog>

namespace quarl::shell {

/// The About box: name, version and copyright of the program, and links to its support and web pages.
class frmAbout : public QDialog {
 public:
  explicit frmAbout(QWidget* parent);
};

}  // namespace quarl::shell
