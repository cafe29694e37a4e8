#pragma once

#include "orvexworkbenchglobal.h"

#include <QObject>
#include <QString>

class orvexwbwebview;

// The object the card page reaches through the web channel, as "cardHandler".
// Its slots are exactly the page's operations, each forwarded to the board; it
// has no properties and no signals of its own, so page scripts reach nothing of
// the view itself (load, setUrl, close, ...).
class ORVEXWORKBENCH_EXPORT orvexcardbridge : public QObject
{
    Q_OBJECT

public:
    // The bridge is a child of the board and forwards to it while it lives.
    explicit orvexcardbridge(orvexwbwebview *board);
    ~orvexcardbridge() override;

public slots:
    void addClipboard();
    void clearClipboard();
    void removeClipboard();
    void exportDocuments();
    void mailDocuments();
    void setPermissions();
    void removeCard(QString id, bool doServer);
    void openDocument(QString id, QString bemerkung, QString cardid);
    void showClassification(QString id);
    bool saveCard(QString id, QString text);
    // What was typed or pasted into the card's note went beyond the limit and was cut.
    void noteCut(QString id);
    void searchCards(QString text);
    QString getCardPixmap(QString cardid, QString docid, QString curpage);
    void startDrag();
    void stopDrag();
    // The user started to drag the card: the board carries it on as a drag of its document.
    void dragCard(QString cardId);

private:
    orvexwbwebview *m_board;
};
