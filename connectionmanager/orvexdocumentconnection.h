#pragma once

#include "orvexdocumentarchive.h"
#include "orvexhttpheadreader.h"
#include "orvexhttpresponse.h"

#include <QFile>
#include <QObject>
#include <QString>

#include <memory>

class QTcpSocket;
class QTimer;

// What every connection of one document server checks against.
struct OrvexDocumentPolicy
{
    qint64 ownerUid = -1;    // the only user served
    int port = 0;            // the server's port, for the Host header
    QString machineName;     // this machine's host name, for the Host header
    int requestDeadlineMs = 10000; // the whole request head must arrive within this
    int stallTimeoutMs = 30000;    // an answer the client stops taking is given up after this
};

// One client connection of the document server, living on the server's I/O
// thread. It reads the request head as bytes arrive, never blocking a thread
// on a slow client: the head must be complete within the deadline, counted
// from the connection's start. Only a complete, allowed request goes on
// (documentRequested), and the file comes back through deliver(). The answer
// is written as the client takes it; then the connection closes.
class OrvexDocumentConnection : public QObject
{
    Q_OBJECT

public:
    OrvexDocumentConnection(QTcpSocket *socket, qint64 peerUid, const OrvexDocumentPolicy &policy,
                            QObject *parent = nullptr);
    ~OrvexDocumentConnection() override;

    // True until the head is complete: such a connection holds nothing but its bytes.
    bool isReadingHead() const { return m_phase == Phase::ReadingHead; }
    // The fetched document for the request that documentRequested announced.
    void deliver(const std::shared_ptr<OrvexDocumentArchive::Document> &document);
    // Drops the connection at once.
    void abort();

signals:
    void documentRequested(OrvexDocumentConnection *connection, qlonglong docId, int version);
    void finished(OrvexDocumentConnection *connection);

private:
    enum class Phase { ReadingHead, Fetching, Writing, Closing, Done };

    void readHead();
    void headComplete();
    // Answers 403 to anybody but the owner; true when it did.
    bool refusedForeignUser();
    void answer(const OrvexHttpResponse &response, const QString &note = {});
    void writeMore();
    void closeGracefully();
    void finish();
    void log(int status, const QString &note) const;

    QTcpSocket *m_socket; // child
    QTimer *m_deadline;   // child: the request head's deadline, then the stall timer
    const OrvexDocumentPolicy m_policy;
    const qint64 m_peerUid;
    Phase m_phase = Phase::ReadingHead;
    OrvexHttpHeadReader m_reader;
    QByteArray m_rangeHeader;
    QString m_requestName;
    bool m_headRequest = false;
    std::shared_ptr<OrvexDocumentArchive::Document> m_document;
    QFile m_file;
    OrvexHttpResponse m_response;
    int m_nextPiece = 0;
    qint64 m_pieceDone = 0;
};
