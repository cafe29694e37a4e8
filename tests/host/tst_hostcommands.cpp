// The workbench's four commands carried out by the host on a fresh sample
// archive, with the archive worker loading the archive's client library.
#include "../transfer/sequenceanswerer.h"
#include "classifyinterface.h"
#include "modalanswerer.h"
#include "orvexarchive.h"
#include "orvexclassificationdialog.h"
#include "orvexhostcommands.h"
#include "orvexhosttranslations.h"

#include <QtTest>

class tst_HostCommands : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        OrvexHostTranslations::install(QLocale(QLocale::English)); // the plural forms
        const QString folder = m_scratch.filePath(QStringLiteral("archive"));
        qputenv(OrvexArchive::FolderVariable, QFile::encodeName(folder)); // for the worker's own client
        QVERIFY2(m_archive.open(folder), qPrintable(m_archive.lastError()));
        for (const OrvexArchiveDocument &document : m_archive.documents())
            m_documents.insert(QString::number(document.id), document);

        ClassifyInterface *classify = m_archive.classifyClient();
        QList<QPair<QString, QString>> clipboards;
        classify->getClipboards(clipboards);
        QStringList entries, notes;
        for (const auto &clipboard : clipboards) {
            if (clipboard.second.startsWith(QStringLiteral("Offene Rechnungen")))
                QVERIFY(classify->getClipboardDocuments(clipboard.first, entries, notes));
        }
        QVERIFY(entries.size() > 2);
        for (const QString &entry : entries) {
            m_cards << entry.section(QChar(0xFEFF), 1, 1);
            m_expectedNames << m_documents.value(entry.section(QChar(0xFEFF), 0, 0)).fileName;
        }
        m_expectedNames.sort();
        m_commands = new OrvexHostCommands(classify, m_archive.connectionValues(), &m_window);
    }

    void exportTellsWhatWasWritten_data()
    {
        QTest::addColumn<QString>("present"); // files already in the folder: none, all or last (in export order)
        QTest::addColumn<bool>("confirmNames");
        QTest::addColumn<bool>("folderVanishes"); // while the names are confirmed
        QTest::addColumn<bool>("done");
        QTest::addColumn<QStringList>("told"); // parts of the message: %1 the first file, %2 the last, %3 how many

        // Failed before: a kept file, a failed copy or unconfirmed names were
        // counted but not named, and an export that left files out was a success.
        QTest::newRow("empty folder") << "none" << true << false << true << QStringList{": %3 files exported."};
        QTest::newRow("all there, kept") << "all" << true << false << false
            << QStringList{": 0 files exported, %3 skipped.", "%1 already exists and was kept."};
        QTest::newRow("last there, kept") << "last" << true << false << false
            << QStringList{": %4 files exported, 1 skipped.", "%2 already exists and was kept."};
        QTest::newRow("folder gone") << "none" << true << true << false
            << QStringList{": 0 files exported, %3 failed.", "%1 could not be saved (", "%2 could not be saved ("};
        QTest::newRow("names not confirmed") << "none" << false << false << false
            << QStringList{": 0 files exported, %3 skipped. The file names were not confirmed."};
    }

    void exportTellsWhatWasWritten()
    {
        QFETCH(QString, present);
        QFETCH(bool, confirmNames);
        QFETCH(bool, folderVanishes);
        QFETCH(bool, done);
        QFETCH(QStringList, told);

        QTemporaryDir scratch;
        QDir target(scratch.filePath(QStringLiteral("export")));
        QVERIFY(target.mkpath(QStringLiteral(".")));
        QStringList order; // the files in export order
        for (const QString &card : m_cards)
            order << m_documents.value(m_archive.classifyClient()->getCardInfo(card, QString()).value(0)).fileName;
        QVERIFY(order.size() > 2);
        const QStringList kept = present == "all" ? order : present == "last" ? QStringList{order.last()} : QStringList();
        for (const QString &name : kept) {
            QFile mine(target.filePath(name));
            QVERIFY(mine.open(QIODevice::WriteOnly) && mine.write("mine") == 4);
        }
        const QString folder = target.path();
        m_commands->setFolderChooser([folder](QWidget *, const QString &, const QString &) { return folder; });

        QSignalSpy messages(m_commands, &OrvexHostCommands::message);
        {
            SequenceAnswerer dialogs({[&](QWidget *names) {
                if (folderVanishes)
                    QDir(folder).removeRecursively();
                SequenceAnswerer::press(confirmNames ? QMessageBox::Ok : QMessageBox::Cancel)(names);
            }}); // overwrite questions beyond are answered No, error boxes closed
            QCOMPARE(m_commands->carryOut(QStringLiteral("EXPORTDOCS"), m_cards), done);
        }
        const QString message = messages.last().at(0).toString();
        for (const QString &part : told)
            QVERIFY2(message.contains(QString(part)
                                          .replace("%1", order.first())
                                          .replace("%2", order.last())
                                          .replace("%3", QString::number(order.size()))
                                          .replace("%4", QString::number(order.size() - 1))),
                     qPrintable(message));
        // What is in the folder is what the message says: the new files, and the kept ones untouched.
        if (!folderVanishes)
            QCOMPARE(target.entryList(QDir::Files, QDir::Name).size(), confirmNames ? order.size() : 0);
        for (const QString &name : kept)
            QCOMPARE(QFileInfo(target.filePath(name)).size(), 4);
    }

    void exportSkipsUnknownCardsAndCanBeCanceled()
    {
        QDir target(m_scratch.filePath(QStringLiteral("export")));
        QVERIFY(target.mkpath(QStringLiteral(".")));
        QString answer = target.path();
        m_commands->setFolderChooser([&answer](QWidget *, const QString &, const QString &) { return answer; });
        QSignalSpy messages(m_commands, &OrvexHostCommands::message);
        {
            SequenceAnswerer dialogs({SequenceAnswerer::press(QMessageBox::Ok)}); // the file names
            QVERIFY(m_commands->carryOut(QStringLiteral("EXPORTDOCS"), m_cards + QStringList{QStringLiteral("99999")}));
            QCOMPARE(dialogs.texts().size(), 1);
        }
        QCOMPARE(target.entryList(QDir::Files, QDir::Name), m_expectedNames);
        const QString exportedTo = QStringLiteral("Export to %1: ").arg(QDir::toNativeSeparators(target.path()));
        QVERIFY2(messages.last().at(0).toString().startsWith(
                     exportedTo + QStringLiteral("%1 files exported.").arg(m_expectedNames.size())),
                 qPrintable(messages.last().at(0).toString()));
        QVERIFY2(messages.last().at(0).toString().contains(QStringLiteral("99999")), "the unknown card is named");

        answer.clear(); // the user cancels the folder question
        QVERIFY(!m_commands->carryOut(QStringLiteral("EXPORTDOCS"), m_cards));
        QCOMPARE(messages.last().at(0).toString(), QStringLiteral("Export canceled."));
    }

    void mailHandsTheFilesToTheMailCommand()
    {
        const QString recorded = m_scratch.filePath(QStringLiteral("mail-arguments.txt"));
        QFile script(m_scratch.filePath(QStringLiteral("mail.sh")));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(QStringLiteral("#!/bin/sh\nprintf '%s\\n' \"$@\" > '%1'\n").arg(recorded).toUtf8());
        script.close();
        script.setPermissions(script.permissions() | QFileDevice::ExeOwner);
        QSettings().setValue(QLatin1String(OrvexHostCommands::MailCommandKey), script.fileName() + QStringLiteral(" %1"));

        QVERIFY(m_commands->carryOut(QStringLiteral("MAILDOCS"), m_cards));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(recorded).size() > 0, 15000);
        QFile arguments(recorded);
        QVERIFY(arguments.open(QIODevice::ReadOnly));
        // One argument: the attachments, comma-joined, each present under its archive name.
        QCOMPARE(fileNames(QString::fromUtf8(arguments.readAll()).trimmed().split(QLatin1Char(','))), m_expectedNames);
    }

    void launchersAreTold_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("exitCode"); // of the launcher; -1: there is none
        QTest::addColumn<QString>("told");

        // Failed before: each said it had worked, whatever the launcher did. A
        // failure is also shown in a box; "in the viewer." and "to the mail program."
        // end the messages of success.
        QTest::newRow("open, no launcher") << "OPENDOC" << -1 << "No program to open PDF files is set up (xdg-open).";
        QTest::newRow("open, launcher fails") << "OPENDOC" << 4 << "could not be opened: xdg-open ended with exit code 4.";
        QTest::newRow("open, launcher works") << "OPENDOC" << 0 << "in the viewer.";
        QTest::newRow("mail, no launcher") << "MAILDOCS" << -1 << "No mail program is set up (xdg-email).";
        QTest::newRow("mail, launcher fails") << "MAILDOCS" << 3 << "The mail program xdg-email ended with exit code 3.";
        QTest::newRow("mail, launcher works") << "MAILDOCS" << 0 << "to the mail program.";
    }

    void launchersAreTold()
    {
        QFETCH(QString, command);
        QFETCH(int, exitCode);
        QFETCH(QString, told);
        const bool works = exitCode == 0;

        const bool opens = command == QLatin1String("OPENDOC");
        const QString launcher = opens ? QStringLiteral("xdg-open") : QStringLiteral("xdg-email");
        const QString folder = launcherFolder(launcher, exitCode);
        QSettings().remove(QLatin1String(OrvexHostCommands::MailCommandKey)); // the desktop's launcher
        const QStringList fields = m_archive.classifyClient()->getCardInfo(m_cards.first(), QString());
        const QStringList args = opens ? QStringList{fields.at(0), QStringLiteral("a note"), m_cards.first()} : m_cards;

        QSignalSpy messages(m_commands, &OrvexHostCommands::message);
        ModalAnswerer answer(QMessageBox::Ok);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(folder));
        const bool started = m_commands->carryOut(command, args);
        qputenv("PATH", path);
        QVERIFY(started);
        // At first only that it is under way; the outcome follows once the launcher tells.
        QVERIFY2(messages.last().at(0).toString().endsWith(QStringLiteral("...")), qPrintable(messages.last().at(0).toString()));
        QTRY_VERIFY_WITH_TIMEOUT(messages.last().at(0).toString().endsWith(told), 15000);
        QTRY_COMPARE(answer.answered(), !works);
        QVERIFY2(works || answer.seenText().contains(told), qPrintable(answer.seenText()));
        if (exitCode < 0)
            return;
        // The launcher got the document's file, or the mail with every attachment.
        QFile arguments(folder + QStringLiteral("/arguments"));
        QVERIFY(arguments.open(QIODevice::ReadOnly));
        const QString given = QString::fromUtf8(arguments.readAll()).trimmed();
        if (opens)
            QCOMPARE(fileNames({given}), QStringList{m_documents.value(fields.at(0)).fileName});
        else
            QCOMPARE(given.count(QStringLiteral("&attach=")), m_expectedNames.size());
    }

    void classificationShowsTheFields()
    {
        QList<QPair<QString, QString>> shown;
        ModalAnswerer answer([&shown](QWidget *modal) {
            if (auto *dialog = qobject_cast<OrvexClassificationDialog *>(modal))
                shown = dialog->fields();
            modal->close();
        });
        QVERIFY(m_commands->carryOut(QStringLiteral("SHOWCLASSIFICATION"), {m_cards.first()}));
        const OrvexArchiveDocument document =
            m_documents.value(m_archive.classifyClient()->getCardInfo(m_cards.first(), QString()).value(0));
        QVERIFY(shown.contains({QStringLiteral("Type"), document.typeName})); // the name, not the key
        QVERIFY(shown.contains({QStringLiteral("Entry"), m_cards.first()}));
    }

    void unknownCardsAreTold_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("told");

        QTest::newRow("classification") << QStringLiteral("SHOWCLASSIFICATION") << QStringList{QStringLiteral("99999")}
                                        << QStringLiteral("The archive knows no document for the card(s) 99999.");
        QTest::newRow("classification without card") << QStringLiteral("SHOWCLASSIFICATION") << QStringList()
                                                     << QStringLiteral("The command names no card.");
        QTest::newRow("export, ids that are no numbers")
            << QStringLiteral("EXPORTDOCS") << QStringList{QStringLiteral("abc"), QStringLiteral("-3")}
            << QStringLiteral("The archive knows no document for the card(s) abc, -3.");
        QTest::newRow("open") << QStringLiteral("OPENDOC")
                              << QStringList{QStringLiteral("99999"), QString(), QStringLiteral("99999")}
                              << QStringLiteral("The document 99999 could not be opened: ");
    }

    void unknownCardsAreTold()
    {
        QFETCH(QString, command);
        QFETCH(QStringList, args);
        QFETCH(QString, told);

        ModalAnswerer answer(QMessageBox::Ok);
        QVERIFY(!m_commands->carryOut(command, args));
        QVERIFY(answer.answered());
        QVERIFY2(answer.seenText().startsWith(told), qPrintable(answer.seenText()));
    }

