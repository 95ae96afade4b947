#include "shell/frmHelp.h"

#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTextBlock>
#include <QTextTable>
#include <QVBoxLayout>

#include "base/Error.h"

namespace quarl::shell {
namespace {

constexpr qint64 kLargestGuide = qint64{4} * 1024 * 1024;

QString ReadGuide(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    throw Error(QStringLiteral("The user guide %1 cannot be read: %2.").arg(path, file.errorString()));
  }
  if (file.size() > kLargestGuide) throw Error(QStringLiteral("The user guide %1 is too large.").arg(path));
  return QString::fromUtf8(file.readAll());
}

// The name under which a link finds a heading: "Where the store is" is #where-the-store-is.
QString AnchorOf(const QString& heading) {
  QString anchor;
  for (const QChar character : heading.toLower()) {
    if (character.isLetterOrNumber()) anchor += character;
    if (character.isSpace() || character == u'-') anchor += u'-';
  }
  return anchor;
}

void UnderlineRows(QTextTable& table) {
  QTextTableFormat format = table.format();
  format.setBorder(0);
  format.setCellPadding(5);
  format.setCellSpacing(0);
  table.setFormat(format);
  for (int row = 0; row < table.rows(); ++row) {
    for (int column = 0; column < table.columns(); ++column) {
      QTextTableCell cell = table.cellAt(row, column);
      QTextTableCellFormat cellFormat = cell.format().toTableCellFormat();
      cellFormat.setBottomBorder(1);
      cellFormat.setBottomBorderStyle(QTextFrameFormat::BorderStyle_Solid);
      cellFormat.setBottomBorderBrush(QGuiApplication::palette().mid());
      cell.setFormat(cellFormat);
    }
  }
}

// Lines for tables and space above headings, which Markdown says nothing about.
void GiveRoom(QTextDocument& guide) {
  for (QTextFrame* frame : guide.rootFrame()->childFrames()) {
    if (auto* table = qobject_cast<QTextTable*>(frame)) UnderlineRows(*table);
  }
  for (QTextBlock block = guide.begin(); block.isValid(); block = block.next()) {
    if (block.blockFormat().headingLevel() < 2) continue;
    QTextBlockFormat format = block.blockFormat();
    format.setTopMargin(16);
    QTextCursor(block).setBlockFormat(format);
  }
}

QPushButton* Button(const char* name, const QString& caption, QWidget* parent) {
  auto* button = new QPushButton(caption, parent);
  button->setObjectName(QLatin1String(name));
  button->setAutoDefault(false);
  return button;
}

}  // namespace

void frmHelp::Open(const QString& guideFile, QWidget* parent) {
  auto* window = parent->findChild<QDialog*>(QStringLiteral("frmHelp"), Qt::FindDirectChildrenOnly);
  if (!window) window = new frmHelp(ReadGuide(guideFile), parent);
  window->show();
  window->raise();
  window->activateWindow();
}

frmHelp::frmHelp(const QString& guide, QWidget* parent)
    : QDialog(parent), txtGuide_(new QTextBrowser(this)), txtFind_(new QLineEdit(this)), lblFound_(new QLabel(this)) {
  BuildWindow();
  txtGuide_->document()->setMarkdown(guide, QTextDocument::MarkdownDialectGitHub);
  GiveRoom(*txtGuide_->document());
  txtGuide_->moveCursor(QTextCursor::Start);
}

void frmHelp::BuildWindow() {
  setObjectName(QStringLiteral("frmHelp"));
  setWindowTitle(QStringLiteral("Quarl User Guide"));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_QuitOnClose, false);
  txtGuide_->setObjectName(QStringLiteral("txtGuide"));
  txtGuide_->setAccessibleName(QStringLiteral("txtGuide"));
  txtGuide_->setOpenLinks(false);
  txtGuide_->document()->setDocumentMargin(14);
  txtFind_->setObjectName(QStringLiteral("txtFind"));
  txtFind_->setAccessibleName(QStringLiteral("txtFind"));
  txtFind_->setPlaceholderText(QStringLiteral("Find"));
  txtFind_->setClearButtonEnabled(true);
  lblFound_->setObjectName(QStringLiteral("lblFound"));
  auto* next = Button("FindNextButton", QStringLiteral("Next"), this);
  auto* previous = Button("FindPreviousButton", QStringLiteral("Previous"), this);
  auto* shut = Button("CloseButton", QStringLiteral("Close"), this);
  connect(txtGuide_, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) { Follow(link); });
  connect(txtFind_, &QLineEdit::returnPressed, this, [this] { Find({}); });
  connect(next, &QPushButton::clicked, this, [this] { Find({}); });
  connect(previous, &QPushButton::clicked, this, [this] { Find(QTextDocument::FindBackward); });
  connect(shut, &QPushButton::clicked, this, [this] { close(); });
  auto* find = new QShortcut(QKeySequence(QKeySequence::Find), this);
  connect(find, &QShortcut::activated, this, [this] { txtFind_->setFocus(); });

  auto* bar = new QHBoxLayout;
  bar->addWidget(txtFind_, 1);
  bar->addWidget(next);
  bar->addWidget(previous);
  bar->addWidget(lblFound_, 1);
  bar->addWidget(shut);
  auto* column = new QVBoxLayout(this);
  column->addWidget(txtGuide_);
  column->addLayout(bar);
  resize(760, 600);
}

void frmHelp::keyPressEvent(QKeyEvent* event) {
  // Return in the field finds; it must not close the window.
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return event->accept();
  QDialog::keyPressEvent(event);
}

void frmHelp::Find(QTextDocument::FindFlags direction) {
  const QString text = txtFind_->text();
  if (text.isEmpty()) return lblFound_->clear();
  bool found = txtGuide_->find(text, direction);
  if (!found) {
    const QTextCursor before = txtGuide_->textCursor();
    txtGuide_->moveCursor(direction ? QTextCursor::End : QTextCursor::Start);
    found = txtGuide_->find(text, direction);
    if (!found) txtGuide_->setTextCursor(before);
  }
  lblFound_->setText(found ? QString() : QStringLiteral("Not found"));
}

void frmHelp::Follow(const QUrl& link) {
  if (!link.scheme().isEmpty()) {
    QDesktopServices::openUrl(link);
    return;
  }
  for (QTextBlock block = txtGuide_->document()->begin(); block.isValid(); block = block.next()) {
    if (block.blockFormat().headingLevel() == 0 || AnchorOf(block.text()) != link.fragment()) continue;
    txtGuide_->moveCursor(QTextCursor::End);
    txtGuide_->setTextCursor(QTextCursor(block));
    QScrollBar* bar = txtGuide_->verticalScrollBar();
    bar->setValue(bar->value() + txtGuide_->cursorRect().top() - 8);
    return;
  }
}

}  // namespace quarl::shell
