// The widgets around the clipboard tabs: the tab bar's corner widget, the
// chooser strip with its labels, and the snackbar event.
#include "orvexclipboardchooser.h"
#include "orvexclipboardlabel.h"
#include "orvexwbcornerwidget.h"
#include "orvexwbwebview.h"
#include "qsnackbarevent.h"

#include <QDataStream>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMimeData>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QSharedMemory>
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
    void cleanup();

    void cornerWidgetForm();
    void cornerWidgetRelaysEveryChange();
    void cornerWidgetClearFilter_data();
    void cornerWidgetClearFilter();
    void cornerWidgetAddButton();

    void chooserLabelsOnlyForWriteable();
    void chooserClearDisposesOfEveryLabel();
    void scrollButtonsOnlyOnOverflow();
    void dragOverScrollButtonsScrolls();
    void hiddenButtonsStopScrolling();
    void chooserHidesAfterDelay();
    void heldButtonKeepsChooserVisible();
    void textColourByLightness_data();
    void textColourByLightness();
    void themeColour_data();
    void themeColour();
    void labelHighlightUnderDrag();

    void snackbarCarriesText();
    void snackbarIsPostedToReceiver();
    void snackbarWithoutReceiverGoesToApplication();

private:
    orvexwbwebview *newBoard(bool writeable);
    // A chooser with enough labels to overflow its list.
    void fillChooser(orvexclipboardchooser &chooser, int labels);

    QList<orvexwbwebview *> m_boards;
};

void tst_TabWidgets::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

