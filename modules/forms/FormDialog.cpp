#include "forms/FormDialog.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "forms/FormColours.h"
#include "kit/Text.h"

namespace quarl::forms {
namespace {

constexpr int kNoteIcon = 20;
constexpr double kShareOfScreen = 0.85;
constexpr std::size_t kReportRoom = 4096;

QString TextIn(const std::array<char, kReportRoom>& room) {
  return QString::fromStdString(kit::ToUtf8({room.data(), strnlen(room.data(), room.size())}));
}

QuarlBuffer BufferOf(std::array<char, kReportRoom>& room) {
  return {room.data(), static_cast<uint32_t>(room.size())};
}

}  // namespace

FormDialog::FormDialog(FormRequest request, const QuarlFormCalls& calls, std::size_t room, QWidget* parent)
    : QDialog(parent), request_(std::move(request)), calls_(calls), room_(room) {
  setObjectName(QStringLiteral("ModuleForm"));
  setWindowTitle(QString::fromStdString(request_.form.title));
  setModal(true);
  rows_.reserve(request_.form.fields.size());
  Build();
  built_ = true;
  AlignLabels();
  UpdateEnabled();
  UpdateButtons();
}

void FormDialog::Build() {
  auto* layout = new QVBoxLayout(this);
  if (!request_.note.empty()) layout->addWidget(MakeNote());
  scroll_ = new QScrollArea(this);
  scroll_->setObjectName(QStringLiteral("Fields"));
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setWidgetResizable(true);
  scroll_->setFocusPolicy(Qt::NoFocus);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll_->setWidget(MakeFields());
  layout->addWidget(scroll_, 1);
  result_ = new ResultPanel([this] { UpdateButtons(); }, this);
  layout->addWidget(result_);
  layout->addLayout(MakeButtons());
}

QWidget* FormDialog::MakeNote() {
  auto* note = new QFrame(this);
  note->setObjectName(QStringLiteral("Note"));
  note->setFrameShape(QFrame::StyledPanel);
  note->setAutoFillBackground(true);
  QPalette palette = note->palette();
  palette.setColor(QPalette::Window, NoteGround(palette));
  note->setPalette(palette);
  auto* icon = new QLabel(note);
  icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(kNoteIcon));
  auto* text = new QLabel(QString::fromStdString(request_.note), note);
  text->setObjectName(QStringLiteral("NoteText"));
  text->setTextFormat(Qt::PlainText);
  text->setWordWrap(true);
  text->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto* line = new QHBoxLayout(note);
  line->addWidget(icon, 0, Qt::AlignTop);
  line->addWidget(text, 1);
  return note;
}

QWidget* FormDialog::MakeFields() {
  auto* page = new QWidget;
  new QVBoxLayout(page);
  page->layout()->setContentsMargins(0, 0, 0, 0);
  for (const kit::Field& field : request_.form.fields) {
    QGridLayout* section = SectionLayout(field.group, page);
    rows_.emplace_back(
        field, request_.values[field.key], [this] { UpdateEnabled(); }, *section);
  }
  static_cast<QVBoxLayout*>(page->layout())->addStretch();
  return page;
}

QGridLayout* FormDialog::SectionLayout(const std::string& group, QWidget* page) {
  const QString name = QStringLiteral("Section ") + QString::fromStdString(group);
  if (auto* known = page->findChild<QWidget*>(name, Qt::FindDirectChildrenOnly))
    return static_cast<QGridLayout*>(known->layout());
  QWidget* section = group.empty() ? new QWidget(page) : new QGroupBox(WithoutShortcut(group), page);
  section->setObjectName(name);
  auto* grid = new QGridLayout(section);
  grid->setColumnStretch(1, 1);
  grid->setHorizontalSpacing(12);
  page->layout()->addWidget(section);
  return grid;
}

QLayout* FormDialog::MakeButtons() {
  auto* line = new QHBoxLayout;
  if (calls_.Try != nullptr) {
    const std::string label = request_.tryLabel.empty() ? "Test now" : request_.tryLabel;
    try_ = new QPushButton(WithoutShortcut(label), this);
    try_->setObjectName(QStringLiteral("TryButton"));
    try_->setAutoDefault(false);
    connect(try_, &QPushButton::clicked, this, [this] { TryNow(); });
    line->addWidget(try_);
  }
  line->addStretch();
  const auto add = [&](const QString& caption, const QString& name) {
    auto* button = new QPushButton(caption, this);
    button->setObjectName(name);
    line->addWidget(button);
    return button;
  };
  auto* ok = add(QStringLiteral("OK"), QStringLiteral("OKButton"));
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, [this] { accept(); });
  auto* cancel = add(QStringLiteral("Cancel"), QStringLiteral("CancelButton"));
  connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
  return line;
}

