#include "orvexhostcommands.h"

#include "classifyinterface.h"
#include "orvexarchiveworker.h"
#include "orvexclassificationdialog.h"
#include "orvexlauncher.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QSettings>
#include <QStandardPaths>

Q_LOGGING_CATEGORY(lcCommands, "orvex.host")

namespace {

const QChar kFieldSeparator(0xFEFF);

// Card fields as the archive's classification client gives them.
enum CardField { DocIdField, DocsIdField, TitleField, TypeField, DateField, FileNameField, StatusField, PagesField };
constexpr int kMinimumCardFields = 5; // fewer: nothing to show

QString argumentAt(const QStringList &args, int index)
{
    return index < args.size() ? args.at(index) : QString();
}

// A positive decimal id, else 0.
qlonglong positiveId(const QString &text)
{
    bool ok = false;
    const qlonglong id = text.trimmed().toLongLong(&ok);
    return ok && id > 0 ? id : 0;
}

// key -> name of a type or status table ("key U+FEFF name" rows).
QString nameOf(const QStringList &rows, const QString &key)
{
    for (const QString &row : rows) {
        if (row.section(kFieldSeparator, 0, 0) == key)
            return row.section(kFieldSeparator, 1);
    }
    return key;
}

} // namespace

OrvexHostCommands::OrvexHostCommands(ClassifyInterface *classifyClient, const OrvexConnectionValues &connection,
                                     QWidget *window)
    : QObject(window)
    , m_classify(classifyClient)
    , m_connection(connection)
    , m_window(window)
    , m_worker(new OrvexArchiveWorker)
    , m_chooseFolder([](QWidget *parent, const QString &title, const QString &start) {
        return QFileDialog::getExistingDirectory(parent, title, start);
    })
{
    m_worker->setParentWidget(window);
    m_worker->setConnectionSettings(connection.server, connection.port, connection.login1, connection.login2,
                                    connection.login3);
}

OrvexHostCommands::~OrvexHostCommands() = default;

bool OrvexHostCommands::isKnown(const QString &command)
{
    static const QStringList known = {QStringLiteral("OPENDOC"), QStringLiteral("SHOWCLASSIFICATION"),
                                      QStringLiteral("EXPORTDOCS"), QStringLiteral("MAILDOCS")};
    return known.contains(command);
}

QString OrvexHostCommands::describe(const QString &command, const QStringList &args)
{
    if (command == QLatin1String("OPENDOC"))
        return tr("Open document %1").arg(argumentAt(args, 0));
    if (command == QLatin1String("SHOWCLASSIFICATION"))
        return tr("Show the classification of card %1").arg(argumentAt(args, 0));
    if (command == QLatin1String("EXPORTDOCS"))
        return tr("Export %n document(s)", nullptr, args.size());
    if (command == QLatin1String("MAILDOCS"))
        return tr("Mail %n document(s)", nullptr, args.size());
    if (args.isEmpty())
        return tr("Unknown command %1").arg(command);
    return tr("Unknown command %1 (%2)").arg(command, args.join(QStringLiteral(", ")));
}

void OrvexHostCommands::setFolderChooser(FolderChooser chooser)
{
    m_chooseFolder = std::move(chooser);
}

bool OrvexHostCommands::carryOut(const QString &command, const QStringList &args)
{
    if (command == QLatin1String("OPENDOC"))
        return openDocument(args);
    if (command == QLatin1String("SHOWCLASSIFICATION"))
        return showClassification(args);
    if (command == QLatin1String("EXPORTDOCS"))
        return exportDocuments(args);
    if (command == QLatin1String("MAILDOCS"))
        return mailDocuments(args);
    emit message(describe(command, args));
    return false;
}

QStringList OrvexHostCommands::cardFields(const QString &cardId) const
{
    if (!m_classify || !positiveId(cardId))
        return {};
    const QStringList fields = m_classify->getCardInfo(cardId.trimmed(), QString());
    if (fields.size() < kMinimumCardFields || !positiveId(fields.at(DocIdField)))
        return {};
    return fields;
}

