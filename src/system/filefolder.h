#pragma once

#include <QString>

// The few file and folder operations the program uses. The path texts use the
// platform's separator ('/'); the name helpers are pure text operations and
// never look at the disk.
namespace FileFolder {
// True if the path names an existing file (a folder doesn't count).
bool fileExists(const QString &path);
// True if the path names an existing folder.
bool folderExists(const QString &path);
// Creates one folder whose parent already exists; false if it exists already
// or can't be made.
bool createFolder(const QString &path);
// Deletes a file. With force a read-only file goes too; without it a file that
// its owner may not write is left alone and false returned.
bool deleteFile(const QString &path, bool force = true);
// The folder part of a path: "/a/b.txt" -> "/a", "/a" -> "/", "b.txt" -> "".
// Separators at the end of the path are ignored.
QString parentFolderName(const QString &path);
// The last name of a path without its extension: "/a/b.tar.gz" -> "b.tar".
QString baseName(const QString &path);
// The extension of the last name, without its dot: "/a/b.tar.gz" -> "gz",
// "" when the name has no dot.
QString extensionName(const QString &path);
} // namespace FileFolder
