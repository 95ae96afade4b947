#include "plugins/contract/ModuleOutput.h"

#include <unistd.h>

#include <array>
#include <cerrno>

#include "base/Utf8.h"

namespace quarl::plugins {
namespace {

constexpr std::size_t kMostLogged = 16384;
constexpr std::size_t kLongestLine = 1024;
constexpr int kReadsAtOnce = 64;

}  // namespace

Q_LOGGING_CATEGORY(moduleLog, "quarl.modules")

ModuleOutput::~ModuleOutput() {
  if (!line_.empty()) Log(1, line_);
  if (dropped_ > 0) qCWarning(moduleLog, "%s: %zu more bytes were dropped", qUtf8Printable(module_), dropped_);
}

bool ModuleOutput::ReadFrom(int descriptor) {
  std::array<char, 4096> bytes;
  for (int i = 0; i < kReadsAtOnce; ++i) {
    const ssize_t size = read(descriptor, bytes.data(), bytes.size());
    if (size < 0) return errno == EAGAIN || errno == EINTR;
    if (size == 0) return false;
    Add(bytes.data(), static_cast<std::size_t>(size));
  }
  return true;
}

void ModuleOutput::Add(const char* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    if (bytes[i] != '\n' && line_.size() < kLongestLine) {
      line_.push_back(bytes[i]);
      continue;
    }
    Log(1, line_);
    line_.clear();
    if (bytes[i] != '\n') line_.push_back(bytes[i]);
  }
}

void ModuleOutput::Log(int severity, const std::string& line) {
  if (line.empty()) return;
  if (logged_ + line.size() > kMostLogged) {
    dropped_ += line.size();
    return;
  }
  logged_ += line.size();
  QString text = FromUtf8(line);
  for (QChar& character : text) {
    if (!character.isPrint() && !character.isSurrogate()) character = u' ';
  }
  const QByteArray whole = (module_ + QStringLiteral(": ") + text).toUtf8();
  if (severity >= 3) {
    qCCritical(moduleLog, "%s", whole.constData());
  } else if (severity == 2) {
    qCWarning(moduleLog, "%s", whole.constData());
  } else {
    qCInfo(moduleLog, "%s", whole.constData());
  }
}

}  // namespace quarl::plugins
