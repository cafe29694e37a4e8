#pragma once

#include <QObject>

class QAction;

// Picks up the workbench's snackbar events (QSnackbarEvent), which it posts to
// the application object, and hands their texts on for a transient message.
class OrvexSnackbarFilter : public QObject
{
    Q_OBJECT

public:
    // Installs itself on the application object.
    explicit OrvexSnackbarFilter(QObject *parent = nullptr);
    ~OrvexSnackbarFilter() override;

    // How long a text stays: long enough to read it, never for good.
    static int displayMilliseconds(const QString &text);

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    // action: what the message offers ("Undo"), or null; while it exists the
    // message stands, whatever timeoutMs says.
    void snackbar(const QString &text, int timeoutMs, QAction *action);
};
