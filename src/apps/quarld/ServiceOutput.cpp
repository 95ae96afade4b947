#include "apps/quarld/ServiceOutput.h"

#include <sys/stat.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <QByteArray>
#include <cstdio>
#include <string>
#include <tuple>

namespace quarl::daemon {
namespace {

std::string storeText;      // set before the first line
bool journalTakes = false;  // the same
qint64 fileLimit = 0;       // the same; 0 also where the stream is no file

/// Whether a stream is the one that the service manager connected with the journal.
bool LeadsToJournal(int descriptor) {
  struct stat file = {};
  const QByteArray announced = qgetenv("JOURNAL_STREAM");  // "device:inode"
  if (announced.isEmpty() || fstat(descriptor, &file) != 0) return false;
  return announced == QByteArray::number(static_cast<qulonglong>(file.st_dev)) + ':' +
                          QByteArray::number(static_cast<qulonglong>(file.st_ino));
}

void BeginFileAnew() {
  struct stat file = {};
  if (fileLimit == 0 || fstat(STDERR_FILENO, &file) != 0 || file.st_size < fileLimit) return;
  if (ftruncate(STDERR_FILENO, 0) != 0 || lseek(STDERR_FILENO, 0, SEEK_SET) != 0) return;
  std::ignore = std::fputs("quarld: Earlier messages were removed.\n", stderr);
}

}  // namespace

void ServiceOutput::Begin(const Setup& setup) {
  storeText = setup.store.toStdString();
  journalTakes = !setup.forceStream && LeadsToJournal(STDERR_FILENO);
  struct stat file = {};
  fileLimit = fstat(STDERR_FILENO, &file) == 0 && S_ISREG(file.st_mode) ? setup.limit : 0;
}

void ServiceOutput::Say(Priority priority, const QString& line) {
  const QByteArray text = line.toUtf8();
  if (journalTakes && sd_journal_send("MESSAGE=%s", text.constData(), "PRIORITY=%d", static_cast<int>(priority),
                                      "QUARL_STORE=%s", storeText.c_str(), nullptr) == 0) {
    return;
  }
  BeginFileAnew();
  std::ignore = std::fprintf(stderr, "quarld: %s\n", text.constData());
}

}  // namespace quarl::daemon
