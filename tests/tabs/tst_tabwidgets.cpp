// The widgets around the clipboard tabs: the tab bar's corner widget, the
// chooser strip with its labels, and the snackbar event.
#include "orvexclipboardchooser.h"
#include "orvexclipboardlabel.h"
#include "orvexwbcornerwidget.h"
#include "orvexwbwebview.h"
#include "qsnackbarevent.h"
#include "snackbarcatcher.h"

#include <QDataStream>
#include <QLayout>
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
// A drag from elsewhere entering the widget.
void sendDragEnter(QWidget *target)
{
    QMimeData data;
    QDragEnterEvent event(target->rect().center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

void moveCursorTo(QWidget *widget)
{
    QCursor::setPos(widget->mapToGlobal(widget->rect().center()));
    QTRY_COMPARE(QCursor::pos(), widget->mapToGlobal(widget->rect().center()));
}
} // namespace

class tst_TabWidgets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void cleanup()
    {
        QCursor::setPos(1590, 1190);
        qDeleteAll(m_boards);
        m_boards.clear();
    }

    void cornerWidget()
    {
        orvexwbcornerwidget corner;
        corner.show();
        QVERIFY(QTest::qWaitForWindowExposed(&corner));
        auto *add = corner.findChild<QToolButton *>("m_addTab");
        QSignalSpy filters(&corner, &orvexwbcornerwidget::filterChanged);
        QSignalSpy adds(&corner, &orvexwbcornerwidget::addTab);
        // Every change of the field is relayed, each add click once, neither as the other.
        QTest::keyClicks(corner.findChild<QLineEdit *>("m_tabFilter"), "Ab");
        QTest::keyClick(corner.findChild<QLineEdit *>("m_tabFilter"), Qt::Key_Backspace);
        QTest::mouseClick(add, Qt::LeftButton);
        QTest::mouseClick(add, Qt::LeftButton);
        QCOMPARE(adds.count(), 2);
        QCOMPARE(filters, QList<QVariantList>({{"A"}, {"Ab"}, {"A"}}));
        corner.clearFilter(); // once with the empty text, then nothing more to clear
        corner.clearFilter();
        QCOMPARE(filters.count(), 4);
    }

    void chooserLabels()
    {
        orvexclipboardchooser chooser;
        orvexwbwebview *inbox = newBoard(true);
        chooser.addClipboard("Inbox", inbox);
        chooser.addClipboard("Shared", newBoard(false));
        chooser.addClipboard("Archive", newBoard(true));
        chooser.addClipboard("No board", nullptr);
        // Labels only for writeable clipboards, each taking drops for its board.
        QList<QPointer<QWidget>> labels;
        for (orvexclipboardlabel *label : chooser.labels())
            labels << label;
        QCOMPARE(labels.size(), 2);
        QCOMPARE(chooser.labels().last()->text(), QStringLiteral("Archive"));
        QVERIFY(chooser.labels().first()->acceptDrops());
        // A label does not keep its board alive, nor dangle after it.
        m_boards.removeOne(inbox);
        delete inbox;
        QVERIFY(!chooser.labels().first()->board());

        chooser.clearClipboards();
        QVERIFY(!labels[0] && !labels[1]);
        chooser.addClipboard("Three", newBoard(true)); // refilling starts from scratch
        QCOMPARE(chooser.labels().size(), 1);
    }

    void scrolling()
    {
        orvexclipboardchooser chooser;
        chooser.resize(300, 300);
        chooser.show();
        QVERIFY(QTest::qWaitForWindowExposed(&chooser));
        QToolButton *up = chooser.scrollUpButton(), *down = chooser.scrollDownButton();
        QScrollBar *bar = chooser.scrollArea()->verticalScrollBar();
        // The buttons show only while the list overflows.
        chooser.addClipboard("One", newBoard(true));
        QTest::qWait(50);
        QVERIFY(!up->isVisible() && !down->isVisible());
        for (int i = 0; i < 30; ++i)
            chooser.addClipboard(QString("Clipboard %1").arg(i), m_boards.first());
        QTRY_VERIFY(up->isVisible() && down->isVisible());

        // With the cursor on a button, a drag entering it keeps scrolling.
        moveCursorTo(down);
        sendDragEnter(down);
        QTRY_VERIFY_WITH_TIMEOUT(bar->value() >= 50, 10000);
        moveCursorTo(up);
        sendDragEnter(up);
        QTRY_COMPARE_WITH_TIMEOUT(bar->value(), 0, 10000);

        // A hidden button stops scrolling.
        bar->setValue(0);
        moveCursorTo(down);
        sendDragEnter(down);
        QTRY_VERIFY(bar->value() > 0);
        down->hide();
        const int stopped = bar->value();
        QTest::qWait(200);
        QCOMPARE(bar->value(), stopped);
        QVERIFY(stopped < bar->maximum());
        // A drag entering while the cursor is elsewhere scrolls nothing.
        down->show();
        bar->setValue(0);
        QCursor::setPos(1590, 1190);
        sendDragEnter(down);
        QTest::qWait(200);
        QCOMPARE(bar->value(), 0);

        chooser.clearClipboards();
        QTRY_VERIFY(!up->isVisible() && !down->isVisible());
    }

    void hiding()
    {
        orvexclipboardchooser chooser;
        chooser.resize(200, 200);
        QElapsedTimer clock;
        clock.start();
        static_cast<QWidget &>(chooser).show(); // through a plain widget pointer, as a host holds it
        QTRY_VERIFY_WITH_TIMEOUT(!chooser.isVisible(), 10000);
        // The first check comes after 1.5 s, giving the user time to reach the strip.
        QVERIFY2(clock.elapsed() >= 1400, qPrintable(QString::number(clock.elapsed())));

        // A button held over the strip keeps it through several 500 ms rounds.
        chooser.show();
        QVERIFY(QTest::qWaitForWindowExposed(&chooser));
        moveCursorTo(&chooser);
        QTest::mousePress(&chooser, Qt::LeftButton, Qt::NoModifier, chooser.rect().center());
        QTest::qWait(2600);
        QVERIFY(chooser.isVisible());
        QTest::mouseRelease(&chooser, Qt::LeftButton, Qt::NoModifier, chooser.rect().center());
        QTRY_VERIFY_WITH_TIMEOUT(!chooser.isVisible(), 10000);
    }

    void themeColour_data()
    {
        QTest::addColumn<bool>("segment");
        QTest::addColumn<QByteArray>("bytes"); // raw segment contents; empty = the streamed colour
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("text"); // black or white by lightness
        QTest::newRow("no segment") << false << QByteArray() << QString() << "#308cc6" << "white";
        QTest::newRow("host colour") << true << QByteArray() << "#ffcc00" << "#ffcc00" << "black";
        QTest::newRow("lightness 125") << true << QByteArray() << "#7d7d7d" << "#7d7d7d" << "black";
        QTest::newRow("not a colour") << true << QByteArray() << "no colour" << "#308cc6" << "white";
        QTest::newRow("garbage") << true << QByteArray("\xff\xff\xff\x7f") << QString() << "#308cc6" << "white";
    }

    void themeColour()
    {
        QFETCH(bool, segment);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, stored);
        QFETCH(QString, expected);
        QFETCH(QString, text);
        // The host writes its colour as a streamed QString into a segment of its own.
        QSharedMemory host("keltheme" + QString::number(QCoreApplication::applicationPid()));
        if (segment) {
            if (bytes.isEmpty()) {
                QDataStream stream(&bytes, QIODevice::WriteOnly);
                stream << stored;
            }
            QVERIFY2(host.create(qMax(bytes.size(), 64)), qPrintable(host.errorString()));
            memset(host.data(), 0, size_t(host.size()));
            memcpy(host.data(), bytes.constData(), size_t(bytes.size()));
        }
        orvexclipboardlabel label("Inbox", newBoard(true));
        QCOMPARE(label.getCurrentTheme(), expected);
        if (segment) // reading leaves the host's segment as it was
            QCOMPARE(QByteArray(static_cast<const char *>(host.constData()), bytes.size()), bytes);

        // A drag over the label lights it up in that colour until it leaves or the strip hides.
        QMimeData data;
        QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&label, &enter);
        QVERIFY(enter.isAccepted() && enter.dropAction() == Qt::CopyAction);
        QVERIFY(label.styleSheet().contains(QString("background-color: %1; color: %2;").arg(QColor(expected).name(), text)));
        QDragLeaveEvent leave;
        QApplication::sendEvent(&label, &leave);
        QCOMPARE(label.styleSheet(), orvexclipboardlabel::restingSheet());
        label.show();
        QApplication::sendEvent(&label, &enter);
        label.hide();
        QCOMPARE(label.styleSheet(), orvexclipboardlabel::restingSheet());
    }

    void snackbar()
    {
        SnackbarCatcher catcher;
        QObject receiver;
        QSnackbarEvent event("first");
        event.send(&receiver);
        event.setText("second");
        event.send(&receiver);
        QVERIFY(catcher.texts.isEmpty()); // posted, not sent
        // Without a receiver it goes to the application, where the host filters it.
        QSnackbarEvent("to the host").send();
        QTRY_COMPARE(catcher.texts, QStringList({"object:first", "object:second", "app:to the host"}));
    }


private:
    orvexwbwebview *newBoard(bool writeable);
    QList<orvexwbwebview *> m_boards;
};

orvexwbwebview *tst_TabWidgets::newBoard(bool writeable)
{
    m_boards << new orvexwbwebview;
    m_boards.last()->setWriteable(writeable);
    return m_boards.last();
}

QTEST_MAIN(tst_TabWidgets)
#include "tst_tabwidgets.moc"
