#pragma once

#include <QString>

// The settings store: named text values in sections under a root key. One INI
// file per root key in the user's config folder. Section names may carry a
// leading and a trailing backslash; "*" names the section's unnamed value.
// Reads give the default on any failure or for an empty value; writes and
// deletes give false on failure. The value "TessalwickDownloadManager" of the
// run-at-log-on section is the desktop's autostart entry instead.
class CRegister
{
public:
    enum RootKey : quint32 {
        HKEY_CURRENT_USER = 0x80000001u,
        HKEY_LOCAL_MACHINE = 0x80000002u,
    };

    bool regDeleteSetting(quint32 regHKEY, const QString &sSection, const QString &sKey) const;
    QString regGetSetting(quint32 regHKEY, const QString &sSection, const QString &sKey,
                          const QString &sDefault) const;
    bool regSaveSetting(quint32 regHKEY, const QString &sSection, const QString &sKey,
                        const QString &sValue) const;

    // Where the stores live: the user's config folder followed by "Tessalwick".
    static QString storeFolder();
    static QString autostartFile();

private:
    static QString normalisedSection(const QString &section);
};

// The application's own section and the run-at-log-on section.
namespace Settings {
extern const QString sApplicationKey; // "\SOFTWARE\TessalwickDownloadManager"
extern const QString sRunKey;         // "SOFTWARE\Microsoft\Windows\CurrentVersion\Run"
extern const QString sAppKeyName;     // "TessalwickDownloadManager"
QString get(const QString &name, const QString &defaultValue);
bool save(const QString &name, const QString &value);
// "0", "1", "True", "False" (any case) and other numbers, as the settings hold
// them. Any other text is a run-time failure ("Type mismatch").
bool toBool(const QString &text);
} // namespace Settings
