#include "forms/TextDialog.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace quarl::forms {
namespace {

constexpr int kIcon = 48;
constexpr int kTextWidth = 340;

}  // namespace

TextDialog::TextDialog(const QString& title, const QString& text, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("ModuleText"));
  setWindowTitle(title);
  setModal(true);
  auto* icon = new QLabel(this);
  icon->setPixmap(QApplication::windowIcon().pixmap(kIcon));
  auto* words = new QLabel(text, this);
  words->setObjectName(QStringLiteral("Text"));
  words->setTextFormat(Qt::PlainText);
  words->setWordWrap(true);
  words->setMinimumWidth(kTextWidth);
  words->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* ok = new QPushButton(QStringLiteral("OK"), this);
  ok->setObjectName(QStringLiteral("OKButton"));
  ok->setDefault(true);
  ok->setFocus();
  connect(ok, &QPushButton::clicked, this, [this] { accept(); });
  auto* layout = new QGridLayout(this);
  layout->setHorizontalSpacing(16);
  layout->setVerticalSpacing(14);
  layout->addWidget(icon, 0, 0, Qt::AlignTop);
  layout->addWidget(words, 0, 1);
  layout->addWidget(ok, 1, 0, 1, 2, Qt::AlignRight);
  layout->setColumnStretch(1, 1);
}

}  // namespace quarl::forms
