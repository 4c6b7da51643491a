#include "app/notifier.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace Notifier {

bool notify(const QString &title, const QString &text, int milliseconds)
{
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface() || !bus.interface()->isServiceRegistered(service))
        return false;
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"),
                                       service, QStringLiteral("Notify"));
    call.setArguments({QStringLiteral("Tessalwick"), 0u,
                       QStringLiteral("net.tessalwick.Tessalwick"), title, text, QStringList(),
                       QVariantMap(), milliseconds});
    // No answer is waited for: a balloon never holds the program up.
    return bus.send(call);
}

} // namespace Notifier
