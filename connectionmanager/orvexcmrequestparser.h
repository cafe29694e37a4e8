#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// One request of the connection protocol as the Connection Manager receives it.
struct OrvexCmRequest
{
    enum Kind { Invalid, DndPort, Profiles, UseProfile, ReloadProfile, OpenChat };

    Kind kind = Invalid;
    // UseProfile: process id, profile id, program path. ReloadProfile: profile
    // id. OpenChat: id, then the two texts in the client's argument order (a, b),
    // although b travels first.
    QStringList args;
    bool trailingHash = false; // UseProfile: the form ending in "#\r\n"
    QByteArray raw;            // the bytes of the request, for the log
};

// Cuts the byte stream of one client connection into requests. Requests end in
// different ways: "GETDNDPORT" has a fixed length, "GETPROFILES",
// "USEPROFILE#..." and "RELOADPROFILE#..." end with "\r\n", and "OPENCHAT..."
// has no end marker at all: it is complete when the client stops sending.
class OrvexCmRequestParser
{
public:
    void append(const QByteArray &bytes);
    // The next complete request; false when more bytes are needed.
    bool next(OrvexCmRequest &request);
    // True while an unterminated request waits for the client to go quiet.
    bool hasUnterminated() const;
    // Takes that request once the client went quiet or hung up.
    bool takeUnterminated(OrvexCmRequest &request);

    // A request line longer than this is garbage.
    static constexpr int kMaxRequestSize = 64 * 1024;

private:
    void skipLineEnds();
    bool takeInvalid(OrvexCmRequest &request);

    QByteArray m_buffer;
};
