#include "forms/Forms.h"

#include <QApplication>
#include <QPointer>
#include <QThread>
#include <QWindow>
#include <cstddef>
#include <cstring>
#include <memory>

#include "forms/FormDialog.h"
#include "forms/TextDialog.h"
#include "kit/Buffers.h"
#include "kit/Error.h"
#include "kit/Text.h"
#include "ui/ColourScheme.h"
#include "ui/PictureIcon.h"

namespace quarl::forms {
namespace {

constexpr int16_t kConfirmed = 0;
constexpr int16_t kCancelled = 1;
constexpr int16_t kNotShown = -1;

struct Session {
  const QuarlHost* host = nullptr;
  WId owner = 0;
  std::string title;
};

Session& TheSession() {
  static auto& session = *new Session;
  return session;
}

void LogError(const char* line) {
  const QuarlHost* host = TheSession().host;
  constexpr int16_t kError = 3;
  if (host != nullptr && host->size >= offsetof(QuarlHost, Log) + sizeof(QuarlHost::Log) && host->Log != nullptr)
    host->Log(kError, line);
}

/// Qt ends the process when it finds no display; this is found out before.
bool HasDisplay() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
    if (!qEnvironmentVariableIsEmpty(name)) return true;
  return false;
}

/// The application of this process. Throws kit::Error where nothing can be shown. Never destroyed: the process ends
/// soon, and a trial may still run.
void EnsureApplication() {
  if (QCoreApplication::instance() == nullptr) {
    if (!HasDisplay()) throw kit::Error("A dialog was to be shown where there is no display.");
    static int count = 1;
    static char name[] = "quarl-module";
    static char* arguments[] = {name, nullptr};
    new QApplication(count, arguments);
    QCoreApplication::setApplicationName(QString::fromStdString(TheSession().title));
    QGuiApplication::setDesktopFileName(QStringLiteral("quarl-console"));
    QGuiApplication::setWindowIcon(ui::PictureIcon(QStringLiteral("quarl")));
    ui::FollowDesktopColourScheme();
  }
  if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr ||
      QThread::currentThread() != QCoreApplication::instance()->thread())
    throw kit::Error("A dialog was to be shown on another thread than the main one.");
}

/// Runs the dialog above the window of the console.
int RunAboveOwner(QDialog& dialog) {
  const WId owner = TheSession().owner;
  std::unique_ptr<QWindow> foreign;
  if (owner != 0 && QGuiApplication::platformName() == QLatin1String("xcb")) {
    foreign.reset(QWindow::fromWinId(owner));
    dialog.winId();
    if (foreign && dialog.windowHandle() != nullptr) dialog.windowHandle()->setTransientParent(foreign.get());
  } else if (owner != 0) {
    dialog.setWindowFlag(Qt::WindowStaysOnTopHint);
  }
  const int result = dialog.exec();
  if (dialog.windowHandle() != nullptr) dialog.windowHandle()->setTransientParent(nullptr);
  return result;
}

QuarlFormCalls KnownCalls(const QuarlFormCalls* calls) {
  QuarlFormCalls known{};
  if (calls != nullptr) std::memcpy(&known, calls, std::min<std::size_t>(calls->size, sizeof known));
  return known;
}

int16_t RunForm(const char* form, QuarlBuffer values, const QuarlFormCalls* calls) {
  if (form == nullptr || values.text == nullptr || values.size == 0) throw kit::Error("A form came without texts.");
  FormRequest request = ReadForm(form, kit::TextOf(values));
  EnsureApplication();
  FormDialog dialog(std::move(request), KnownCalls(calls), values.size - 1);
  if (RunAboveOwner(dialog) != QDialog::Accepted) return kCancelled;
  const std::string text = dialog.Values().dump();
  if (text.size() >= values.size) throw kit::Error("The values of a form do not fit their buffer.");
  kit::WriteText(values, text);
  return kConfirmed;
}

int16_t ShowForm(const char* form, QuarlBuffer values, const QuarlFormCalls* calls) {
  try {
    return RunForm(form, values, calls);
  } catch (const std::exception& error) {
    LogError(error.what());
  }
  return kNotShown;
}

int16_t ShowText(const char* title, const char* text) {
  try {
    EnsureApplication();
    TextDialog dialog(QString::fromStdString(kit::OneLine(kit::TextOf(title))),
                      QString::fromStdString(kit::ToUtf8(kit::TextOf(text))));
    RunAboveOwner(dialog);
    return 0;
  } catch (const std::exception& error) {
    LogError(error.what());
  }
  return kNotShown;
}

}  // namespace
}  // namespace quarl::forms

int16_t QuarlFormsOpen(QuarlHost* host, uint64_t ownerWindow, const char* applicationTitle) {
  using namespace quarl;
  constexpr auto kNeeded = offsetof(QuarlHost, ShowText) + sizeof(QuarlHost::ShowText);
  if (host == nullptr || host->size < kNeeded) return forms::kNotShown;
  forms::TheSession() = {host, static_cast<WId>(ownerWindow), kit::OneLine(kit::TextOf(applicationTitle))};
  host->ShowForm = &forms::ShowForm;
  host->ShowText = &forms::ShowText;
  return 0;
}
