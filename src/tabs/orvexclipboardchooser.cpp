#include "orvexclipboardchooser.h"
#include "ui_orvexclipboardchooser.h"

#include "orvexclipboardlabel.h"
#include "orvexlog.h"
#include "orvexwbwebview.h"

#include <QApplication>
#include <QCursor>
#include <QDragEnterEvent>
#include <QScrollBar>

namespace {
const int kHideInterval = 500;
const int kFirstHideDelay = 1500;
const int kScrollInterval = 25;
const int kScrollStep = 10;
}

orvexclipboardchooser::orvexclipboardchooser(QWidget *parent)
    : QWidget(parent), ui(new Ui::orvexclipboardchooser)
{
    m_hideTimer.setInterval(kHideInterval);
    connect(&m_hideTimer, &QTimer::timeout, this, &orvexclipboardchooser::doHide);
    connect(&m_scrollUpTimer, &QTimer::timeout, this, &orvexclipboardchooser::doScrollUp);
    connect(&m_scrollDownTimer, &QTimer::timeout, this, &orvexclipboardchooser::doScrollDown);

    ui->setupUi(this);
    ui->m_scrollUp->installEventFilter(this);
    ui->m_scrollDown->installEventFilter(this);

    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    setMouseTracking(true);
    setAcceptDrops(true);
    setStyleSheet(QStringLiteral("background-color: lightgray;"));

    m_listWidget = new QWidget;
    m_listWidget->setObjectName(QStringLiteral("m_clipboardList"));
    m_listWidget->setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::MinimumExpanding);
    m_listWidget->setStyleSheet(QStringLiteral("background-color: darkgray;"));
    m_listLayout = new QVBoxLayout(m_listWidget);
    m_listLayout->setObjectName(QStringLiteral("m_clipboardListLayout"));
    // Replaces (and deletes) the form's placeholder contents.
    ui->m_scrollArea->setWidget(m_listWidget);

    connect(ui->m_scrollArea->verticalScrollBar(), SIGNAL(rangeChanged(int,int)),
            this, SLOT(sliderRangeChanged(int,int)));
    // No range change arrives while the list fits, so start without buttons.
    sliderRangeChanged(0, ui->m_scrollArea->verticalScrollBar()->maximum());
}

orvexclipboardchooser::~orvexclipboardchooser()
{
    // The buttons go with the form's widgets; stop filtering before that.
    ui->m_scrollUp->removeEventFilter(this);
    ui->m_scrollDown->removeEventFilter(this);
    delete ui;
}

void orvexclipboardchooser::clearClipboards()
{
    clearLayout(m_listLayout);
}

void orvexclipboardchooser::clearLayout(QLayout *layout)
{
    if (!layout)
        return;
    while (QLayoutItem *item = layout->takeAt(0)) {
        if (QLayout *nested = item->layout())
            clearLayout(nested);
        // Deleting a widget item leaves its widget alive, so it goes first;
        // a nested layout is its own item and goes with it.
        delete item->widget();
        delete item;
    }
}

void orvexclipboardchooser::addClipboard(const QString &name, orvexwbwebview *board)
{
    if (!board || !board->isWriteable())
        return;
    auto *label = new orvexclipboardlabel(name, board, m_listWidget);
    m_listLayout->addWidget(label);
}

QList<orvexclipboardlabel *> orvexclipboardchooser::labels() const
{
    QList<orvexclipboardlabel *> result;
    for (int i = 0; i < m_listLayout->count(); ++i)
        if (auto *label = qobject_cast<orvexclipboardlabel *>(m_listLayout->itemAt(i)->widget()))
            result << label;
    return result;
}

QToolButton *orvexclipboardchooser::scrollUpButton() const
{
    return ui->m_scrollUp;
}

QToolButton *orvexclipboardchooser::scrollDownButton() const
{
    return ui->m_scrollDown;
}

QScrollArea *orvexclipboardchooser::scrollArea() const
{
    return ui->m_scrollArea;
}

void orvexclipboardchooser::sliderRangeChanged(int min, int max)
{
    orvexDebug() << "Slider range changed " << min << max;
    const bool overflow = max >= 1;
    ui->m_scrollUp->setVisible(overflow);
    ui->m_scrollDown->setVisible(overflow);
}

bool orvexclipboardchooser::cursorInside(const QWidget *widget) const
{
    return widget->rect().contains(widget->mapFromGlobal(QCursor::pos()));
}

void orvexclipboardchooser::doScrollDown()
{
    QScrollBar *bar = ui->m_scrollArea->verticalScrollBar();
    if (bar->sliderPosition() < bar->maximum() && cursorInside(ui->m_scrollDown))
        bar->setSliderPosition(bar->sliderPosition() + kScrollStep);
    else
        m_scrollDownTimer.stop();
}

void orvexclipboardchooser::doScrollUp()
{
    QScrollBar *bar = ui->m_scrollArea->verticalScrollBar();
    if (bar->sliderPosition() > 0 && cursorInside(ui->m_scrollUp))
        bar->setSliderPosition(bar->sliderPosition() - kScrollStep);
    else
        m_scrollUpTimer.stop();
}

void orvexclipboardchooser::show()
{
    m_hideTimer.start(kFirstHideDelay);
    QWidget::show();
}

void orvexclipboardchooser::showEvent(QShowEvent *event)
{
    // A host that shows the strip through a QWidget pointer bypasses show();
    // it still hides itself then.
    if (!m_hideTimer.isActive())
        m_hideTimer.start(kFirstHideDelay);
    QWidget::showEvent(event);
}

void orvexclipboardchooser::doHide()
{
    const bool overChooser = underMouse() || cursorInside(this);
    if (overChooser && (QApplication::mouseButtons() & Qt::LeftButton)) {
        m_hideTimer.start(kHideInterval);
        return;
    }
    m_hideTimer.stop();
    hide();
}

bool orvexclipboardchooser::eventFilter(QObject *object, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
        if (object == ui->m_scrollDown) {
            orvexDebug() << "SCROLLDOWN DRAGENTER";
            m_scrollDownTimer.start(kScrollInterval);
            return true;
        }
        if (object == ui->m_scrollUp) {
            orvexDebug() << "SCROLLUP DRAGENTER";
            m_scrollUpTimer.start(kScrollInterval);
            return true;
        }
        break;
    case QEvent::Hide:
        if (object == ui->m_scrollDown || object == ui->m_scrollUp) {
            orvexDebug() << "HIDE";
            m_scrollUpTimer.stop();
            m_scrollDownTimer.stop();
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(object, event);
}

void orvexclipboardchooser::dragEnterEvent(QDragEnterEvent *event)
{
    orvexDebug() << "MOUSE DRAG ENTER";
    event->accept();
}

void orvexclipboardchooser::dragMoveEvent(QDragMoveEvent *event)
{
    event->accept();
}

void orvexclipboardchooser::dragLeaveEvent(QDragLeaveEvent *event)
{
    orvexDebug() << "MOUSE DRAG LEAVE";
    event->accept();
}
