#pragma once

#include <QString>

// Display texts of sizes and times, and safe, free local file names. The list
// fields hold exactly what these return, odd edges included.
QString sizeToText(qint64 bytes);
float textToSize(QString text);
QString secondsToTimeText(float seconds);
QString cleanFileName(const QString &name);
// Creates the folder with its missing parents; false for fewer than three
// characters or when a folder can't be made.
bool makeFolderPath(const QString &path);
// The path itself when the file is missing or empty, else the next free name.
QString uniqueLocalFileName(const QString &path);
