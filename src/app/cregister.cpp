#include "app/cregister.h"

#include "system/failure.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QStandardPaths>
#include <QTextStream>

namespace Settings {
const QString sAppKeyName = QStringLiteral("TessalwickDownloadManager");
const QString sApplicationKey = QStringLiteral("\\SOFTWARE\\") + sAppKeyName;
const QString sRunKey = QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run");

QString get(const QString &name, const QString &defaultValue)
{
    return CRegister().regGetSetting(CRegister::HKEY_LOCAL_MACHINE, sApplicationKey, name,
                                     defaultValue);
}

bool save(const QString &name, const QString &value)
{
    return CRegister().regSaveSetting(CRegister::HKEY_LOCAL_MACHINE, sApplicationKey, name, value);
}

bool toBool(const QString &text)
{
    const QString t = text.trimmed();
    if (t.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
        return true;
    if (t.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
        return false;
    bool ok = false;
    const double n = t.toDouble(&ok);
    if (!ok)
        throw RuntimeFailure("Type mismatch");
    return n != 0;
}
} // namespace Settings

namespace {

QString rootName(quint32 root)
{
    switch (root) {
    case CRegister::HKEY_CURRENT_USER:
        return QStringLiteral("HKEY_CURRENT_USER");
    case CRegister::HKEY_LOCAL_MACHINE:
        return QStringLiteral("HKEY_LOCAL_MACHINE");
    default:
        return QString();
    }
}

// The unnamed value of a section is stored under this key; a named value can't
// be called so, as names never begin with "@".
const QString kUnnamed = QStringLiteral("@Default");

QString valueKey(const QString &sKey)
{
    return sKey == QLatin1String("*") ? kUnnamed : sKey;
}

// QSettings takes "/" and "\" alike as group separators, so a section path
// becomes a group path; the value name is escaped by QSettings itself.
QString settingsPath(const QString &section, const QString &sKey)
{
    QString group = section;
    group.replace('\\', '/');
    return group + '/' + valueKey(sKey);
}

bool isAutostartValue(const QString &section, const QString &sKey)
{
    return section.compare(Settings::sRunKey, Qt::CaseInsensitive) == 0 &&
           sKey.compare(Settings::sAppKeyName, Qt::CaseInsensitive) == 0;
}

// A key path may not begin or end with a separator nor hold an empty name,
// as a registry key's may not; such a section is a failure.
bool validSection(const QString &section)
{
    return !section.startsWith('\\') && !section.endsWith('\\') &&
           !section.contains(QLatin1String("\\\\"));
}

std::unique_ptr<QSettings> openStore(quint32 root)
{
    const QString name = rootName(root);
    if (name.isEmpty())
        return nullptr;
    return std::make_unique<QSettings>(CRegister::storeFolder() + '/' + name + ".ini",
                                       QSettings::IniFormat);
}

QString readAutostart()
{
    QFile file(CRegister::autostartFile());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    QTextStream in(&file);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (line.startsWith(QLatin1String("Exec=")))
            return line.mid(5);
    }
    return QString();
}

bool writeAutostart(const QString &command)
{
    const QString path = CRegister::autostartFile();
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    QTextStream out(&file);
    out << "[Desktop Entry]\n"
        << "Type=Application\n"
        << "Name=Tessalwick\n"
        << "Comment=Download manager for file-sharing sites\n"
        << "Exec=" << command << "\n"
        << "X-GNOME-Autostart-enabled=true\n";
    out.flush();
    return file.commit();
}

} // namespace

QString CRegister::storeFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Tessalwick");
}

QString CRegister::autostartFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/TessalwickDownloadManager.desktop");
}

QString CRegister::normalisedSection(const QString &section)
{
    QString s = section;
    if (s.startsWith('\\'))
        s.remove(0, 1);
    if (s.endsWith('\\'))
        s.chop(1);
    return s;
}

QString CRegister::regGetSetting(quint32 regHKEY, const QString &sSection, const QString &sKey,
                                 const QString &sDefault) const
{
    const QString section = normalisedSection(sSection);
    QString value;
    if (regHKEY == HKEY_LOCAL_MACHINE && isAutostartValue(section, sKey)) {
        value = readAutostart();
    } else {
        auto store = validSection(section) ? openStore(regHKEY) : nullptr;
        if (!store || store->status() != QSettings::NoError)
            return sDefault;
        value = store->value(settingsPath(section, sKey)).toString();
    }
    return value.isEmpty() ? sDefault : value;
}

bool CRegister::regSaveSetting(quint32 regHKEY, const QString &sSection, const QString &sKey,
                               const QString &sValue) const
{
    const QString section = normalisedSection(sSection);
    if (regHKEY == HKEY_LOCAL_MACHINE && isAutostartValue(section, sKey))
        return writeAutostart(sValue);
    auto store = validSection(section) ? openStore(regHKEY) : nullptr;
    if (!store)
        return false;
    QDir().mkpath(storeFolder());
    if (!store->isWritable())
        return false;
    store->setValue(settingsPath(section, sKey), sValue);
    store->sync();
    return store->status() == QSettings::NoError;
}

bool CRegister::regDeleteSetting(quint32 regHKEY, const QString &sSection,
                                 const QString &sKey) const
{
    auto store = openStore(regHKEY);
    if (!store)
        return false;
    if (sKey.isEmpty()) {
        // The whole section, named as given.
        QString group = sSection;
        group.replace('\\', '/');
        if (group.isEmpty() || !store->childGroups().contains(group.section('/', 0, 0)) ||
            !store->isWritable())
            return false;
        store->remove(group);
        store->sync();
        return store->status() == QSettings::NoError;
    }
    const QString section = normalisedSection(sSection);
    if (regHKEY == HKEY_LOCAL_MACHINE && isAutostartValue(section, sKey))
        return QFile::remove(autostartFile());
    if (!validSection(section))
        return false;
    const QString path = settingsPath(section, sKey);
    if (!store->contains(path) || !store->isWritable())
        return false;
    store->remove(path);
    store->sync();
    return store->status() == QSettings::NoError;
}
