// The file-name dialog and the generic input widgets behind its editor.
#include "dmsmailnames.h"
#include "orvexcompletertextedit.h"
#include "orvexdelegate.h"
#include "orvexlinedelegate.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QLineEdit>
#include <QListWidget>
#include <QStandardItemModel>
#include <QTableView>
#include <QtTest>

class tst_InputWidgets : public QObject
{
    Q_OBJECT

private slots:
    void nameDialogKeepsTheExtension_data()
    {
        QTest::addColumn<QString>("initial");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("extension dropped") << "report.pdf" << "Rechnung Mai" << "Rechnung Mai.pdf";
        QTest::newRow("extension kept") << "report.pdf" << "renamed.pdf" << "renamed.pdf";
        QTest::newRow("other extension") << "report.pdf" << "a.txt" << "a.txt.pdf";
        QTest::newRow("last suffix only") << "backup.tar.gz" << "b" << "b.gz";
        QTest::newRow("no extension") << "README" << "Liesmich" << "Liesmich";
    }

    void nameDialogKeepsTheExtension()
    {
        QFETCH(QString, initial);
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        dmsmailnames dialog;
        dialog.setFileList({"/tmp/" + initial, "/tmp/other.pdf"});
        dialog.findChild<QListWidget *>("m_fileList")->item(0)->setText(typed);
        QCOMPARE(dialog.getFileList(), (QStringList{shown, "other.pdf"}));
    }

    void lineDelegate_data()
    {
        QTest::addColumn<bool>("numeric"); // -1000..1000, two decimals
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("text cut at the maximum") << false << "Notiz zum Vorgang" << QVariant("Notiz zu");
        QTest::newRow("comma") << true << "12,5" << QVariant(12.5);
        QTest::newRow("letters are refused") << true << "1a2" << QVariant(12.0);
        QTest::newRow("too many decimals are refused") << true << "3.14159" << QVariant(3.14);
        QTest::newRow("beyond the range is refused") << true << "1001" << QVariant(100.0);
        QTest::newRow("empty clears") << true << "" << QVariant();
        QTest::newRow("a sign alone changes nothing") << true << "-" << QVariant("old");
    }

    void lineDelegate()
    {
        QFETCH(bool, numeric);
        QFETCH(QString, typed);
        QFETCH(QVariant, stored);
        QStandardItemModel model(1, 1);
        const QModelIndex cell = model.index(0, 0);
        model.setData(cell, "old");
        OrvexLineDelegate delegate({"Rechnung", "Rechnungskopie", "Lieferschein"}, 8, numeric);
        delegate.setNumericRange(-1000.0, 1000.0, 2);
        std::unique_ptr<QWidget> widget(delegate.createEditor(nullptr, {}, cell));
        auto *editor = qobject_cast<QLineEdit *>(widget.get());
        delegate.setEditorData(editor, cell);
        QCOMPARE(editor->text(), numeric ? QString() : QString("old")); // "old" is no number
        editor->completer()->setCompletionPrefix("lie");
        QCOMPARE(editor->completer()->currentCompletion(), QString("Lieferschein"));
        editor->clear();
        QTest::keyClicks(editor, typed);
        delegate.setModelData(editor, &model, cell);
        QCOMPARE(model.data(cell).type(), stored.type()); // numbers are stored as numbers
        QCOMPARE(model.data(cell), stored);
    }

    void textDelegateCompletesAndKeepsLines()
    {
        QStandardItemModel model(1, 1);
        model.setData(model.index(0, 0), "Siehe");
        QTableView view;
        view.setModel(&model);
        OrvexDelegate delegate({"Rechnung", "Lieferschein", "Lieferant"}, 30);
        view.setItemDelegate(&delegate);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.edit(model.index(0, 0));
        orvexcompletertextedit *editor = nullptr;
        QTRY_VERIFY((editor = view.viewport()->findChild<orvexcompletertextedit *>()) && editor->isVisible());
        QApplication::setActiveWindow(&view);
        editor->setFocus();
        QTRY_VERIFY(editor->hasFocus());
        QTest::keyClicks(editor, " lief");
        QCompleter *completer = editor->completer();
        QTRY_VERIFY(completer->popup()->isVisible());
        QCOMPARE(completer->completionCount(), 2);
        // Return takes the highlighted completion in place of the typed prefix.
        QTest::keyClick(completer->popup(), Qt::Key_Return);
        QTRY_VERIFY(!completer->popup()->isVisible());
        QCOMPARE(editor->toPlainText(), QString("Siehe Lieferschein"));
        QTest::keyClick(editor, Qt::Key_Return); // a line break, not the end of editing
        QTest::keyClicks(editor, "R");            // one letter opens no popup
        QVERIFY(!completer->popup()->isVisible());
        editor->insertPlainText(QString(20, 'x')); // pasted: cut at the maximum length
        QTest::keyClick(editor, Qt::Key_Tab);      // Tab commits
        QTRY_COMPARE(model.index(0, 0).data().toString(), QString("Siehe Lieferschein\nR" + QString(10, 'x')));
    }
};

QTEST_MAIN(tst_InputWidgets)
#include "tst_inputwidgets.moc"
