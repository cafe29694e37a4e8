#include "e2einput.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProcess>
#include <QThread>
#include <QtMath>

namespace {
constexpr int kStepPixels = 20;
constexpr int kStepMs = 12;
} // namespace

E2eInput::E2eInput(const QProcessEnvironment &desktop)
    : m_env(desktop)
    , m_slowMs(qEnvironmentVariableIntValue("ORVEX_E2E_SLOW"))
{
}

bool E2eInput::xdotool(const QStringList &arguments)
{
    QProcess process;
    process.setProcessEnvironment(m_env);
    process.start(QStringLiteral("xdotool"), arguments);
    const bool done = process.waitForFinished(30000) && process.exitCode() == 0;
    if (!done)
        qWarning("xdotool %s failed: %s", qPrintable(arguments.join(QLatin1Char(' '))),
                 process.readAllStandardError().constData());
    return done;
}

void E2eInput::pause(int ms)
{
    // The test process itself has nothing to do meanwhile, but its own
    // events (D-Bus replies) keep flowing.
    QDeadlineTimer deadline(ms);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(qMin<qint64>(5, qMax<qint64>(0, deadline.remainingTime())));
    }
}

void E2eInput::move(QPoint to)
{
    to = QPoint(qMax(0, to.x()), qMax(0, to.y()));
    xdotool({QStringLiteral("mousemove"), QString::number(to.x()), QString::number(to.y())});
    m_position = to;
    pause(m_slowMs);
}

void E2eInput::press(int button)
{
    xdotool({QStringLiteral("mousedown"), QString::number(button)});
    pause(m_slowMs);
}

void E2eInput::release(int button)
{
    xdotool({QStringLiteral("mouseup"), QString::number(button)});
    pause(m_slowMs);
}

void E2eInput::click(QPoint at, int button)
{
    move(at);
    pause(50);
    xdotool({QStringLiteral("click"), QString::number(button)});
    pause(m_slowMs + 50);
}

void E2eInput::doubleClick(QPoint at)
{
    move(at);
    pause(50);
    xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"), QStringLiteral("--delay"),
             QStringLiteral("80"), QStringLiteral("1")});
    pause(m_slowMs + 50);
}

void E2eInput::moveHeld(QPoint to, int holdMs)
{
    // One xdotool run for the whole motion: steps at a hand's pace (about
    // 1500 pixels a second), then holding still, which a hand never quite
    // does: a drag loop needs motion to notice the target under it.
    const auto at = [](QPoint p) {
        return QStringList{QStringLiteral("mousemove"), QString::number(qMax(0, p.x())), QString::number(qMax(0, p.y()))};
    };
    const auto sleep = [](int ms) { return QStringList{QStringLiteral("sleep"), QString::number(ms / 1000.0, 'f', 3)}; };
    const QPoint from = m_position;
    const QPoint delta = to - from;
    const int steps = qMax(3, int(qSqrt(qreal(delta.x()) * delta.x() + qreal(delta.y()) * delta.y()) / kStepPixels));
    QStringList arguments;
    for (int i = 1; i <= steps; ++i)
        arguments << at(from + delta * i / steps) << sleep(kStepMs);
    for (int held = 0, wiggle = 1; held < holdMs; held += 60, wiggle = -wiggle)
        arguments << sleep(60) << at(to + QPoint(wiggle, 0));
    arguments << at(to);
    xdotool(arguments);
    m_position = to;
    pause(m_slowMs);
}

void E2eInput::drag(QPoint from, QPoint to, int holdMs, bool releaseAtEnd)
{
    move(from);
    pause(80);
    press();
    pause(80);
    // A few short steps first: the drag starts once the start distance is passed.
    moveHeld(from + QPoint(4, 4), 0);
    moveHeld(from + QPoint(16, 8), 100);
    moveHeld(to, holdMs);
    if (releaseAtEnd) {
        release();
        pause(100);
    }
}

void E2eInput::dropAt(QPoint where, int holdMs)
{
    moveHeld(where, holdMs);
    release();
    pause(100);
}

void E2eInput::key(const QString &keys)
{
    xdotool({QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("40"), keys});
    pause(m_slowMs + 30);
}

void E2eInput::keyDown(const QString &keyName)
{
    xdotool({QStringLiteral("keydown"), keyName});
    pause(m_slowMs + 30);
}

void E2eInput::keyUp(const QString &keyName)
{
    xdotool({QStringLiteral("keyup"), keyName});
    pause(m_slowMs + 30);
}

void E2eInput::type(const QString &text)
{
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"), text});
    pause(m_slowMs + 30);
}
