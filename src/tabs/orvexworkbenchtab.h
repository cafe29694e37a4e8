#pragma once

#include "orvexworkbenchglobal.h"

#include <QStringList>
#include <QTabWidget>

class ClassifyInterface;
class kelArchiveClientInterface;
class orvexclipboardchooser;

// The tab set inside the workbench dock: one tab per clipboard.
class ORVEXWORKBENCH_EXPORT orvexworkbenchtab : public QTabWidget
{
    Q_OBJECT

public:
    explicit orvexworkbenchtab(QWidget *parent = nullptr);
    ~orvexworkbenchtab() override;

    void setChooser(orvexclipboardchooser *chooser);
    void setArchiveClient(kelArchiveClientInterface *client);
    void setClassifyClient(ClassifyInterface *client);
    void updateData();
    void reloadData();
    void stop();

    orvexclipboardchooser *chooser() const { return m_chooser; }
    kelArchiveClientInterface *archiveClient() const { return m_archiveClient; }
    ClassifyInterface *classifyClient() const { return m_classifyClient; }

signals:
    void doCommand(QString command, QStringList args);

private slots:
    void reloadClipboards();

private:
    orvexclipboardchooser *m_chooser = nullptr;
    kelArchiveClientInterface *m_archiveClient = nullptr;
    ClassifyInterface *m_classifyClient = nullptr;
};
