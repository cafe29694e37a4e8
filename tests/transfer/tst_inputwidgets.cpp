// The file-name dialog and the generic input widgets behind its editor, used
// the way a user uses them: open the editor, type, commit.
#include "dmsmailnames.h"
#include "mydoublevalidator.h"
#include "orvexcompletertextedit.h"
#include "orvexdelegate.h"
#include "orvexlinedelegate.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTableView>
#include <QtTest>

class tst_InputWidgets : public QObject
{
    Q_OBJECT

private slots:
    void nameDialogForm();
    void nameDialogEditing_data();
    void nameDialogEditing();
    void nameDialogEditorIsAPlainLine();
    void lineDelegateCompletesAndLimits();
    void lineDelegateNumeric_data();
    void lineDelegateNumeric();
    void textEditCompletes();
    void textDelegateEditsMultiLine();

private:
    static QLineEdit *openLineEditor(QAbstractItemView *view, const QModelIndex &index);
};

QLineEdit *tst_InputWidgets::openLineEditor(QAbstractItemView *view, const QModelIndex &index)
{
    view->setCurrentIndex(index);
    view->edit(index);
    QLineEdit *editor = nullptr;
    const bool open = QTest::qWaitFor([&] {
        editor = view->viewport()->findChild<QLineEdit *>();
        return editor && editor->isVisible();
    }, 5000);
    return open ? editor : nullptr;
}

void tst_InputWidgets::nameDialogForm()
{
    dmsmailnames dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Send documents..."));
    auto *list = dialog.findChild<QListWidget *>(QStringLiteral("m_fileList"));
    dialog.setFileList({QStringLiteral("/tmp/x/report.pdf"), QStringLiteral("noext")});
    dialog.setFileList({QStringLiteral("/a/b.odt"), QStringLiteral("/tmp/x/report.pdf")}); // replaces the first list
    QCOMPARE(dialog.getFileList(), (QStringList{"b.odt", "report.pdf"}));
    QCOMPARE(list->item(1)->data(dmsmailnames::InitialNameRole).toString(), QStringLiteral("report.pdf"));
    QVERIFY(list->item(0)->flags() & Qt::ItemIsEditable);
}

void tst_InputWidgets::nameDialogEditing_data()
{
    QTest::addColumn<QString>("initial");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    QTest::newRow("extension dropped") << "report.pdf" << "Rechnung Mai" << "Rechnung Mai.pdf";
    QTest::newRow("extension kept") << "report.pdf" << "renamed.pdf" << "renamed.pdf";
    QTest::newRow("other extension") << "report.pdf" << "a.txt" << "a.txt.pdf";
    QTest::newRow("suffix alone") << "report.pdf" << "pdf" << "pdf";
    QTest::newRow("case matters") << "report.pdf" << "x.PDF" << "x.PDF.pdf";
    QTest::newRow("last suffix only") << "backup.tar.gz" << "b" << "b.gz";
    QTest::newRow("emptied") << "report.pdf" << "" << ".pdf";
    QTest::newRow("no extension") << "README" << "Liesmich" << "Liesmich";
}

void tst_InputWidgets::nameDialogEditing()
{
    QFETCH(QString, initial);
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    dmsmailnames dialog;
    dialog.setFileList({QStringLiteral("/tmp/") + initial, QStringLiteral("/tmp/other.pdf")});
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto *list = dialog.findChild<QListWidget *>(QStringLiteral("m_fileList"));
    QLineEdit *editor = openLineEditor(list, list->model()->index(0, 0));
    QVERIFY(editor);
    QCOMPARE(editor->text(), initial);
    editor->selectAll();
    QTest::keyClick(editor, Qt::Key_Delete);
    QTest::keyClicks(editor, typed);
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(dialog.getFileList(), (QStringList{shown, QStringLiteral("other.pdf")}));
    // The name it came with is kept for the next edit.
    QCOMPARE(list->item(0)->data(dmsmailnames::InitialNameRole).toString(), initial);
}

