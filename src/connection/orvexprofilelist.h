#pragma once

#include "orvexprofiledata.h"
#include "orvexworkbenchglobal.h"

#include <QByteArray>
#include <QList>
#include <QString>

// The block of a profile-list reply: a header text, then profile records up to
// the end of the block, in the stream format of version 10.
struct ORVEXWORKBENCH_EXPORT OrvexProfileList
{
    QString header; // read, not used
    QList<orvexProfileData> profiles;
    // False when a record was cut short or corrupt; the records before it are kept.
    bool complete = true;

    // False when not even the header can be read.
    static bool read(const QByteArray &block, OrvexProfileList &list);
};
