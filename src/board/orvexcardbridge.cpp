#include "orvexcardbridge.h"

#include "orvexwbwebview.h"

orvexcardbridge::orvexcardbridge(orvexwbwebview *board)
    : QObject(board)
    , m_board(board)
{
}

orvexcardbridge::~orvexcardbridge() = default;

void orvexcardbridge::addClipboard()
{
    m_board->addClipboard();
}

void orvexcardbridge::clearClipboard()
{
    m_board->clearClipboard();
}

void orvexcardbridge::removeClipboard()
{
    m_board->removeClipboard();
}

void orvexcardbridge::exportDocuments()
{
    m_board->exportDocuments();
}

void orvexcardbridge::mailDocuments()
{
    m_board->mailDocuments();
}

void orvexcardbridge::setPermissions()
{
    m_board->setPermissions();
}

void orvexcardbridge::removeCard(QString id, bool doServer)
{
    m_board->removeCard(id, doServer);
}

void orvexcardbridge::openDocument(QString id, QString bemerkung, QString cardid)
{
    m_board->openDocument(id, bemerkung, cardid);
}

void orvexcardbridge::showClassification(QString id)
{
    m_board->showClassification(id);
}

bool orvexcardbridge::saveCard(QString id, QString text)
{
    return m_board->saveCard(id, text);
}

void orvexcardbridge::noteCut(QString id)
{
    m_board->noteCut(id);
}

void orvexcardbridge::searchCards(QString text)
{
    m_board->searchCards(text);
}

QString orvexcardbridge::getCardPixmap(QString cardid, QString docid, QString curpage)
{
    return m_board->getCardPixmap(cardid, docid, curpage);
}

void orvexcardbridge::startDrag()
{
    m_board->startDrag();
}

void orvexcardbridge::stopDrag()
{
    m_board->stopDrag();
}

void orvexcardbridge::dragCard(QString cardId)
{
    m_board->dragCard(cardId);
}