namespace {
QString themeKey()
{
    return QStringLiteral("keltheme") + QString::number(QCoreApplication::applicationPid());
}

// Sends a drag-enter event as a drag from elsewhere would.
bool sendDragEnter(QWidget *target, QMimeData *data)
{
    QDragEnterEvent event(target->rect().center(), Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    return QApplication::sendEvent(target, &event) && event.isAccepted();
}

void moveCursorTo(QWidget *widget)
{
    QCursor::setPos(widget->mapToGlobal(widget->rect().center()));
    QTRY_COMPARE(QCursor::pos(), widget->mapToGlobal(widget->rect().center()));
}

void moveCursorAway()
{
    QCursor::setPos(1590, 1190);
}

} // namespace

orvexwbwebview *tst_TabWidgets::newBoard(bool writeable)
{
    auto *board = new orvexwbwebview;
    board->setWriteable(writeable);
    m_boards << board;
    return board;
}

void tst_TabWidgets::cleanup()
{
    moveCursorAway();
    qDeleteAll(m_boards);
    m_boards.clear();
}

void tst_TabWidgets::cornerWidgetForm()
{
    orvexwbcornerwidget corner;
    auto *filter = corner.findChild<QLineEdit *>(QStringLiteral("m_tabFilter"));
    auto *add = corner.findChild<QToolButton *>(QStringLiteral("m_addTab"));
    QVERIFY(filter);
    QVERIFY(add);
    QCOMPARE(filter->placeholderText(), QStringLiteral("Filter..."));
    QCOMPARE(add->minimumSize(), QSize(24, 24));
    QCOMPARE(add->maximumSize(), QSize(24, 24));
    QCOMPARE(add->toolTip(), QStringLiteral("Add New Clipboard"));
    QVERIFY(!add->icon().isNull());
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

void tst_TabWidgets::fillChooser(orvexclipboardchooser &chooser, int labels)
{
    orvexwbwebview *board = newBoard(true);
    for (int i = 0; i < labels; ++i)
        chooser.addClipboard(QStringLiteral("Clipboard %1").arg(i), board);
}

void tst_TabWidgets::chooserLabelsOnlyForWriteable()
{
    orvexclipboardchooser chooser;
    orvexwbwebview *inbox = newBoard(true);
    orvexwbwebview *shared = newBoard(false);
    orvexwbwebview *archive = newBoard(true);
    chooser.addClipboard(QStringLiteral("Inbox"), inbox);
    chooser.addClipboard(QStringLiteral("Shared"), shared);
    chooser.addClipboard(QStringLiteral("Archive"), archive);
    chooser.addClipboard(QStringLiteral("No board"), nullptr);

    const QList<orvexclipboardlabel *> labels = chooser.labels();
    QCOMPARE(labels.size(), 2);
    QCOMPARE(labels.at(0)->text(), QStringLiteral("Inbox"));
    QCOMPARE(labels.at(0)->board(), inbox);
    QCOMPARE(labels.at(1)->text(), QStringLiteral("Archive"));
    QCOMPARE(labels.at(1)->board(), archive);
    QCOMPARE(labels.at(0)->parentWidget(), chooser.scrollArea()->widget());

    orvexclipboardlabel *label = labels.first();
    QVERIFY(label->acceptDrops());
    QVERIFY(label->font().bold());
    QCOMPARE(label->font().weight(), 75);
    QCOMPARE(label->font().pointSize(), int(QApplication::font().pointSizeF() * 1.2));
    QCOMPARE(label->styleSheet(), QStringLiteral("QLabel { background-color: white;  margin: 4px; padding: 4px;};"));

    // The label does not keep a board alive, nor dangle after it.
    delete inbox;
    m_boards.removeOne(inbox);
    QVERIFY(!labels.at(0)->board());
}

void tst_TabWidgets::chooserClearDisposesOfEveryLabel()
{
    orvexclipboardchooser chooser;
    orvexwbwebview *board = newBoard(true);
    chooser.addClipboard(QStringLiteral("One"), board);
    chooser.addClipboard(QStringLiteral("Two"), board);
    QList<QPointer<QWidget>> widgets;
    for (orvexclipboardlabel *label : chooser.labels())
        widgets << label;
    // Nested layouts are emptied as well.
    auto *nested = new QHBoxLayout;
    auto *extra = new QLabel(QStringLiteral("nested"));
    nested->addWidget(extra);
    qobject_cast<QBoxLayout *>(chooser.scrollArea()->widget()->layout())->addLayout(nested);
    widgets << extra;
    QPointer<QLayout> nestedGuard(nested);

    chooser.clearClipboards();
    for (const QPointer<QWidget> &widget : qAsConst(widgets))
        QVERIFY(!widget);
    QVERIFY(!nestedGuard);
    QCOMPARE(chooser.scrollArea()->widget()->layout()->count(), 0);
    QVERIFY(chooser.labels().isEmpty());

    // Refilling after clearing starts from scratch.
    chooser.addClipboard(QStringLiteral("Three"), board);
    QCOMPARE(chooser.labels().size(), 1);
    chooser.clearClipboards();
    chooser.clearClipboards();
    QVERIFY(chooser.labels().isEmpty());
}

void tst_TabWidgets::scrollButtonsOnlyOnOverflow()
{
    orvexclipboardchooser chooser;
    chooser.resize(300, 300);
    chooser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&chooser));
    QVERIFY(!chooser.scrollUpButton()->isVisible());
    QVERIFY(!chooser.scrollDownButton()->isVisible());

    fillChooser(chooser, 1);
    QTest::qWait(50);
    QCOMPARE(chooser.scrollArea()->verticalScrollBar()->maximum(), 0);
    QVERIFY(!chooser.scrollDownButton()->isVisible());

    fillChooser(chooser, 30);
    QTRY_VERIFY(chooser.scrollArea()->verticalScrollBar()->maximum() > 0);
    QTRY_VERIFY(chooser.scrollUpButton()->isVisible());
    QVERIFY(chooser.scrollDownButton()->isVisible());

    chooser.clearClipboards();
    QTRY_VERIFY(!chooser.scrollDownButton()->isVisible());
    QVERIFY(!chooser.scrollUpButton()->isVisible());
}

