#pragma once

#include <QString>

// What the About dialog, Help and Update hand to the desktop.
namespace About {

// The maker's web address, shown in the About dialog and asked for updates.
extern const QString makerHost;

// major.minor.0.revision of the program's version.
QString versionText(int major, int minor, int revision);
QString versionText();
// The maker's page for this version: it decides what the user sees.
QString updateAddress(const QString &version);
// The user guide beside the program or in the documentation folder of the
// prefix it is installed under; empty when there is none.
QString helpFile();

} // namespace About
