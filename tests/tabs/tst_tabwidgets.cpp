// The small widgets around the clipboard tabs: the tab bar's corner widget and
// the snackbar event.
#include "orvexwbcornerwidget.h"
#include "qsnackbarevent.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>

namespace {
// Collects the snackbar texts that reach an object.
class SnackbarCatcher : public QObject
{
public:
    QStringList texts;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QSnackbarEvent::snackbarType()) {
            texts << static_cast<QSnackbarEvent *>(event)->getText();
            return true;
        }
        return QObject::event(event);
    }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == QCoreApplication::instance() && event->type() == QSnackbarEvent::snackbarType())
            texts << static_cast<QSnackbarEvent *>(event)->getText();
        return QObject::eventFilter(watched, event);
    }
};
} // namespace

class tst_TabWidgets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void cornerWidgetForm();
    void cornerWidgetRelaysEveryChange();
    void cornerWidgetClearFilter_data();
    void cornerWidgetClearFilter();
    void cornerWidgetAddButton();

    void snackbarCarriesText();
    void snackbarIsPostedToReceiver();
    void snackbarWithoutReceiverGoesToApplication();
};

void tst_TabWidgets::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void tst_TabWidgets::cornerWidgetForm()
{
    orvexwbcornerwidget corner;
    QCOMPARE(corner.objectName(), QStringLiteral("orvexwbcornerwidget"));
    auto *filter = corner.findChild<QLineEdit *>(QStringLiteral("m_tabFilter"));
    auto *add = corner.findChild<QToolButton *>(QStringLiteral("m_addTab"));
    QVERIFY(filter);
    QVERIFY(add);
    QCOMPARE(filter->placeholderText(), QStringLiteral("Filter..."));
    QCOMPARE(add->minimumSize(), QSize(24, 24));
    QCOMPARE(add->maximumSize(), QSize(24, 24));
    QCOMPARE(add->styleSheet(), QStringLiteral("QToolButton {border:0px;}"));
    QCOMPARE(add->toolTip(), QStringLiteral("Add New Clipboard"));
    QVERIFY(add->text().isEmpty());
    QVERIFY(!add->autoRaise());
    QVERIFY(!add->icon().isNull());

    auto *outer = qobject_cast<QHBoxLayout *>(corner.layout());
    QVERIFY(outer);
    QCOMPARE(outer->spacing(), 0);
    QCOMPARE(outer->contentsMargins(), QMargins(0, 0, 0, 0));
    auto *inner = corner.findChild<QHBoxLayout *>(QStringLiteral("horizontalLayout"));
    QVERIFY(inner);
    QCOMPARE(inner->spacing(), 0);
    QCOMPARE(inner->contentsMargins().left(), 0);
    // The filter first, the button after it.
    QCOMPARE(inner->indexOf(filter), 0);
    QCOMPARE(inner->indexOf(add), 1);
}

void tst_TabWidgets::cornerWidgetRelaysEveryChange()
{
    orvexwbcornerwidget corner;
    corner.show();
    QVERIFY(QTest::qWaitForWindowExposed(&corner));
    auto *filter = corner.findChild<QLineEdit *>(QStringLiteral("m_tabFilter"));
    QSignalSpy spy(&corner, &orvexwbcornerwidget::filterChanged);

    QTest::keyClicks(filter, QStringLiteral("Ab c"));
    QCOMPARE(spy.count(), 4);
    QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("A"));
    QCOMPARE(spy.at(3).at(0).toString(), QStringLiteral("Ab c"));

    QTest::keyClick(filter, Qt::Key_Backspace);
    QCOMPARE(spy.count(), 5);
    QCOMPARE(spy.last().at(0).toString(), QStringLiteral("Ab "));
    QCOMPARE(corner.filterText(), QStringLiteral("Ab "));
}

void tst_TabWidgets::cornerWidgetClearFilter_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<int>("emitted");

    QTest::newRow("with text") << "inv" << 1;
    QTest::newRow("already empty") << "" << 0;
}

void tst_TabWidgets::cornerWidgetClearFilter()
{
    QFETCH(QString, before);
    QFETCH(int, emitted);

    orvexwbcornerwidget corner;
    auto *filter = corner.findChild<QLineEdit *>(QStringLiteral("m_tabFilter"));
    filter->setText(before);
    QSignalSpy spy(&corner, &orvexwbcornerwidget::filterChanged);
    QSignalSpy adds(&corner, &orvexwbcornerwidget::addTab);

    corner.clearFilter();
    QCOMPARE(spy.count(), emitted);
    if (emitted)
        QCOMPARE(spy.first().at(0).toString(), QString());
    QVERIFY(filter->text().isEmpty());
    QCOMPARE(adds.count(), 0);
}

void tst_TabWidgets::cornerWidgetAddButton()
{
    orvexwbcornerwidget corner;
    corner.show();
    QVERIFY(QTest::qWaitForWindowExposed(&corner));
    auto *add = corner.findChild<QToolButton *>(QStringLiteral("m_addTab"));
    QSignalSpy adds(&corner, &orvexwbcornerwidget::addTab);
    QSignalSpy filters(&corner, &orvexwbcornerwidget::filterChanged);

    QTest::mouseClick(add, Qt::LeftButton);
    QCOMPARE(adds.count(), 1);
    QTest::mouseClick(add, Qt::LeftButton);
    QCOMPARE(adds.count(), 2);
    QCOMPARE(filters.count(), 0);
}

void tst_TabWidgets::snackbarCarriesText()
{
    QSnackbarEvent event(QStringLiteral("Added 2 document(s) to clipboard Inbox"));
    QVERIFY(event.type() > QEvent::User);
    QCOMPARE(event.type(), QSnackbarEvent::snackbarType());
    QCOMPARE(event.getText(), QStringLiteral("Added 2 document(s) to clipboard Inbox"));
    event.setText(QString());
    QVERIFY(event.getText().isEmpty());
    // One registered type per process, not one per event.
    QCOMPARE(QSnackbarEvent().type(), event.type());
}

void tst_TabWidgets::snackbarIsPostedToReceiver()
{
    SnackbarCatcher receiver;
    QSnackbarEvent event(QStringLiteral("first"));
    event.send(&receiver);
    event.setText(QStringLiteral("second"));
    event.send(&receiver);
    // Posted, not sent: nothing arrives before the event loop runs.
    QVERIFY(receiver.texts.isEmpty());
    QTRY_COMPARE(receiver.texts, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    // The sender keeps its own event.
    QCOMPARE(event.getText(), QStringLiteral("second"));
}

void tst_TabWidgets::snackbarWithoutReceiverGoesToApplication()
{
    SnackbarCatcher hostFilter;
    qApp->installEventFilter(&hostFilter);
    QSnackbarEvent(QStringLiteral("to the host")).send();
    QTRY_VERIFY(hostFilter.texts.contains(QStringLiteral("to the host")));
    qApp->removeEventFilter(&hostFilter);
}

QTEST_MAIN(tst_TabWidgets)
#include "tst_tabwidgets.moc"
