#pragma once

#include "orvexarchive.h"

#include <QMap>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class ClassifyInterface;
class OrvexArchiveWorker;
class QWidget;

// Carries out the commands the workbench raises (doCommand): "OPENDOC" opens a
// document in the desktop's viewer, "SHOWCLASSIFICATION" shows a card's fields,
// "EXPORTDOCS" copies a clipboard's documents into a folder the user picks and
// "MAILDOCS" hands them to the mail program as attachments.
//
// Commands name clipboard cards (entry ids); the classification client tells
// which document a card holds. Documents come through an archive worker with a
// client of its own, loaded from the archive's client library and logged in
// with the host's connection values: the workbench's boards reset the host's
// client when they close, and the progress and Cancel of one export must not
// reach the boards' thumbnail traffic on the host's client.
class OrvexHostCommands : public QObject
{
    Q_OBJECT

public:
    // Answers the folder question: (parent, title, start folder) -> folder, empty = canceled.
    using FolderChooser = std::function<QString(QWidget *, const QString &, const QString &)>;
    // Host settings (organisation and application of the host).
    static constexpr const char *MailCommandKey = "mail/command"; // "%1" = the quoted attachments
    static constexpr const char *ExportFolderKey = "export/lastFolder";

    OrvexHostCommands(ClassifyInterface *classifyClient, const OrvexConnectionValues &connection,
                      QWidget *window);
    ~OrvexHostCommands() override;

    static bool isKnown(const QString &command);
    // What the command asks for, in the user's words ("Open document 12").
    static QString describe(const QString &command, const QStringList &args);

    void setFolderChooser(FolderChooser chooser);
    OrvexArchiveWorker *worker() const { return m_worker.get(); }

public slots:
    // True when the command was carried out or, for opening and mailing, the
    // documents were handed to the desktop's program; whether that program
    // worked follows as a message. Every failure is told to the user.
    bool carryOut(const QString &command, const QStringList &args);

signals:
    // The outcome of a command, for the status bar.
    void message(const QString &text);

private:
    struct Documents
    {
        QList<qlonglong> docIds;
        QList<qlonglong> docsIds;
        QMap<QString, QString> remarks;
        QStringList unknownCards;
    };

    bool openDocument(const QStringList &args);
    bool showClassification(const QStringList &args);
    bool exportDocuments(const QStringList &cardIds);
    bool mailDocuments(const QStringList &cardIds);

    // The card's fields, empty when the archive does not know the card.
    QStringList cardFields(const QString &cardId) const;
    // The cards' documents, each once, in the order of the cards.
    Documents documentsOf(const QStringList &cardIds) const;
    bool haveDocuments(const Documents &documents, const QStringList &cardIds);
    QList<QPair<QString, QString>> classificationRows(const QStringList &fields) const;
    bool connectWorker();
    // Tells success, or fails with title, once each program the worker has
    // just started has shown whether it works.
    void reportLaunches(const QString &title, const QString &success);
    bool isOffline() const;
    // Tells the user why nothing or not everything was done; returns false.
    bool fail(const QString &title, const QString &text);
    QString withUnknownCards(const QString &text, const Documents &documents) const;

    ClassifyInterface *m_classify;
    OrvexConnectionValues m_connection;
    QPointer<QWidget> m_window;
    std::unique_ptr<OrvexArchiveWorker> m_worker;
    bool m_connected = false;
    FolderChooser m_chooseFolder;
};
