#pragma once

// What every fuzz target shares: silence (the readers log what they refuse,
// which would slow the fuzzer down to a crawl) and a check that stops the run
// with the input when a reader breaks its own promise.
#include <QByteArray>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(condition)                                                                \
    do {                                                                                     \
        if (!(condition)) {                                                                  \
            std::fprintf(stderr, "fuzz check failed: %s (%s:%d)\n", #condition, __FILE__, __LINE__); \
            std::abort();                                                                    \
        }                                                                                    \
    } while (false)

inline void silenceQtMessages()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
}

inline QByteArray fuzzBytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), int(size));
}
