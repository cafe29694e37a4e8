#pragma once

#include "orvexworkbenchglobal.h"

#include <QDockWidget>
#include <QStringList>

class ClassifyInterface;
class kelArchiveClientInterface;
class orvexclipboardchooser;
class orvexworkbenchtab;
namespace Ui {
class orvexworkbenchdock;
}

// The dock the plugin hands to the host: a thin frame around the clipboard tab
// set that forwards the plugin's calls down and the boards' host commands up.
class ORVEXWORKBENCH_EXPORT orvexworkbenchdock : public QDockWidget
{
    Q_OBJECT

public:
    explicit orvexworkbenchdock(QWidget *parent = nullptr);
    ~orvexworkbenchdock() override;

    void setChooser(orvexclipboardchooser *chooser);
    void updateData();
    void reloadData();
    void setArchiveClient(kelArchiveClientInterface *client);
    void setClassifyClient(ClassifyInterface *client);

    orvexworkbenchtab *tabWidget() const;

signals:
    void doCommand(QString command, QStringList args);

private:
    Ui::orvexworkbenchdock *ui;
};
