#pragma once

#include <QString>

// The desktop's notification service (org.freedesktop.Notifications on the
// session bus), where balloons go on a desktop without a tray.
namespace Notifier {
// True when the service took the notification; false when none runs.
bool notify(const QString &title, const QString &text, int milliseconds);
} // namespace Notifier
