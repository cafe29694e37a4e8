#include "calllog.h"

#include <QDeadlineTimer>

void CallLog::record(const QString &name, const QVariantList &args)
{
    QMutexLocker locker(&m_mutex);
    m_calls.append({name, args});
}

QList<CallLog::Call> CallLog::calls() const
{
    QMutexLocker locker(&m_mutex);
    return m_calls;
}

QStringList CallLog::names() const
{
    QMutexLocker locker(&m_mutex);
    QStringList result;
    for (const Call &call : m_calls)
        result << call.name;
    return result;
}

QList<CallLog::Call> CallLog::callsOf(const QString &name) const
{
    QMutexLocker locker(&m_mutex);
    QList<Call> result;
    for (const Call &call : m_calls)
        if (call.name == name)
            result << call;
    return result;
}

int CallLog::count(const QString &name) const
{
    return callsOf(name).size();
}

CallLog::Call CallLog::last(const QString &name) const
{
    const QList<Call> all = callsOf(name);
    return all.isEmpty() ? Call() : all.last();
}

void CallLog::clear()
{
    QMutexLocker locker(&m_mutex);
    m_calls.clear();
}

void CallLog::setFailing(const QString &name, bool on)
{
    QMutexLocker locker(&m_mutex);
    if (on)
        m_failing.insert(name);
    else
        m_failing.remove(name);
}

bool CallLog::isFailing(const QString &name) const
{
    QMutexLocker locker(&m_mutex);
    return m_failing.contains(name);
}

void CallLog::setShortRecords(const QString &name, bool on)
{
    QMutexLocker locker(&m_mutex);
    if (on)
        m_short.insert(name);
    else
        m_short.remove(name);
}

bool CallLog::isShort(const QString &name) const
{
    QMutexLocker locker(&m_mutex);
    return m_short.contains(name);
}

void CallLog::setStalled(const QString &name, bool on)
{
    QMutexLocker locker(&m_mutex);
    if (on)
        m_stalled.insert(name);
    else
        m_stalled.remove(name);
    m_changed.wakeAll();
}

void CallLog::release(const QString &name)
{
    setStalled(name, false);
}

bool CallLog::waitStalled(const QString &name, int timeoutMs)
{
    QMutexLocker locker(&m_mutex);
    QDeadlineTimer deadline(timeoutMs);
    while (m_inside.value(name) == 0) {
        if (!m_changed.wait(&m_mutex, deadline))
            return m_inside.value(name) > 0;
    }
    return true;
}

void CallLog::stallIfSet(const QString &name)
{
    QMutexLocker locker(&m_mutex);
    if (!m_stalled.contains(name))
        return;
    ++m_inside[name];
    m_changed.wakeAll();
    while (m_stalled.contains(name))
        m_changed.wait(&m_mutex);
    --m_inside[name];
}
