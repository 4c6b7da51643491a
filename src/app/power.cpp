#include "app/power.h"

#include <QDBusConnection>
#include <QDBusMessage>

void LogindPower::shutdownWindows(int iMode)
{
    QString method;
    QVariantList arguments;
    switch (iMode) {
    case LogOff:
        method = QStringLiteral("TerminateSession");
        arguments << qEnvironmentVariable("XDG_SESSION_ID");
        break;
    case ShutDown:
    case PowerOff:
        method = QStringLiteral("PowerOff");
        arguments << false; // not interactive: no question to the user
        break;
    case Restart:
        method = QStringLiteral("Reboot");
        arguments << false;
        break;
    default:
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), method);
    call.setArguments(arguments);
    // The answer isn't waited for: the program ends while the system goes down.
    QDBusConnection::systemBus().call(call, QDBus::NoBlock);
}
