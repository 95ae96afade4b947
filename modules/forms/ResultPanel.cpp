#include "forms/ResultPanel.h"

#include <QGridLayout>
#include <QStyle>

#include "kit/Text.h"

namespace quarl::forms {
namespace {

constexpr int kLookMs = 50;
constexpr int kPictureSize = 16;
constexpr int kLinesShown = 3;

QLabel* MakeHead(QWidget* parent) {
  auto* head = new QLabel(parent);
  head->setObjectName(QStringLiteral("ResultHead"));
  head->setTextFormat(Qt::PlainText);
  QFont font = head->font();
  font.setBold(true);
  head->setFont(font);
  return head;
}

QPlainTextEdit* MakeText(QWidget* parent) {
  auto* text = new QPlainTextEdit(parent);
  text->setObjectName(QStringLiteral("ResultText"));
  text->setAccessibleName(QStringLiteral("Result"));
  text->setReadOnly(true);
  text->setTabChangesFocus(true);
  text->setFrameShape(QFrame::NoFrame);
  text->setFixedHeight(QFontMetrics(text->font()).lineSpacing() * kLinesShown + 10);
  text->viewport()->setAutoFillBackground(false);
  return text;
}

}  // namespace

ResultPanel::ResultPanel(std::function<void()> stateChanged, QWidget* parent)
    : QFrame(parent),
      stateChanged_(std::move(stateChanged)),
      picture_(new QLabel(this)),
      head_(MakeHead(this)),
      text_(MakeText(this)) {
  setObjectName(QStringLiteral("ResultPanel"));
  setFrameShape(QFrame::StyledPanel);
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(8, 6, 8, 6);
  layout->setVerticalSpacing(2);
  layout->setColumnStretch(1, 1);
  layout->addWidget(picture_, 0, 0);
  layout->addWidget(head_, 0, 1);
  layout->addWidget(text_, 1, 1);
  look_.setInterval(kLookMs);
  connect(&look_, &QTimer::timeout, this, [this] { Look(); });
  hide();
}

void ResultPanel::Start(const QuarlFormCalls& calls, const std::string& values) {
  trial_.emplace(calls, values);
  picture_->setPixmap(style()->standardIcon(QStyle::SP_BrowserReload).pixmap(kPictureSize));
  text_->clear();
  show();
  look_.start();
  Look();
  stateChanged_();
}

void ResultPanel::ShowProblem(const QString& text) {
  ShowReport(false, text);
}

void ResultPanel::Clear() {
  if (!IsRunning()) hide();
}

void ResultPanel::Look() {
  if (!trial_->IsDone()) {
    head_->setText(
        QStringLiteral("Running, %1 s").arg(static_cast<double>(trial_->Elapsed().count()) / 1000, 0, 'f', 1));
    return;
  }
  look_.stop();
  const bool good = trial_->WentWell();
  const QString report = QString::fromStdString(kit::ToUtf8(trial_->Report()));
  trial_.reset();
  ShowReport(good, report);
  stateChanged_();
}

void ResultPanel::ShowReport(bool good, const QString& report) {
  const auto icon = good ? QStyle::SP_DialogApplyButton : QStyle::SP_MessageBoxWarning;
  picture_->setPixmap(style()->standardIcon(icon).pixmap(kPictureSize));
  const QString text = report.trimmed().isEmpty() ? (good ? QStringLiteral("Done") : QStringLiteral("Failed")) : report;
  // A first line that is short is the headline of what follows.
  const qsizetype end = text.indexOf(u'\n');
  head_->setText(end < 0 ? (good ? QStringLiteral("Done") : QStringLiteral("Failed")) : text.first(end).trimmed());
  text_->setPlainText(end < 0 ? text : text.mid(end + 1));
  show();
}

}  // namespace quarl::forms