void tst_TabWidgets::dragOverScrollButtonsScrolls()
{
    orvexclipboardchooser chooser;
    chooser.resize(300, 300);
    chooser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&chooser));
    fillChooser(chooser, 30);
    QScrollBar *bar = chooser.scrollArea()->verticalScrollBar();
    QTRY_VERIFY(chooser.scrollDownButton()->isVisible());
    QCOMPARE(bar->value(), 0);
    QMimeData data;
    data.setText(QStringLiteral("orvex"));

    // With the cursor on the button, a drag entering it keeps scrolling down
    // in steps of 10 (the area repaints slowly under Xvfb, so not to the end).
    moveCursorTo(chooser.scrollDownButton());
    sendDragEnter(chooser.scrollDownButton(), &data);
    QTRY_VERIFY_WITH_TIMEOUT(bar->value() >= 50, 10000);
    QCOMPARE(bar->value() % 10, 0);

    // Scrolling up ends at the top.
    moveCursorTo(chooser.scrollUpButton());
    sendDragEnter(chooser.scrollUpButton(), &data);
    QTRY_COMPARE_WITH_TIMEOUT(bar->value(), 0, 10000);

    // Scrolling down ends at the bottom.
    bar->setValue(bar->maximum() - 25);
    moveCursorTo(chooser.scrollDownButton());
    sendDragEnter(chooser.scrollDownButton(), &data);
    QTRY_COMPARE_WITH_TIMEOUT(bar->value(), bar->maximum(), 10000);
    bar->setValue(0);

    // A drag entering while the cursor is elsewhere scrolls nothing.
    moveCursorAway();
    sendDragEnter(chooser.scrollDownButton(), &data);
    QTest::qWait(200);
    QCOMPARE(bar->value(), 0);
}

void tst_TabWidgets::hiddenButtonsStopScrolling()
{
    orvexclipboardchooser chooser;
    chooser.resize(300, 300);
    chooser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&chooser));
    fillChooser(chooser, 30);
    QScrollBar *bar = chooser.scrollArea()->verticalScrollBar();
    QTRY_VERIFY(chooser.scrollDownButton()->isVisible());
    QMimeData data;

    moveCursorTo(chooser.scrollDownButton());
    sendDragEnter(chooser.scrollDownButton(), &data);
    QTRY_VERIFY(bar->value() > 0);
    chooser.scrollDownButton()->hide();
    const int stopped = bar->value();
    QTest::qWait(200);
    QCOMPARE(bar->value(), stopped);
    QVERIFY(stopped < bar->maximum());
}

void tst_TabWidgets::chooserHidesAfterDelay()
{
    orvexclipboardchooser chooser;
    chooser.resize(200, 200);
    moveCursorAway();
    QElapsedTimer clock;
    clock.start();
    chooser.show();
    QVERIFY(chooser.isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!chooser.isVisible(), 10000);
    // The first check comes after 1.5 s, giving the user time to reach the strip.
    QVERIFY2(clock.elapsed() >= 1400, qPrintable(QString::number(clock.elapsed())));

    // Shown again, even through a plain widget pointer as a host holds it, it hides again.
    clock.restart();
    static_cast<QWidget &>(chooser).show();
    QVERIFY(chooser.isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!chooser.isVisible(), 10000);
    QVERIFY(clock.elapsed() >= 1400);
}

void tst_TabWidgets::heldButtonKeepsChooserVisible()
{
    orvexclipboardchooser chooser;
    chooser.resize(200, 200);
    chooser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&chooser));
    moveCursorTo(&chooser);
    QTest::mousePress(&chooser, Qt::LeftButton, Qt::NoModifier, chooser.rect().center());
    QCOMPARE(QApplication::mouseButtons() & Qt::LeftButton, Qt::LeftButton);

    // Several 500 ms rounds pass while the button is held over the strip.
    QTest::qWait(2600);
    QVERIFY(chooser.isVisible());

    QTest::mouseRelease(&chooser, Qt::LeftButton, Qt::NoModifier, chooser.rect().center());
    QTRY_VERIFY_WITH_TIMEOUT(!chooser.isVisible(), 10000);
}

void tst_TabWidgets::textColourByLightness_data()
{
    QTest::addColumn<QString>("background");
    QTest::addColumn<QString>("text");

    QTest::newRow("default blue, lightness 123") << "#308cc6" << "white";
    QTest::newRow("lightness 124") << "#7c7c7c" << "white";
    QTest::newRow("lightness 125") << "#7d7d7d" << "black";
    QTest::newRow("yellow") << "#ffcc00" << "black";
    QTest::newRow("navy") << "#000080" << "white";
    QTest::newRow("white") << "#ffffff" << "black";
}

