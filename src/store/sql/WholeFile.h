#pragma once

#include <QString>

namespace quarl::store::sql {

/// A file that is written beside its place and then put there whole. Removed again when it is not.
class WholeFile {
 public:
  /// Makes an empty file beside the place, hidden, for this user only. Throws SqlError with the system's reason.
  /// @param what says what could not be done, a sentence without its full stop.
  WholeFile(const QString& place, QString what);
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  const QString& Path() const { return path_; }
  enum class Existing { Keep, Replace };
  /// Puts the file in its place and waits until the disk holds it. False: something is there and is to be kept.
  /// Throws SqlError.
  bool Publish(Existing existing);

 private:
  [[noreturn]] void Throw(int number) const;

  QString place_, path_, what_;
};

/// Gives a finished file another name in the same folder that nothing has, and waits until the disk holds it. 0, or the
/// system's error number with both names as they were.
int MoveToFreeName(const QString& from, const QString& to);
/// Gives a file a second name in the same folder that nothing has; where the file system knows one name a file only, a
/// copy. 0, or the system's error number.
int AddName(const QString& file, const QString& name);
/// Waits until the disk holds what a folder lists. Where the file system cannot do that, nothing happens.
void SyncFolder(const QString& folder);
/// The system's words for an error number.
QString SystemText(int number);

}  // namespace quarl::store::sql
