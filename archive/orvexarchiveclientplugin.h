#pragma once

#include "orvexarchiveclient.h"

// Root object of the client plugin library libkelarchiveclient.so. It is a client
// without an archive of its own; createClient() opens the archive named by
// ORVEX_ARCHIVE_DIR (else the default location) and returns a client on it.
class OrvexArchiveClientPlugin : public OrvexArchiveClient
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID kelArchiveClientInterface_iid)
    Q_INTERFACES(kelArchiveClientInterface)

public:
    explicit OrvexArchiveClientPlugin(QObject *parent = nullptr);
};
