#pragma once

#include "orvexworkbenchglobal.h"

#include <QDialog>
#include <QStringList>

class QListWidgetItem;
namespace Ui {
class dmsmailnames;
}

// Lets the user review and edit the file names of fetched documents before
// they are sent or copied. The extension a file came with cannot be removed:
// an edited name that does not end with it gets it appended again.
class ORVEXWORKBENCH_EXPORT dmsmailnames : public QDialog
{
    Q_OBJECT

public:
    // Each item holds the shown name and, under this role, the name it was given.
    static constexpr int InitialNameRole = Qt::UserRole + 1;

    explicit dmsmailnames(QWidget *parent = nullptr);
    ~dmsmailnames() override;

    // Shows the file name part of every path, in order.
    void setFileList(const QStringList &files);
    // The shown names, in list order.
    QStringList getFileList() const;

private slots:
    void itemChanged(QListWidgetItem *cur);

private:
    Ui::dmsmailnames *ui;
};
