#pragma once

#include <QString>

// The words of a row's Status that the program decides by. They are compared
// as they stand, so every writer and reader takes them from here.
namespace StatusText {
inline const QString Waiting = QStringLiteral("Waiting");
inline const QString Starting = QStringLiteral("Starting...");
inline const QString Connecting = QStringLiteral("Connecting...");
inline const QString Complete = QStringLiteral("Complete");
inline const QString Stopped = QStringLiteral("Stopped");
inline const QString Error = QStringLiteral("Error");
inline const QString ConnectionError = QStringLiteral("Connection Error");
inline const QString NotFound = QStringLiteral("Not Found");
} // namespace StatusText
