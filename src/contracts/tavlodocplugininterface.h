#pragma once

#include "orvexcontractsglobal.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QPixmap>
#include <QString>
#include <QStringList>
#include <QVariant>

class QAction;
class QDialog;
class QWidget;
class ClassifyInterface;
class kelArchiveClientInterface;

// The host's document-plugin interface. A host includes this header, loads a
// plugin library with QPluginLoader and casts the root object to it.
// The order of the virtual operations is part of the contract: a host built from
// this header and the plugin must agree on it.
class ORVEXCONTRACTS_EXPORT TavloDocPluginInterface : public QObject
{
    Q_OBJECT

public:
    explicit TavloDocPluginInterface(QObject *parent = nullptr) : QObject(parent) {}
    ~TavloDocPluginInterface() override = default;

    virtual QWidget *getDockWidget(QWidget *parent) = 0;
    virtual QDialog *getDialog() = 0;
    virtual QPixmap getPluginPixmap() = 0;
    virtual QString getPluginName() = 0;
    virtual int pluginType() = 0;
    virtual QList<QAction *> getDocumentActions() = 0;
    virtual QList<QAction *> getMenuActions() = 0;
    virtual bool needsClassifyClient() = 0;
    virtual bool needsArchiveClient() = 0;
    virtual bool needsFulltextInfo() = 0;
    virtual void setArchiveData(QString text1, int number, QString text3, QString text4,
                                QString text5, QString text6) = 0;
    virtual void setArchiveClient(kelArchiveClientInterface *client) = 0;
    virtual void setClassifyClient(ClassifyInterface *client) = 0;
    virtual void setCurrentDocIds(QList<int> docIds, QList<int> docsIds) = 0;
    virtual void setFieldData(QMap<int, QString> fields, QList<QVariant> values) = 0;
    virtual QString neededRole() = 0;
    virtual void setOptions(QMap<QString, QString> options) = 0;
    virtual QMap<QString, QString> getOptions() = 0;
    virtual bool hasConfigDialog() = 0;
    virtual QString getVersion() = 0;
    virtual QString getBuild() = 0;
    virtual QString getInternalName() = 0;
    virtual TavloDocPluginInterface *createInstance() = 0;
    virtual QWidget *getHoverWidget() = 0;

public slots:
    virtual void updateData() = 0;
    virtual void updateFullTextInfo(QString info) = 0;
    virtual void showConfigDialog() = 0;

signals:
    void requestCurrentDocIds();
    void refreshParent();
    void reloadProfile();
    void doCommand(QString command, QStringList args);
};

#define TavloDocPluginInterface_iid ORVEX_IID_PREFIX "TavloDocPluginInterface/1.0"
Q_DECLARE_INTERFACE(TavloDocPluginInterface, TavloDocPluginInterface_iid)