OrvexHostCommands::Documents OrvexHostCommands::documentsOf(const QStringList &cardIds) const
{
    Documents documents;
    for (const QString &cardId : cardIds) {
        const QStringList fields = cardFields(cardId);
        if (fields.isEmpty()) {
            documents.unknownCards << cardId;
            continue;
        }
        // A document on two cards is fetched once: the second copy would only
        // ask to overwrite the first.
        const qlonglong docId = positiveId(fields.at(DocIdField));
        if (documents.docIds.contains(docId))
            continue;
        documents.docIds << docId;
        documents.docsIds << positiveId(cardId);
        // The title names the file when the archive knows no file name.
        documents.remarks.insert(QString::number(docId), fields.value(TitleField));
    }
    return documents;
}

bool OrvexHostCommands::haveDocuments(const Documents &documents, const QStringList &cardIds)
{
    if (cardIds.isEmpty()) {
        emit message(tr("The clipboard holds no documents."));
        return false;
    }
    if (!documents.docIds.isEmpty())
        return true;
    return fail(tr("Unknown card"), tr("The archive knows no document for the card(s) %1.")
                                        .arg(documents.unknownCards.join(QStringLiteral(", "))));
}

QString OrvexHostCommands::withUnknownCards(const QString &text, const Documents &documents) const
{
    if (documents.unknownCards.isEmpty())
        return text;
    return text + QLatin1Char(' ')
        + tr("Skipped %n card(s) the archive does not know: %1.", nullptr, documents.unknownCards.size())
              .arg(documents.unknownCards.join(QStringLiteral(", ")));
}

bool OrvexHostCommands::connectWorker()
{
    if (m_connected)
        return true;
    // The worker takes the archive name only through selectArchive, which also
    // connects; doConnect then tells whether the whole chain holds.
    m_worker->selectArchive(m_connection.archiveName);
    m_connected = m_worker->doConnect(false);
    if (!m_connected) {
        qCWarning(lcCommands).noquote() << "ARCHIVE WORKER NOT CONNECTED" << m_worker->getLastError();
        fail(tr("Archive"), tr("The archive could not be reached: %1").arg(m_worker->getLastError()));
    }
    return m_connected;
}

bool OrvexHostCommands::isOffline() const
{
    return m_classify && m_classify->getConnectionMode().startsWith(QLatin1String("Offline"));
}

bool OrvexHostCommands::fail(const QString &title, const QString &text)
{
    qCWarning(lcCommands).noquote() << "COMMAND FAILED" << text;
    emit message(text);
    QMessageBox::warning(m_window, title, text);
    return false;
}

bool OrvexHostCommands::openDocument(const QStringList &args)
{
    const QString cardId = argumentAt(args, 2);
    qlonglong docId = positiveId(argumentAt(args, 0));
    if (!docId) {
        const QStringList fields = cardFields(cardId);
        docId = fields.isEmpty() ? 0 : positiveId(fields.at(DocIdField));
    }
    if (!docId) {
        return fail(tr("Open document"), tr("The archive knows no document %1 (card %2).")
                                             .arg(argumentAt(args, 0), cardId));
    }
    if (!connectWorker())
        return false;
    const qlonglong docsId = positiveId(cardId);
    QMap<QString, QString> remarks{{QString::number(docId), argumentAt(args, 1)}};
    QStringList opened;
    if (!m_worker->exportDocuments({docId}, {docsId ? docsId : -1}, {}, remarks, QString(), true, opened, -1,
                                   isOffline(), true, false, QString())) {
        if (m_worker->isCanceled()) {
            emit message(tr("Opening document %1 was canceled.").arg(docId));
            return false;
        }
        return fail(tr("Open document"),
                    tr("The document %1 could not be opened: %2").arg(docId).arg(m_worker->getLastError()));
    }
    const QString name = QFileInfo(opened.value(0)).fileName();
    emit message(tr("Opening %1 in the viewer...").arg(name));
    reportLaunches(tr("Open document"), tr("Opened %1 in the viewer.").arg(name));
    return true;
}

void OrvexHostCommands::reportLaunches(const QString &title, const QString &success)
{
    for (OrvexLauncher *launcher : m_worker->launches()) {
        connect(launcher, &OrvexLauncher::finished, this, [this, title, success](bool ok, const QString &error) {
            if (ok)
                emit message(success);
            else
                fail(title, error);
        });
    }
}

