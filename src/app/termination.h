#pragma once

#include <QObject>

class QSocketNotifier;

// Turns SIGTERM and SIGHUP into a Qt signal on the user-interface thread, so
// the list can be saved before the process ends (a log-out, a kill, a shutdown).
class TerminationWatcher : public QObject
{
    Q_OBJECT
public:
    explicit TerminationWatcher(QObject *parent = nullptr);
    ~TerminationWatcher() override;

signals:
    void terminationRequested(int signalNumber);

private:
    QSocketNotifier *m_notifier = nullptr;
};
