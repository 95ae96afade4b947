#include "netscan/WizardControls.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace quarl::netscan {
namespace {

constexpr int kTextWidth = 76;     // average characters
constexpr int kListRows = 8;       // of page 2, at least
constexpr int kNotListedRows = 4;  // lines of text

struct PageText {
  const char* heading;
  const char* text;
};

constexpr PageText kPageTexts[] = {
    {"Scan Network Wizard",
     "This wizard will guide you into the procedure of import all or a subgroup of computers present on the local "
     "network. Will be presented only the computers currently active. The procedure will permit you to associate a set "
     "of test to each server added."},
    {"Select Operating System",
     "Select the operating system of the servers you wish to scan. Will be included in the search only the server with "
     "the operating system selected."},
    {"Select servers to add", "Select wich server returned from the scanning operation you wish to add."},
    {"Select Tests to add", "Select the tests you wish to add automatically to each server previously selected."},
    {"Import servers",
     "Now the wizard is able to import the selected condiguration. Press finish to add the selected servers."},
};

template <typename Widget>
Widget* Named(const char* name, Widget* widget) {
  widget->setObjectName(QLatin1String(name));
  widget->setAccessibleName(QLatin1String(name));
  return widget;
}

QLabel* MakeLabel(const char* text, QWidget* parent) {
  auto* label = new QLabel(QLatin1String(text), parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

QLabel* MakeHeading(const char* text, QWidget* parent) {
  QLabel* label = MakeLabel(text, parent);
  QFont font = label->font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.25);
  label->setFont(font);
  return label;
}

QProgressBar* MakeProgress(const char* name, QWidget* parent) {
  auto* bar = Named(name, new QProgressBar(parent));
  bar->setTextVisible(false);
  bar->hide();
  return bar;
}

QVBoxLayout& ColumnOf(const QFrame& page) {
  return static_cast<QVBoxLayout&>(*page.layout());
}

}  // namespace

WizardControls::WizardControls(QDialog& window)
    : wizardLogo(Named("wizardLogo", new QLabel(&window))), pages(new QStackedWidget(&window)) {
  wizardLogo->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
  BuildPages();
  auto* upper = new QHBoxLayout;
  upper->addWidget(wizardLogo);
  upper->addWidget(pages, 1);
  auto* column = new QVBoxLayout(&window);
  column->addLayout(upper, 1);
  column->addWidget(BuildBottomBar(window));
}

void WizardControls::BuildPages() {
  for (int page = 0; page < kPageCount; ++page) {
    auto* frame = new QFrame(pages);
    frame->setObjectName(QStringLiteral("WizardFrame_%1").arg(page));
    auto* column = new QVBoxLayout(frame);
    column->addWidget(MakeHeading(kPageTexts[page].heading, frame));
    QLabel* text = MakeLabel(kPageTexts[page].text, frame);
    text->setMinimumWidth(text->fontMetrics().averageCharWidth() * kTextWidth);
    text->setMinimumHeight(text->heightForWidth(text->minimumWidth()));  // a layout's least size knows no wrapping
    column->addWidget(text);
    column->addSpacing(text->fontMetrics().lineSpacing() / 2);
    if (page == kSystems) BuildSystems(*frame);
    if (page == kServers) BuildServers(*frame);
    if (page == kTests) BuildTests(*frame);
    if (page == kImport) BuildImport(*frame);
    if (page != kServers && page != kTests) column->addStretch();
    pages->addWidget(frame);
  }
}

void WizardControls::BuildSystems(QFrame& page) {
  auto* box = Named("OS", new QGroupBox(QStringLiteral("Operating System"), &page));
  auto* column = new QVBoxLayout(box);
  const auto add = [&](const char* name, const char* caption) {
    auto* check = Named(name, new QCheckBox(QLatin1String(caption), box));
    column->addWidget(check);
    return check;
  };
  OS1 = add("OS1", "Windows NT/2000/XP Server");
  OS2 = add("OS2", "Windows NT/2000/XP Workstation");
  OS3 = add("OS3", "Windows 95/98/ME");
  box->setAccessibleName(box->title());
  for (QCheckBox* check : {OS1, OS2, OS3}) check->setAccessibleName(check->text());
  ColumnOf(page).addWidget(box);
}

void WizardControls::BuildServers(QFrame& page) {
  SERVERList = Named("SERVERList", new CheckList(&page));
  SERVERList->setMinimumHeight(SERVERList->fontMetrics().lineSpacing() * kListRows);
  scanState = Named("scanState", MakeLabel("", &page));
  scanProgress = MakeProgress("scanProgress", &page);
  scanStop = Named("scanStop", new QPushButton(QStringLiteral("Stop"), &page));
  scanStop->setAutoDefault(false);
  notListed = Named("notListed", new QToolButton(&page));
  notListed->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  notListed->setAutoRaise(true);
  notListed->setCheckable(true);
  notListed->setArrowType(Qt::RightArrow);
  notListedText = Named("notListedText", new QPlainTextEdit(&page));
  notListedText->setReadOnly(true);
  notListedText->setTabChangesFocus(true);
  notListedText->setFixedHeight(notListedText->fontMetrics().lineSpacing() * (kNotListedRows + 1));
  auto* line = new QHBoxLayout;
  line->addWidget(scanProgress, 1);
  line->addWidget(scanStop);
  QVBoxLayout& column = ColumnOf(page);
  column.addWidget(SERVERList, 1);
  column.addWidget(scanState);
  column.addLayout(line);
  column.addWidget(notListed);
  column.addWidget(notListedText);
  QToolButton* button = notListed;
  QPlainTextEdit* text = notListedText;
  QObject::connect(button, &QToolButton::toggled, text, [button, text](bool open) {
    button->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
    text->setVisible(open);
  });
}

void WizardControls::BuildTests(QFrame& page) {
  TESTList = Named("TESTList", new CheckList(&page));
  TESTList->setHeaderHidden(true);
  ColumnOf(page).addWidget(TESTList, 1);
}

void WizardControls::BuildImport(QFrame& page) {
  importState = Named("importState", MakeLabel("", &page));
  importProgress = MakeProgress("importProgress", &page);
  ColumnOf(page).addWidget(importState);
  ColumnOf(page).addWidget(importProgress);
}

QFrame* WizardControls::BuildBottomBar(QDialog& window) {
  auto* bar = new QFrame(&window);
  bar->setObjectName(QStringLiteral("bottomBar"));
  auto* line = new QHBoxLayout(bar);
  line->setContentsMargins({});
  line->addStretch();
  const auto add = [&](const char* name, const char* caption) {
    auto* button = new QPushButton(QLatin1String(caption), bar);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    line->addWidget(button);
    return button;
  };
  Indietro = add("Indietro", "< Previous");
  Avanti = add("Avanti", "Next >");
  line->addSpacing(bar->fontMetrics().averageCharWidth());
  Annulla = add("Annulla", "Cancel");
  Avanti->setDefault(true);
  return bar;
}

}  // namespace quarl::netscan
