#pragma once

#include <QPoint>
#include <QProcessEnvironment>
#include <QString>

// Real input on an E2eDesktop, through the X server's test extension
// (xdotool): what a user's mouse and keyboard send, nothing else. Every
// action waits until xdotool has sent it; a drag moves in small steps with
// short pauses, as a hand does, so that the programs' drag loops see motion.
//
// ORVEX_E2E_SLOW=<ms> adds that many milliseconds after each action, to watch.
class E2eInput
{
public:
    explicit E2eInput(const QProcessEnvironment &desktop);

    void move(QPoint to);
    void press(int button = 1);
    void release(int button = 1);
    void click(QPoint at, int button = 1);
    void doubleClick(QPoint at);
    // Press at from, move to to in steps, keep the button held holdMs at to
    // (still moving a pixel to and fro, as a hand does), then release unless
    // release is false (to drop later with dropAt()).
    void drag(QPoint from, QPoint to, int holdMs = 300, bool release = true);
    // Moves on to where while the button is still held, then releases there.
    void dropAt(QPoint where, int holdMs = 300);
    // Moves the held mouse to where in steps and stays there holdMs.
    void moveHeld(QPoint to, int holdMs);
    // Keys in xdotool's names: "Return", "Escape", "ctrl+a", "Tab".
    void key(const QString &keys);
    void keyDown(const QString &key);
    void keyUp(const QString &key);
    // Types ASCII text. xdotool sends other characters by remapping a spare
    // key for each, which a program may read after the mapping is undone:
    // such characters get lost now and then, so tests type plain ASCII.
    void type(const QString &text);
    QPoint position() const { return m_position; }

private:
    bool xdotool(const QStringList &arguments);
    void pause(int ms);

    QProcessEnvironment m_env;
    QPoint m_position;
    int m_slowMs = 0;
};