QList<QPair<QString, QString>> OrvexHostCommands::classificationRows(const QStringList &fields) const
{
    const QStringList labels = {tr("Document"), tr("Entry"), tr("Title"), tr("Type"),
                                tr("Date"),     tr("File name"), tr("Status"), tr("Pages")};
    QStringList types, statuses, unused;
    m_classify->getDocumentTypes(types, unused);
    m_classify->getDocumentStatuses(statuses, unused);
    QList<QPair<QString, QString>> rows;
    for (int i = 0; i < fields.size(); ++i) {
        QString value = fields.at(i);
        if (i == TypeField)
            value = nameOf(types, value);
        else if (i == StatusField)
            value = nameOf(statuses, value);
        rows.append({i < labels.size() ? labels.at(i) : tr("Field %1").arg(i + 1), value});
    }
    return rows;
}

bool OrvexHostCommands::showClassification(const QStringList &args)
{
    const QString cardId = argumentAt(args, 0);
    if (cardId.isEmpty())
        return fail(tr("Unknown card"), tr("The command names no card."));
    const QStringList fields = cardFields(cardId);
    if (fields.isEmpty())
        return fail(tr("Unknown card"), tr("The archive knows no document for the card(s) %1.").arg(cardId));

    OrvexClassificationDialog dialog(m_window);
    dialog.setWindowTitle(tr("Classification of document %1").arg(fields.at(DocIdField)));
    dialog.setHeading(fields.value(TitleField));
    dialog.setFields(classificationRows(fields));
    emit message(describe(QStringLiteral("SHOWCLASSIFICATION"), args));
    dialog.exec();
    return true;
}

bool OrvexHostCommands::exportDocuments(const QStringList &cardIds)
{
    const Documents documents = documentsOf(cardIds);
    if (!haveDocuments(documents, cardIds))
        return false;

    QSettings settings;
    QString start = settings.value(QLatin1String(ExportFolderKey)).toString();
    if (start.isEmpty() || !QFileInfo(start).isDir())
        start = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString folder = m_chooseFolder(m_window, tr("Export documents to"), start);
    if (folder.isEmpty()) {
        emit message(tr("Export canceled."));
        return false;
    }
    settings.setValue(QLatin1String(ExportFolderKey), folder);
    if (!connectWorker())
        return false;

    QStringList written;
    if (!m_worker->exportDocuments(documents.docIds, documents.docsIds, {}, documents.remarks, folder, false,
                                   written, -1, isOffline(), false, false, QString())) {
        if (m_worker->isCanceled()) {
            emit message(tr("Export canceled after %n document(s).", nullptr, written.size()));
            return false;
        }
        return fail(tr("Export documents"),
                    tr("The documents could not be exported: %1").arg(m_worker->getLastError()));
    }
    // Only files written count as done; the message names each one left out and why.
    const OrvexExportSummary summary = m_worker->exportSummary();
    emit message(withUnknownCards(
        tr("Export to %1: %2").arg(QDir::toNativeSeparators(folder), summary.textWithReasons()), documents));
    return summary.exported == documents.docIds.size();
}

bool OrvexHostCommands::mailDocuments(const QStringList &cardIds)
{
    const Documents documents = documentsOf(cardIds);
    if (!haveDocuments(documents, cardIds) || !connectWorker())
        return false;
    // Empty: the desktop's mail launcher.
    const QString mailCommand = QSettings().value(QLatin1String(MailCommandKey)).toString().trimmed();
    if (!m_worker->mailDocuments(documents.docIds, documents.docsIds, {}, documents.remarks, mailCommand,
                                 isOffline())) {
        if (m_worker->isCanceled()) {
            emit message(tr("Mailing canceled."));
            return false;
        }
        return fail(tr("Mail documents"),
                    tr("The documents could not be fetched for the e-mail: %1").arg(m_worker->getLastError()));
    }
    const int count = documents.docIds.size();
    emit message(tr("Handing %n document(s) to the mail program...", nullptr, count));
    reportLaunches(tr("Mail documents"),
                   withUnknownCards(tr("Handed %n document(s) to the mail program.", nullptr, count), documents));
    return true;
}
