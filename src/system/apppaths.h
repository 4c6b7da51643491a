#pragma once

#include <QString>

// Where the program keeps its files.
namespace AppPaths {
// The program's own folder.
QString programFolder();
// LinkList.lq beside the program when that folder is writable, else in the
// user's data folder.
QString linkListFile();
// The default download folder: "Sharing Downloads" in the user's home folder.
QString defaultDownloadDir();
// A per-user folder for the instance lock and the hand-over socket.
QString runtimeFolder();
} // namespace AppPaths
