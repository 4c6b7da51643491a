#pragma once

#include <QObject>
#include <QTimer>

// A repeating timer that keeps the interval the program reasons with (1000,
// 50000, 60000 ms) apart from the period it really fires at. Normally both are
// the same; a test may map a logical interval to a short real period, so the
// 50- and 60-second timers run in milliseconds without changing a decision.
class LogicalTimer : public QObject
{
    Q_OBJECT
public:
    explicit LogicalTimer(QObject *parent = nullptr);

    void setInterval(int logicalMs);
    int interval() const { return m_interval; } // the logical interval
    void setSingleShot(bool singleShot);
    bool isEnabled() const { return m_timer.isActive(); }
    // Enabling a running timer leaves it running; disabling and enabling
    // again restarts its interval.
    void setEnabled(bool enabled);
    void start() { setEnabled(true); }
    void stop() { setEnabled(false); }

    // The real period for a logical interval, for the whole process.
    static void setRealPeriod(int logicalMs, int realMs);
    static void clearRealPeriods();
    // "60000=1500,1000=50": the form of TESSALWICK_TIMER_PERIODS, with which
    // tests run the whole program with short minutes. Bad entries are passed by.
    static void applyOverrides(const QString &overrides);
    static int realPeriod(int logicalMs);

signals:
    void timeout();

private:
    QTimer m_timer;
    int m_interval = 0;
};
