// A client library in the shape of the host's: its root object makes
// recording clients. ORVEX_TEST_NO_CLIENT makes it hand out none.
#include "recordingarchiveclient.h"

class TestClientPlugin : public RecordingArchiveClient
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID kelArchiveClientInterface_iid)
    Q_INTERFACES(kelArchiveClientInterface)

public:
    kelArchiveClientInterface *createClient(QString applicationDirPath) override
    {
        if (qEnvironmentVariableIsSet("ORVEX_TEST_NO_CLIENT"))
            return nullptr;
        auto *client = new RecordingArchiveClient;
        client->setObjectName(applicationDirPath);
        Document document;
        document.docId = 7;
        document.fileName = QStringLiteral("seven.pdf");
        document.content = QByteArray(300 * 1024, 'x');
        client->addDocument(document);
        client->setChunkSize(4096);
        return client;
    }
};

#include "testclientplugin.moc"
