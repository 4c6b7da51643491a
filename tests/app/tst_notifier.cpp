// Balloons without a tray go to the desktop's notification service: against
// a session bus of the test's own, with a recording service on it.
#include "app/notifier.h"

#include <QDBusConnection>
#include <QProcess>
#include <QtTest>

class Recorder : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QList<QVariantList> calls;
public slots:
    void Notify(const QString &app, uint replaces, const QString &icon, const QString &summary,
                const QString &body, const QStringList &, const QVariantMap &, int timeout)
    {
        calls << QVariantList{app, replaces, icon, summary, body, timeout};
    }
};

class TestNotifier : public QObject
{
    Q_OBJECT
private slots:
    void toTheSessionBus()
    {
        QProcess daemon;
        daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        if (!daemon.waitForStarted())
            QSKIP("no dbus-daemon on this machine");
        QVERIFY(daemon.waitForReadyRead(5000));
        qputenv("DBUS_SESSION_BUS_ADDRESS", daemon.readLine().trimmed());

        // No service yet: nothing takes it.
        QVERIFY(!Notifier::notify("Title", "Text", 3000));

        auto service = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "service");
        Recorder recorder;
        QVERIFY(service.registerObject("/org/freedesktop/Notifications", &recorder,
                                       QDBusConnection::ExportAllSlots));
        QVERIFY(service.registerService("org.freedesktop.Notifications"));
        QVERIFY(Notifier::notify("Title", "Text", 3000));
        QTRY_COMPARE(recorder.calls,
                     (QList<QVariantList>{
                         {"Tessalwick", 0u, "net.tessalwick.Tessalwick", "Title", "Text", 3000}}));
        daemon.kill();
        daemon.waitForFinished();
    }
};

QTEST_GUILESS_MAIN(TestNotifier)
#include "tst_notifier.moc"
