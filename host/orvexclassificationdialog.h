#pragma once

#include <QDialog>
#include <QList>
#include <QPair>
#include <QString>

namespace Ui {
class OrvexClassificationDialog;
}

// Shows the classification of one document: its fields as name and value rows.
class OrvexClassificationDialog : public QDialog
{
    Q_OBJECT

public:
    explicit OrvexClassificationDialog(QWidget *parent = nullptr);
    ~OrvexClassificationDialog() override;

    void setHeading(const QString &heading);
    void setFields(const QList<QPair<QString, QString>> &fields);
    QList<QPair<QString, QString>> fields() const;

private:
    Ui::OrvexClassificationDialog *ui;
};
