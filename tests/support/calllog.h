#pragma once

#include <QList>
#include <QMutex>
#include <QSet>
#include <QSemaphore>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QWaitCondition>

// What a recording double was asked, in order, with the arguments as variants,
// plus the switches that make an operation fail, answer short records or stall.
// Thread-safe: boards call their clients from work-pool threads.
class CallLog
{
public:
    struct Call
    {
        QString name;
        QVariantList args;
    };

    void record(const QString &name, const QVariantList &args = {});
    QList<Call> calls() const;
    QStringList names() const;            // operation names in call order
    QList<Call> callsOf(const QString &name) const;
    int count(const QString &name) const;
    Call last(const QString &name) const; // empty Call when never called
    void clear();

    // An operation set to fail answers false or an empty result.
    void setFailing(const QString &name, bool on = true);
    bool isFailing(const QString &name) const;
    // An operation set to answer short records leaves out fields.
    void setShortRecords(const QString &name, bool on = true);
    bool isShort(const QString &name) const;
    // A stalled operation blocks its caller until release(); waitStalled() lets
    // a test wait until a caller is inside.
    void setStalled(const QString &name, bool on = true);
    void release(const QString &name);
    bool waitStalled(const QString &name, int timeoutMs = 5000);
    void stallIfSet(const QString &name);

private:
    mutable QMutex m_mutex;
    QWaitCondition m_changed;
    QList<Call> m_calls;
    QSet<QString> m_failing;
    QSet<QString> m_short;
    QSet<QString> m_stalled;
    QMap<QString, int> m_inside;
};