void FormDialog::AlignLabels() {
  int widest = 0;
  for (const FieldRow& row : rows_)
    if (row.Label() != nullptr) widest = std::max(widest, row.Label()->sizeHint().width());
  for (const FieldRow& row : rows_)
    static_cast<QGridLayout*>(row.Editor().parentWidget()->layout())->setColumnMinimumWidth(0, widest);
}

void FormDialog::showEvent(QShowEvent* event) {
  FitToScreen();
  QDialog::showEvent(event);
}

// The fields get the room that they want, as far as the screen has it; then they scroll.
void FormDialog::FitToScreen() {
  QWidget* page = scroll_->widget();
  page->ensurePolished();
  const int width = page->sizeHint().width();
  const int wanted = page->hasHeightForWidth() ? page->heightForWidth(width) : page->sizeHint().height();
  const int others = sizeHint().height() - scroll_->sizeHint().height();
  const int most = static_cast<int>(screen()->availableGeometry().height() * kShareOfScreen) - others;
  const bool scrolls = wanted > most;
  scroll_->setMinimumWidth(width + (scrolls ? scroll_->verticalScrollBar()->sizeHint().width() : 0));
  scroll_->setMinimumHeight(std::max(std::min(wanted, most), 0));
  layout()->activate();
  // A layout counts a note that wraps as one line in its minimum size.
  const int whole = layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(this->width()) : 0;
  if (isVisible() && whole > height()) resize(this->width(), whole);
}

void FormDialog::UpdateEnabled() {
  if (!built_) return;
  const kit::Json values = Values();
  for (FieldRow& row : rows_) row.SetEnabled(kit::IsEnabled(request_.form, row.Field(), values));
}

void FormDialog::UpdateButtons() {
  if (try_ != nullptr) try_->setEnabled(!result_->IsRunning());
}

kit::Json FormDialog::Values() const {
  kit::Json values = kit::Json::object();
  for (const FieldRow& row : rows_) values[row.Field().key] = row.Value();
  return values;
}

void FormDialog::TryNow() {
  if (result_->IsRunning() || !Judge()) return;
  result_->Start(calls_, Values().dump());
  FitToScreen();
}

void FormDialog::accept() {
  if (Judge()) QDialog::accept();
}

bool FormDialog::Judge() {
  result_->Clear();
  for (FieldRow& row : rows_) row.ShowError({});
  const kit::Json values = Values();
  const bool good = JudgeFields(values) && AskModule(values);
  FitToScreen();
  if (!good) FocusFirstError();
  return good;
}

bool FormDialog::JudgeFields(const kit::Json& values) {
  bool good = true;
  for (FieldRow& row : rows_) {
    if (!kit::IsEnabled(request_.form, row.Field(), values)) continue;
    const std::string defect = kit::Defect(row.Field(), values[row.Field().key]);
    row.ShowError(QString::fromStdString(defect));
    good = good && defect.empty();
  }
  if (!good || values.dump().size() <= room_) return good;
  Point({}, QStringLiteral("All values together are too long to be saved."));
  return false;
}

bool FormDialog::AskModule(const kit::Json& values) {
  if (calls_.Validate == nullptr) return true;
  std::array<char, kReportRoom> key{};
  std::array<char, kReportRoom> report{};
  if (calls_.Validate(calls_.context, values.dump().c_str(), BufferOf(key), BufferOf(report)) == 0) return true;
  const QString text = TextIn(report);
  Point(TextIn(key).toStdString(), text.isEmpty() ? QStringLiteral("The module refuses these values.") : text);
  return false;
}

void FormDialog::Point(const std::string& key, const QString& text) {
  const auto fits = [&](const FieldRow& row) { return row.Field().key == key; };
  const auto row = std::find_if(rows_.begin(), rows_.end(), fits);
  if (row != rows_.end())
    row->ShowError(text);
  else if (!result_->IsRunning())
    result_->ShowProblem(text);
}

void FormDialog::FocusFirstError() {
  const auto row = std::find_if(rows_.begin(), rows_.end(), [](const FieldRow& at) { return at.HasError(); });
  if (row == rows_.end()) return;
  row->Editor().setFocus(Qt::OtherFocusReason);
  scroll_->ensureWidgetVisible(&row->Editor());
}

}  // namespace quarl::forms
