#pragma once

#include "orvexworkbenchglobal.h"

#include <QDialog>
#include <QStringList>

class QSettings;
namespace Ui {
class orvexLoginDialog;
}

// The small modal dialog in which the user picks a connection profile by name.
// It remembers the last choice and, when asked to, its own geometry.
class ORVEXWORKBENCH_EXPORT orvexLoginDialog : public QDialog
{
    Q_OBJECT

public:
    explicit orvexLoginDialog(QWidget *parent = nullptr, bool rememberGeometry = false);
    ~orvexLoginDialog() override;

    void setProfiles(QStringList names);
    int getProfileIndex() const;

public slots:
    int exec() override;
    void accept() override;
    void reject() override;

protected:
    void changeEvent(QEvent *event) override;

private:
    void storeGeometry();

    bool m_rememberGeometry;
    Ui::orvexLoginDialog *ui;
    QSettings *m_settings;
};
