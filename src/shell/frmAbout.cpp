#include "shell/frmAbout.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "shell/ProductInfo.h"
#include "ui/PictureIcon.h"

namespace quarl::shell {
namespace {

constexpr int kLogoSize = 64;

QLabel* Line(const char* name, const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

QLabel* Link(const char* name, const QString& caption, QStringView address, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::RichText);
  label->setText(QStringLiteral("%1: <a href=\"%2\">%2</a>").arg(caption, address));
  label->setTextInteractionFlags(Qt::TextBrowserInteraction);
  label->setOpenExternalLinks(true);
  return label;
}

}  // namespace

frmAbout::frmAbout(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmAbout"));
  setWindowTitle(QStringLiteral("About Quarl"));
  auto* logo = new QLabel(this);
  logo->setObjectName(QStringLiteral("imgLogo"));
  logo->setAccessibleName(QStringLiteral("imgLogo"));
  logo->setPixmap(ui::PictureIcon(QStringLiteral("quarl")).pixmap(QSize(kLogoSize, kLogoSize), devicePixelRatioF()));
  auto* name = Line("lblName", ProductInfo::kName.toString(), this);
  QFont large = name->font();
  large.setBold(true);
  large.setPointSizeF(large.pointSizeF() * 1.4);
  name->setFont(large);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("OKButton"));
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

  auto* grid = new QGridLayout(this);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  grid->setHorizontalSpacing(20);
  grid->setContentsMargins(20, 20, 20, 14);
  grid->addWidget(logo, 0, 0, 5, 1, Qt::AlignTop);
  grid->addWidget(name, 0, 1);
  grid->addWidget(Line("lblVersion", ProductInfo::Version(), this), 1, 1);
  grid->addWidget(Line("lblCopyright", ProductInfo::Copyright(), this), 2, 1);
  grid->addWidget(Link("lblSupport", QStringLiteral("Support"), ProductInfo::kSupportAddress, this), 3, 1);
  grid->addWidget(Link("lblWeb", QStringLiteral("Web"), ProductInfo::kWebAddress, this), 4, 1);
  grid->setRowMinimumHeight(5, 12);
  grid->addWidget(buttons, 6, 0, 1, 2);
  buttons->button(QDialogButtonBox::Ok)->setFocus();
}

}  // namespace quarl::shell
