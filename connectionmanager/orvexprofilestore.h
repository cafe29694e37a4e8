#pragma once

#include "orvexprofiledata.h"

#include <QList>
#include <QString>

// The stand-in's profiles, kept in a small INI file:
//
//   [General]
//   dndPort=47011                  (optional)
//   [profiles]
//   size=1
//   1\id=1
//   1\name=Sample archive
//   1\serverHost=localhost ... one key per field of orvexProfileData
//
// A file without profiles gets a default profile for the embedded archive.
// A profile's dataPath is its archive: a folder, or a server address
// (postgresql://user@host:port/database), whose parts then fill the
// profile's server, port, user and archive where the file leaves them empty.
class OrvexProfileStore
{
public:
    explicit OrvexProfileStore(const QString &fileName = defaultFileName());

    // Reads the file, writing the default profile first when it holds none.
    // False when the file cannot be read or written.
    bool load();

    QString fileName() const { return m_fileName; }
    QList<orvexProfileData> profiles() const { return m_profiles; }
    bool contains(qint64 id) const;
    // Marks the profile a client now uses as the active one (in memory).
    void setActive(qint64 id);
    // The drag-and-drop port the file asks for; 0 when it names none.
    int dndPort() const { return m_dndPort; }
    // The archive of the active profile (else of the first); empty without profiles.
    QString activeArchive() const;

    static QString defaultFileName();
    static QString defaultArchivePath();
    static orvexProfileData defaultProfile();

private:
    void write(const QList<orvexProfileData> &profiles);

    QString m_fileName;
    QList<orvexProfileData> m_profiles;
    int m_dndPort = 0;
};
