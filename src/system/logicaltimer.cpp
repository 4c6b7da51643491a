#include "system/logicaltimer.h"

#include <QHash>

namespace {
// Logical interval -> real period, for the whole process. Empty in the
// program; tests fill it so long waits pass in milliseconds.
QHash<int, int> &realPeriods()
{
    static QHash<int, int> periods;
    return periods;
}
} // namespace

LogicalTimer::LogicalTimer(QObject *parent) : QObject(parent)
{
    connect(&m_timer, &QTimer::timeout, this, &LogicalTimer::timeout);
}

void LogicalTimer::setInterval(int logicalMs)
{
    m_interval = logicalMs;
    // Setting the interval of a running timer restarts it, as QTimer does.
    m_timer.setInterval(realPeriod(logicalMs));
}

void LogicalTimer::setSingleShot(bool singleShot)
{
    m_timer.setSingleShot(singleShot);
}

void LogicalTimer::setEnabled(bool enabled)
{
    if (!enabled) {
        m_timer.stop();
        return;
    }
    if (m_timer.isActive())
        return;
    // The real period is looked up at each start, so a mapping set by a test
    // reaches timers that already exist.
    m_timer.start(realPeriod(m_interval));
}

void LogicalTimer::setRealPeriod(int logicalMs, int realMs)
{
    realPeriods().insert(logicalMs, realMs);
}

void LogicalTimer::applyOverrides(const QString &overrides)
{
    for (const QString &entry : overrides.split(u',', Qt::SkipEmptyParts)) {
        bool logicalOk = false, realOk = false;
        const int logical = entry.section(u'=', 0, 0).trimmed().toInt(&logicalOk);
        const int real = entry.section(u'=', 1, 1).trimmed().toInt(&realOk);
        if (logicalOk && realOk && logical > 0 && real > 0)
            setRealPeriod(logical, real);
    }
}

void LogicalTimer::clearRealPeriods()
{
    realPeriods().clear();
}

int LogicalTimer::realPeriod(int logicalMs)
{
    return realPeriods().value(logicalMs, logicalMs);
}
