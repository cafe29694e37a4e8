#pragma once

#include "orvexworkbenchglobal.h"

#include <QDialog>
#include <QString>
#include <QStringList>

class ClassifyInterface;
namespace Ui {
class orvexcbrights;
}

// The modal "Clipboard Permissions" dialog: loads the server's roles, their
// display names and one clipboard's rights through the classification client,
// lets the user move roles between the edit, view and available lists, and
// hands the chosen rights back as role entries (role id U+FEFF "W" or "R").
// Storing them is the caller's business.
class ORVEXWORKBENCH_EXPORT orvexcbrights : public QDialog
{
    Q_OBJECT

public:
    orvexcbrights(const QString &clipboardId, ClassifyInterface *classifyClient,
                  QWidget *parent = nullptr);
    ~orvexcbrights() override;

    // Edit entries (role id U+FEFF "W") first, then view entries (role id U+FEFF "R").
    QStringList getRoles();
    // The edit entries only; empty means no role could edit the clipboard any more.
    QStringList getWriteRoles();

private:
    void loadRights();

    Ui::orvexcbrights *m_ui;
    ClassifyInterface *m_classifyClient; // borrowed from the host
    QString m_clipboardId;
};
