#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>

#include "support/Text.h"

// How the test library shows Qt's values in its messages.
void PrintTo(const QByteArray& bytes, std::ostream* out);
void PrintTo(const QStringList& list, std::ostream* out);

namespace quarl::test {

/// How a run of the program ended and what it wrote.
struct Ended {
  int code = -1;  ///< 128 + the signal for a program that one ended, as a shell tells it
  QByteArray out, err;
};

void PrintTo(const Ended& run, std::ostream* out);

/// Fails unless the run failed, wrote nothing to its standard output, and said this.
void ExpectFailure(const Ended& run, const QByteArray& says);

/// Tests of the real quarlctl on stores in a folder of their own; the program knows no other store.
class QuarlctlTest : public ::testing::Test {
 protected:
  QuarlctlTest();

  QString Path(const QString& name) const { return folder_.filePath(name); }
  /// "sqlite:" and the path of a name in the test's folder.
  QString Store(const QString& name) const { return QStringLiteral("sqlite:") + Path(name); }
  /// Runs quarlctl with $QUARL_STORE = store.db in the test's folder, which is the current one as well.
  Ended Ctl(const QStringList& arguments, const QByteArray& input = {}) const;
  Ended Ctl(const char* words, const QByteArray& input = {}) const { return Ctl(Words(words), input); }
  /// The same, failing the test unless it succeeds.
  QByteArray MustCtl(const QStringList& arguments, const QByteArray& input = {}) const;
  QByteArray MustCtl(const char* words, const QByteArray& input = {}) const { return MustCtl(Words(words), input); }

  QByteArray Content(const QString& name) const;
  void WriteFile(const QString& name, const QByteArray& bytes) const;
  QStringList FilesBeside() const;

  QString program_;                    ///< quarlctl of the build
  QProcessEnvironment environment_;    ///< of the runs
  std::function<void()> beforeStart_;  ///< in the child, before the program starts
  QString outFile_;                    ///< where standard output goes, when not to Ended::out

 private:
  QTemporaryDir folder_;
};

}  // namespace quarl::test