private:
    QStringList fileNames(const QStringList &paths) const
    {
        QStringList names;
        for (const QString &path : paths) {
            if (QFileInfo::exists(path))
                names << QFileInfo(path).fileName();
        }
        names.sort();
        return names;
    }

    // A folder holding a launcher script of that name that exits with exitCode; none below 0.
    QString launcherFolder(const QString &name, int exitCode)
    {
        const QString folder = m_scratch.filePath(QStringLiteral("bin-%1-%2").arg(name).arg(exitCode));
        QDir().mkpath(folder);
        if (exitCode < 0)
            return folder; // no launcher at all
        QFile script(folder + QLatin1Char('/') + name);
        if (!script.open(QIODevice::WriteOnly))
            return {};
        script.write(QStringLiteral("#!/bin/sh\nprintf '%s\\n' \"$@\" > '%1/arguments'\nexit %2\n")
                         .arg(folder).arg(exitCode).toUtf8());
        script.close();
        script.setPermissions(script.permissions() | QFileDevice::ExeOwner);
        return folder;
    }

    QTemporaryDir m_scratch;
    OrvexArchive m_archive;
    QWidget m_window;
    OrvexHostCommands *m_commands = nullptr; // the window's child
    QStringList m_cards;                     // a clipboard's cards
    QStringList m_expectedNames;             // the archive's file names of their documents
    QMap<QString, OrvexArchiveDocument> m_documents;
};

QTEST_MAIN(tst_HostCommands)
#include "tst_hostcommands.moc"
