#include "orvexarchiveclientplugin.h"

OrvexArchiveClientPlugin::OrvexArchiveClientPlugin(QObject *parent)
    : OrvexArchiveClient({}, parent)
{
}
