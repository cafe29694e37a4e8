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
        QTest::newRow("other extension") << "report.pdf" << "a.txt" << "a.txt.pdf";
        QTest::newRow("last suffix only") << "backup.tar.gz" << "b" << "b.gz";
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
        // Return takes the highlighted completion in place of the typed prefix.
        QTest::keyClick(completer->popup(), Qt::Key_Return);
        QTRY_VERIFY(!completer->popup()->isVisible());
        QCOMPARE(editor->toPlainText(), QString("Siehe Lieferschein"));
        QTest::keyClick(editor, Qt::Key_Tab); // Tab commits
        QTRY_COMPARE(model.index(0, 0).data().toString(), QString("Siehe Lieferschein"));
    }
};

QTEST_MAIN(tst_InputWidgets)
#include "tst_inputwidgets.moc"
