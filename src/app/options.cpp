#include "app/options.h"

#include "app/appcore.h"
#include "app/cregister.h"
#include "scheduling/numbertext.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdlib>

namespace {

const QString kTrue = QStringLiteral("true");

QString runValue()
{
    return CRegister().regGetSetting(CRegister::HKEY_LOCAL_MACHINE, Settings::sRunKey,
                                     Settings::sAppKeyName, QString());
}

QString trueFalse(bool on)
{
    return on ? kTrue : QStringLiteral("false");
}

} // namespace

namespace Options {

OptionsValues load()
{
    OptionsValues v;
    // Only the entry's presence counts, not the path in it.
    v.startAtLogOn = !runValue().isEmpty();
    // The browser switches count only as exactly "true".
    v.ie = Settings::get(QStringLiteral("IE"), QString()) == kTrue;
    v.fireFox = Settings::get(QStringLiteral("FireFox"), QString()) == kTrue;
    v.flock = Settings::get(QStringLiteral("Flock"), QString()) == kTrue;
    v.startDownload =
        NumberText::toInt32(Settings::get(QStringLiteral("StartAfterCatch"), QStringLiteral("0")));
    v.doNothing = Settings::toBool(Settings::get(QStringLiteral("DoNothing"), QStringLiteral("1")));
    return v;
}

void apply(const OptionsValues &values, AppCore &core, const Launcher &launch)
{
    const CRegister store;
    if (values.startAtLogOn)
        store.regSaveSetting(CRegister::HKEY_LOCAL_MACHINE, Settings::sRunKey,
                             Settings::sAppKeyName, autostartCommand());
    else
        store.regDeleteSetting(CRegister::HKEY_LOCAL_MACHINE, Settings::sRunKey,
                               Settings::sAppKeyName);
    Settings::save(QStringLiteral("IE"), trueFalse(values.ie));
    Settings::save(QStringLiteral("FireFox"), trueFalse(values.fireFox));
    Settings::save(QStringLiteral("Flock"), trueFalse(values.flock));
    Settings::save(QStringLiteral("StartAfterCatch"),
                   QString::number(std::abs(values.startDownload)));
    core.setStartAfterCatch(values.startDownload != 0);
    Settings::save(QStringLiteral("DoNothing"),
                   values.doNothing ? QStringLiteral("1") : QStringLiteral("0"));
    core.setDoNothing(values.doNothing);
    // The helper brings the browsers in line with the three switches; it
    // runs at every Ok, and a missing helper passes in silence.
    if (launch && QFileInfo(helperPath()).isExecutable())
        launch(helperPath(), {QStringLiteral("updateintegeration")});
}

QString autostartCommand()
{
    return QCoreApplication::applicationFilePath() + QStringLiteral(" /minimize");
}

QString helperPath()
{
    return QCoreApplication::applicationDirPath() +
           QStringLiteral("/TessalwickDownloadManagerHelper");
}

} // namespace Options
