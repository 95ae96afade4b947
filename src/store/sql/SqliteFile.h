#pragma once

#include <QString>

namespace quarl::store::sql {

class SqliteConnection;

/// Marks a file as a store of ours ("Qurl"; SQLite's application id).
inline constexpr qint32 kApplicationId = 0x5175726c;

/// The file that a path stands for: symbolic links are followed, also to one that is missing. SQLite keeps the logs of
/// a database beside this file, not beside a link.
QString RealFile(const QString& path);
enum class FileState { Missing, Present };
/// Throws SqlError for anything that is neither a file nor missing, or cannot be looked at.
/// @param subject what the message is about, as its beginning
FileState StateOf(const QString& path, const QString& subject);
/// True for a file of no bytes. Throws SqlError when the file has another beginning than a whole store of ours.
/// Looks at the file through the connection alone: a second descriptor, once closed, would take the locks of every
/// connection of this program away.
bool IsEmptyOrOurs(SqliteConnection& connection, const QString& path);
/// Throws SqlError when the content of a file with the right beginning is damaged or newer than this program.
/// @param check "quick_check" or "integrity_check"
void CheckContent(SqliteConnection& connection, const char* check);
/// A log of a database lies beside the file, with or without changes in it.
bool HasCompanion(const QString& path);
/// Changes that wait in the write-ahead log beside the file.
bool HasWaitingLog(const QString& path);
/// The same, or changes that the rollback journal beside the file takes back.
bool HasUnfinishedLog(const QString& path);

}  // namespace quarl::store::sql
