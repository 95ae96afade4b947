#include "apps/QuarlctlRun.h"

#include <QDir>
#include <QFile>
#include <QProcess>

void PrintTo(const QByteArray& bytes, std::ostream* out) {
  *out << '"' << bytes.left(5000).toStdString() << '"';
}

void PrintTo(const QStringList& list, std::ostream* out) {
  *out << list.join(QLatin1String(", ")).toStdString();
}

namespace quarl::test {

void PrintTo(const Ended& run, std::ostream* out) {
  *out << "exit " << run.code << "\nstdout: " << run.out.toStdString() << "\nstderr: " << run.err.toStdString();
}

void ExpectFailure(const Ended& run, const QByteArray& says) {
  EXPECT_TRUE(run.code == 1 && run.out.isEmpty() && run.err.contains(says)) << ::testing::PrintToString(run);
}

QuarlctlTest::QuarlctlTest()
    : program_(QStringLiteral(QUARL_QUARLCTL)), environment_(QProcessEnvironment::systemEnvironment()) {
  environment_.insert(QStringLiteral("QUARL_STORE"), Store(QStringLiteral("store.db")));
  environment_.insert(QStringLiteral("XDG_DATA_HOME"), Path(QStringLiteral("data")));
  environment_.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
}

Ended QuarlctlTest::Ctl(const QStringList& arguments, const QByteArray& input) const {
  QProcess process;
  process.setProcessEnvironment(environment_);
  process.setWorkingDirectory(folder_.path());
  if (beforeStart_) process.setChildProcessModifier(beforeStart_);
  if (!outFile_.isEmpty()) process.setStandardOutputFile(outFile_);
  process.start(program_, arguments);
  process.write(input);
  process.closeWriteChannel();
  if (!process.waitForFinished(60000)) {
    ADD_FAILURE() << "did not end: " << process.errorString().toStdString();
    process.kill();
    process.waitForFinished();
  }
  const bool crashed = process.exitStatus() == QProcess::CrashExit;
  return {crashed ? 128 + process.exitCode() : process.exitCode(), process.readAllStandardOutput(),
          process.readAllStandardError()};
}

QByteArray QuarlctlTest::MustCtl(const QStringList& arguments, const QByteArray& input) const {
  const Ended run = Ctl(arguments, input);
  EXPECT_EQ(run.code, 0) << arguments.join(QLatin1Char(' ')).toStdString() << ": " << run.err.toStdString();
  // Modules that are missing are told even where they are allowed to be.
  EXPECT_TRUE(run.err.isEmpty() || arguments.contains(QLatin1String("--allow-missing-modules")))
      << run.err.toStdString();
  return run.out;
}

QByteArray QuarlctlTest::Content(const QString& name) const {
  QFile file(Path(name));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
  return file.readAll();
}

void QuarlctlTest::WriteFile(const QString& name, const QByteArray& bytes) const {
  QFile file(Path(name));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_EQ(file.write(bytes), bytes.size());
}

QStringList QuarlctlTest::FilesBeside() const {
  return QDir(folder_.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

}  // namespace quarl::test