void tst_InputWidgets::nameDialogEditorIsAPlainLine()
{
    dmsmailnames dialog;
    dialog.setFileList({QStringLiteral("/tmp/report.pdf")});
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto *list = dialog.findChild<QListWidget *>(QStringLiteral("m_fileList"));
    QVERIFY(qobject_cast<OrvexLineDelegate *>(list->itemDelegateForColumn(0)));
    QLineEdit *editor = openLineEditor(list, list->model()->index(0, 0));
    QVERIFY(editor);
    QCOMPARE(editor->maxLength(), 4194304);
    QVERIFY(!editor->completer());
    QVERIFY(!editor->validator());
    // Escape drops the edit.
    QTest::keyClicks(editor, QStringLiteral("zzz"));
    QTest::keyClick(editor, Qt::Key_Escape);
    QTRY_VERIFY(!list->viewport()->findChild<QLineEdit *>() || !list->viewport()->findChild<QLineEdit *>()->isVisible());
    QCOMPARE(dialog.getFileList(), QStringList{"report.pdf"});
}

void tst_InputWidgets::lineDelegateCompletesAndLimits()
{
    QStandardItemModel model(1, 1);
    QTableView view;
    view.setModel(&model);
    OrvexLineDelegate delegate({QStringLiteral("Rechnung"), QStringLiteral("Rechnungskopie"),
                                QStringLiteral("Lieferschein")},
                               8, false);
    view.setItemDelegate(&delegate);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    QLineEdit *editor = openLineEditor(&view, model.index(0, 0));
    QVERIFY(editor);
    QCOMPARE(editor->maxLength(), 8);
    QVERIFY(editor->completer());
    QTest::keyClicks(editor, QStringLiteral("lie"));
    QCOMPARE(editor->completer()->completionCount(), 1);
    QCOMPARE(editor->completer()->currentCompletion(), QStringLiteral("Lieferschein"));
    editor->clear();
    QTest::keyClicks(editor, QStringLiteral("Notiz zum Vorgang"));
    QCOMPARE(editor->text(), QStringLiteral("Notiz zu"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(model.index(0, 0).data().toString(), QStringLiteral("Notiz zu"));
}

void tst_InputWidgets::lineDelegateNumeric_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("commits"); // Return ends the edit
    QTest::newRow("comma") << "12,5" << QVariant(12.5) << true;
    QTest::newRow("point") << "0.25" << QVariant(0.25) << true;
    QTest::newRow("letters are refused") << "1a2" << QVariant(12.0) << true;
    QTest::newRow("too many decimals are refused") << "3.14159" << QVariant(3.14) << true;
    QTest::newRow("beyond the range is refused") << "1001" << QVariant(100.0) << true;
    QTest::newRow("negative") << "-7,5" << QVariant(-7.5) << true;
    QTest::newRow("empty clears") << "" << QVariant() << true;
    // Not yet a number: Return does not end the edit, Escape leaves the cell as it was.
    QTest::newRow("a sign alone") << "-" << QVariant(QStringLiteral("old")) << false;
}

void tst_InputWidgets::lineDelegateNumeric()
{
    QFETCH(QString, typed);
    QFETCH(QVariant, stored);
    QFETCH(bool, commits);
    QStandardItemModel model(1, 1);
    model.setData(model.index(0, 0), QStringLiteral("old"));
    QTableView view;
    view.setModel(&model);
    OrvexLineDelegate delegate(QStringList(), 0, true);
    delegate.setNumericRange(-1000.0, 1000.0, 2);
    view.setItemDelegate(&delegate);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    QLineEdit *editor = openLineEditor(&view, model.index(0, 0));
    QVERIFY(editor);
    QVERIFY(qobject_cast<const MyDoubleValidator *>(editor->validator()));
    QCOMPARE(editor->text(), QString()); // "old" is no number
    QTest::keyClicks(editor, typed);
    QTest::keyClick(editor, Qt::Key_Return);
    if (!commits) {
        QVERIFY(editor->isVisible());
        QTest::keyClick(editor, Qt::Key_Escape);
    }
    QTRY_VERIFY(!view.viewport()->findChild<QLineEdit *>() || !view.viewport()->findChild<QLineEdit *>()->isVisible());
    const QVariant value = model.index(0, 0).data(Qt::EditRole);
    if (stored.type() == QVariant::Double) {
        QCOMPARE(value.type(), QVariant::Double);
        QCOMPARE(value.toDouble(), stored.toDouble());
    } else {
        QCOMPARE(value, stored);
    }
}

void tst_InputWidgets::textEditCompletes()
{
    QWidget window;
    auto *other = new QLineEdit(&window);
    auto *text = new orvexcompletertextedit(&window);
    orvexcompletertextedit &edit = *text;
    text->move(0, 40);
    edit.setCompletions({QStringLiteral("Rechnung"), QStringLiteral("Lieferschein"), QStringLiteral("Lieferant")});
    edit.setMaxLength(24);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.activateWindow();
    edit.setFocus();
    QTRY_VERIFY(edit.hasFocus());

    QTest::keyClicks(&edit, QStringLiteral("Siehe lief"));
    QCompleter *completer = edit.completer();
    QVERIFY(completer);
    QTRY_VERIFY(completer->popup()->isVisible());
    QCOMPARE(completer->completionPrefix(), QStringLiteral("lief"));
    QCOMPARE(completer->completionCount(), 2);
    // Return takes the highlighted completion in place of the typed prefix.
    QTest::keyClick(completer->popup(), Qt::Key_Return);
    QTRY_VERIFY(!completer->popup()->isVisible());
    QCOMPARE(edit.toPlainText(), QStringLiteral("Siehe Lieferschein"));

    // One letter is not enough to open the popup; Ctrl+Space forces it.
    QTest::keyClicks(&edit, QStringLiteral(" R"));
    QVERIFY(!completer->popup()->isVisible());
    QTest::keyClick(&edit, Qt::Key_Space, Qt::ControlModifier);
    QTRY_VERIFY(completer->popup()->isVisible());
    QTest::keyClick(completer->popup(), Qt::Key_Escape);
    QTRY_VERIFY(!completer->popup()->isVisible());
    QCOMPARE(edit.toPlainText(), QStringLiteral("Siehe Lieferschein R"));

    // Typed or pasted, the text stays within the maximum length.
    QTest::keyClicks(&edit, QStringLiteral("echnung"));
    QCOMPARE(edit.toPlainText(), QStringLiteral("Siehe Lieferschein Rechn"));
    edit.setPlainText(QString(40, QLatin1Char('x')));
    QCOMPARE(edit.toPlainText().size(), 24);
    if (completer->popup()->isVisible())
        QTest::keyClick(completer->popup(), Qt::Key_Escape);
    QSignalSpy finished(&edit, &orvexcompletertextedit::editingFinished);
    other->setFocus();
    QTRY_COMPARE(finished.count(), 1);
}

void tst_InputWidgets::textDelegateEditsMultiLine()
{
    QStandardItemModel model(1, 1);
    model.setData(model.index(0, 0), QStringLiteral("first"));
    QTableView view;
    view.setModel(&model);
    OrvexDelegate delegate({QStringLiteral("Wiedervorlage")}, 30);
    view.setItemDelegate(&delegate);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setCurrentIndex(model.index(0, 0));
    view.edit(model.index(0, 0));
    orvexcompletertextedit *editor = nullptr;
    QTRY_VERIFY((editor = view.viewport()->findChild<orvexcompletertextedit *>()) && editor->isVisible());
    QApplication::setActiveWindow(&view);
    editor->setFocus();
    QTRY_VERIFY(editor->hasFocus());
    QCOMPARE(editor->toPlainText(), QStringLiteral("first"));
    QCOMPARE(editor->maxLength(), 30);
    QVERIFY(editor->completer());
    QTest::keyClick(editor, Qt::Key_Return); // a line break, not the end of editing
    QTest::keyClicks(editor, QStringLiteral("second"));
    QTest::keyClick(editor, Qt::Key_Tab); // Tab commits
    QTRY_COMPARE(model.index(0, 0).data().toString(), QStringLiteral("first\nsecond"));
}

QTEST_MAIN(tst_InputWidgets)
#include "tst_inputwidgets.moc"
