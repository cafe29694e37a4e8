#pragma once

#include "tavlodocplugininterface.h"

class orvexclipboardchooser;
class orvexworkbenchdock;

// The plugin object the host loads: fixed identity, the host's clients and
// connection values, the workbench dock and the relay of the boards' commands.
class Orvexworkbenchplugin : public TavloDocPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ORVEX_IID_PREFIX "Orvexworkbenchplugin/0.1")
    Q_INTERFACES(TavloDocPluginInterface)

public:
    explicit Orvexworkbenchplugin(QObject *parent = nullptr);
    ~Orvexworkbenchplugin() override;

    QWidget *getDockWidget(QWidget *parent) override;
    QDialog *getDialog() override;
    QPixmap getPluginPixmap() override;
    QString getPluginName() override;
    int pluginType() override;
    QList<QAction *> getDocumentActions() override;
    QList<QAction *> getMenuActions() override;
    bool needsClassifyClient() override;
    bool needsArchiveClient() override;
    bool needsFulltextInfo() override;
    void setArchiveData(QString text1, int number, QString text3, QString text4, QString text5,
                        QString text6) override;
    void setArchiveClient(kelArchiveClientInterface *client) override;
    void setClassifyClient(ClassifyInterface *client) override;
    void setCurrentDocIds(QList<int> docIds, QList<int> docsIds) override;
    void setFieldData(QMap<int, QString> fields, QList<QVariant> values) override;
    QString neededRole() override;
    void setOptions(QMap<QString, QString> options) override;
    QMap<QString, QString> getOptions() override;
    bool hasConfigDialog() override;
    QString getVersion() override;
    QString getBuild() override;
    QString getInternalName() override;
    TavloDocPluginInterface *createInstance() override;
    QWidget *getHoverWidget() override;

public slots:
    void updateData() override;
    void updateFullTextInfo(QString info) override;
    void showConfigDialog() override;

private:
    orvexclipboardchooser *m_hoverWidget = nullptr;
    orvexworkbenchdock *m_dock = nullptr;
    kelArchiveClientInterface *m_archiveClient = nullptr;
    ClassifyInterface *m_classifyClient = nullptr;
    QString m_text1;
    int m_number = 0;
    QString m_text5;
    QString m_text3;
    QString m_text4;
    QString m_text6;
    bool m_connected = false;
    QList<QAction *> m_actions;
};
