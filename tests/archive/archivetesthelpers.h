#pragma once

#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>
#include <QUuid>
#include <QVariant>

// Every row of every table of an archive database, read through a connection of
// its own: two equal snapshots mean nothing was written in between.
inline QStringList archiveSnapshot(const QString &folder)
{
    const QString name = QStringLiteral("snapshot-") + QUuid::createUuid().toString();
    QStringList rows;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(folder + QStringLiteral("/archive.sqlite"));
        if (!db.open())
            return {QStringLiteral("cannot open")};
        QSqlQuery tables(db);
        tables.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' "
                                   "AND name NOT LIKE 'doc_text_%' AND name NOT LIKE 'sqlite_%' ORDER BY name"));
        QStringList names;
        while (tables.next())
            names << tables.value(0).toString();
        for (const QString &table : qAsConst(names)) {
            QSqlQuery query(db);
            query.exec(QStringLiteral("SELECT * FROM %1").arg(table));
            while (query.next()) {
                QStringList fields{table};
                for (int i = 0; i < query.record().count(); ++i)
                    fields << query.value(i).toString();
                rows << fields.join(QLatin1Char('|'));
            }
        }
        db.close();
    }
    rows.sort();
    QSqlDatabase::removeDatabase(name);
    return rows;
}

inline bool connectClient(kelArchiveClientInterface *client, const OrvexConnectionValues &values)
{
    client->resetConnection();
    return client->openConnection(values.server, values.port)
        && client->logIn(values.login1, values.login2, values.login3)
        && client->selectArchive(values.archiveName);
}
