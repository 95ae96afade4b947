#include "editors/DialogParts.h"

#include <QHBoxLayout>
#include <limits>

namespace quarl::editors {

DialogButtons::DialogButtons(QDialog& dialog)
    : OKButton(new QPushButton(QStringLiteral("OK"), &dialog)),
      CancelButton(new QPushButton(QStringLiteral("Cancel"), &dialog)) {
  OKButton->setObjectName(QStringLiteral("OKButton"));
  OKButton->setDefault(true);
  CancelButton->setObjectName(QStringLiteral("CancelButton"));
  auto* line = new QHBoxLayout;
  line->addStretch();
  line->addWidget(OKButton);
  line->addWidget(CancelButton);
  row = line;
}

QLineEdit* MakeTextBox(const QString& name, QWidget* parent) {
  auto* box = new QLineEdit(parent);
  box->setObjectName(name);
  box->setAccessibleName(name);
  box->setMaxLength(std::numeric_limits<int>::max());
  return box;
}

QLabel* MakeLabel(const QString& name, const QString& caption, QWidget* field, QWidget* parent) {
  auto* label = new QLabel(caption, parent);
  label->setObjectName(name);
  label->setBuddy(field);
  return label;
}

}  // namespace quarl::editors
