#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QString>

// One duplicate found by the archive for a file being uploaded: the text shown
// above its page image, the key of the uploaded file's page image it matches
// (a key of the originals map), and the page image as encoded bytes.
struct thumbData
{
    QString caption;
    QString originalKey;
    QByteArray image;
};

Q_DECLARE_METATYPE(thumbData)
