// Balloons without a tray go to the desktop's notification service: against
// a session bus of the test's own, with a recording service on it.
#include "app/notifier.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QtTest>

class Recorder : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QStringList calls;
public slots:
    uint Notify(const QString &app, uint replaces, const QString &icon, const QString &summary,
                const QString &body, const QStringList &, const QVariantMap &, int timeout)
    {
        calls << QStringList{app,  QString::number(replaces), icon, summary,
                             body, QString::number(timeout)}
                     .join('|');
        return 1;
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
        const QString address = QString(daemon.readLine()).trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toLocal8Bit());

        // No service yet: nothing takes it.
        QVERIFY(!Notifier::notify("Tessalwick", "3 Links Added", 3000));

        QDBusConnection service = QDBusConnection::connectToBus(address, "service");
        Recorder recorder;
        QVERIFY(service.registerObject("/org/freedesktop/Notifications", &recorder,
                                       QDBusConnection::ExportAllSlots));
        QVERIFY(service.registerService("org.freedesktop.Notifications"));
        QVERIFY(Notifier::notify("Tessalwick", "3 Links Added", 3000));
        QTRY_COMPARE(recorder.calls,
                     QStringList{"Tessalwick|0|net.tessalwick.Tessalwick|Tessalwick|3 Links "
                                 "Added|3000"});
        QDBusConnection::disconnectFromBus("service");
        daemon.kill();
        daemon.waitForFinished();
    }
};

QTEST_GUILESS_MAIN(TestNotifier)
#include "tst_notifier.moc"
