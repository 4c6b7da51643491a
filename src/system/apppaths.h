#pragma once

#include <QString>

// Where the program keeps its files.
namespace AppPaths {
// LinkList.lq in the user's data folder ($XDG_DATA_HOME/Tessalwick).
QString linkListFile();
// The default download folder: "Sharing Downloads" in the user's home folder.
QString defaultDownloadDir();
// A per-user folder for the instance lock and the hand-over socket.
QString runtimeFolder();
} // namespace AppPaths
