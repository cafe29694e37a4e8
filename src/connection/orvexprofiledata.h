#pragma once

#include "orvexworkbenchglobal.h"

#include <QKeySequence>
#include <QMetaType>
#include <QString>
#include <QStringList>

class QDataStream;

// One connection profile as the Connection Manager lists it. The members keep
// the types of the wire record, in wire order, so that a record read and
// written again comes out byte for byte the same.
class ORVEXWORKBENCH_EXPORT orvexProfileData
{
public:
    qint64 id = 0;
    QString name;          // shown in the profile dialog
    QString description;
    QString serverHost;
    QString archiveName;
    QString userName;
    bool active = false;   // the profile the Connection Manager has connected
    QStringList archives;  // archives the server offers
    qint64 serverPort = 0;
    QKeySequence shortcut; // switches the Connection Manager to this profile
    QString domain;
    QString language;
    QString color;
    QString dataPath;      // local data folder (the embedded archive's folder)
    QStringList roles;
    QStringList options;   // "key=value"

    bool operator==(const orvexProfileData &other) const;
    bool operator!=(const orvexProfileData &other) const { return !(*this == other); }
};

// Wire order: qint64 id, five QString, bool, QStringList, qint64, QKeySequence,
// four QString, two QStringList. A record cut short or carrying impossible
// counts leaves the stream in a failed status; callers check status().
ORVEXWORKBENCH_EXPORT QDataStream &operator>>(QDataStream &in, orvexProfileData &profile);
ORVEXWORKBENCH_EXPORT QDataStream &operator<<(QDataStream &out, const orvexProfileData &profile);

Q_DECLARE_METATYPE(orvexProfileData)