void tst_TabWidgets::textColourByLightness()
{
    QFETCH(QString, background);
    QFETCH(QString, text);
    QCOMPARE(orvexclipboardlabel::textColourFor(QColor(background)), text);
}

void tst_TabWidgets::themeColour_data()
{
    QTest::addColumn<bool>("segment");
    QTest::addColumn<QByteArray>("bytes"); // raw segment contents; empty = a streamed colour
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no segment") << false << QByteArray() << QString() << "#308cc6";
    QTest::newRow("host colour") << true << QByteArray() << "#ffcc00" << "#ffcc00";
    QTest::newRow("named colour") << true << QByteArray() << "darkred" << "darkred";
    QTest::newRow("empty text") << true << QByteArray() << "" << "#308cc6";
    QTest::newRow("not a colour") << true << QByteArray() << "no colour" << "#308cc6";
    QTest::newRow("garbage") << true << QByteArray("\xff\xff\xff\x7f") << QString() << "#308cc6";
}

void tst_TabWidgets::themeColour()
{
    QFETCH(bool, segment);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, stored);
    QFETCH(QString, expected);

    // The host writes its colour as a streamed QString into a segment of its own.
    QSharedMemory host(themeKey());
    if (segment) {
        if (bytes.isEmpty()) {
            QDataStream stream(&bytes, QIODevice::WriteOnly);
            stream << stored;
        }
        QVERIFY2(host.create(qMax(bytes.size(), 64)), qPrintable(host.errorString()));
        QVERIFY(host.lock());
        memset(host.data(), 0, size_t(host.size()));
        memcpy(host.data(), bytes.constData(), size_t(bytes.size()));
        QVERIFY(host.unlock());
    }

    orvexclipboardlabel label(QStringLiteral("Inbox"), nullptr);
    QCOMPARE(label.getCurrentTheme(), expected);
    // Reading leaves the host's segment as it was.
    if (segment) {
        QVERIFY(host.isAttached());
        QCOMPARE(QByteArray(static_cast<const char *>(host.constData()), bytes.size()), bytes);
    }
}

void tst_TabWidgets::labelHighlightUnderDrag()
{
    QSharedMemory host(themeKey());
    QByteArray bytes;
    {
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream << QStringLiteral("#ffcc00");
    }
    QVERIFY(host.create(bytes.size()));
    memcpy(host.data(), bytes.constData(), size_t(bytes.size()));

    orvexclipboardchooser chooser;
    chooser.addClipboard(QStringLiteral("Inbox"), newBoard(true));
    orvexclipboardlabel *label = chooser.labels().first();
    QMimeData data;
    QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(label, &enter);
    QVERIFY(enter.isAccepted());
    QCOMPARE(enter.dropAction(), Qt::CopyAction);
    QCOMPARE(label->styleSheet(),
             QStringLiteral("QLabel { background-color: #ffcc00; color: black; margin: 4px; padding: 4px;};"));

    QDragLeaveEvent leave;
    QApplication::sendEvent(label, &leave);
    QCOMPARE(label->styleSheet(), orvexclipboardlabel::restingSheet());

    // Without the host's colour: the default blue with white text; hiding restores.
    host.detach();
    QApplication::sendEvent(label, &enter);
    QCOMPARE(label->styleSheet(),
             QStringLiteral("QLabel { background-color: #308cc6; color: white; margin: 4px; padding: 4px;};"));
    chooser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&chooser));
    chooser.hide();
    QCOMPARE(label->styleSheet(),
             QStringLiteral("QLabel { background-color: white; color: black;  margin: 4px; padding: 4px;};"));
}

void tst_TabWidgets::snackbarCarriesText()
{
    QSnackbarEvent event(QStringLiteral("Added 2 document(s) to clipboard Inbox"));
    QVERIFY(event.type() > QEvent::User);
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
