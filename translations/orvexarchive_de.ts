<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>OrvexArchive</name>
    <message>
        <source>No archive is open</source>
        <translation>Es ist kein Archiv geöffnet</translation>
    </message>
    <message>
        <source>%1 was not archived</source>
        <translation>%1 wurde nicht archiviert</translation>
    </message>
</context>
<context>
    <name>OrvexArchiveClient</name>
    <message>
        <source>No archive is open</source>
        <translation>Es ist kein Archiv geöffnet</translation>
    </message>
    <message>
        <source>Not connected to the archive</source>
        <translation>Nicht mit dem Archiv verbunden</translation>
    </message>
    <message>
        <source>Cannot connect to %1:%2 (the archive runs on %3:%4)</source>
        <translation>Keine Verbindung zu %1:%2 möglich (das Archiv läuft auf %3:%4)</translation>
    </message>
    <message>
        <source>Log in needs an open connection</source>
        <translation>Die Anmeldung braucht eine offene Verbindung</translation>
    </message>
    <message>
        <source>Login failed for %1: unknown user, wrong password or tenant</source>
        <translation>Anmeldung für %1 fehlgeschlagen: unbekannter Benutzer, falsches Passwort oder falscher Mandant</translation>
    </message>
    <message>
        <source>Selecting an archive needs a login</source>
        <translation>Die Auswahl eines Archivs braucht eine Anmeldung</translation>
    </message>
    <message>
        <source>Unknown archive %1</source>
        <translation>Unbekanntes Archiv %1</translation>
    </message>
    <message>
        <source>Unknown document %1</source>
        <translation>Unbekanntes Dokument %1</translation>
    </message>
    <message>
        <source>%1 may not read document %2</source>
        <translation>%1 darf Dokument %2 nicht lesen</translation>
    </message>
    <message>
        <source>Document %1 has no version %2</source>
        <translation>Dokument %1 hat keine Version %2</translation>
    </message>
    <message>
        <source>Cannot read %1: %2</source>
        <translation>%1 kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>The transfer was canceled.</source>
        <translation>Die Übertragung wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Another transfer of this client is still running.</source>
        <translation>Eine andere Übertragung dieses Clients läuft noch.</translation>
    </message>
    <message>
        <source>No temporary folder for the export: %1</source>
        <translation>Kein temporärer Ordner für den Export: %1</translation>
    </message>
    <message>
        <source>Cannot create %1</source>
        <translation>%1 kann nicht angelegt werden</translation>
    </message>
    <message>
        <source>Invalid version %1</source>
        <translation>Ungültige Version %1</translation>
    </message>
    <message>
        <source>Empty search</source>
        <translation>Leere Suche</translation>
    </message>
    <message>
        <source>Not a document id: %1</source>
        <translation>Keine Dokument-ID: %1</translation>
    </message>
    <message>
        <source>Unknown documents: %1</source>
        <translation>Unbekannte Dokumente: %1</translation>
    </message>
    <message>
        <source>Document %1 has no page %2</source>
        <translation>Dokument %1 hat keine Seite %2</translation>
    </message>
    <message>
        <source>Invalid image size %1</source>
        <translation>Ungültige Bildgröße %1</translation>
    </message>
    <message>
        <source>Cannot read the file of document %1</source>
        <translation>Die Datei von Dokument %1 kann nicht gelesen werden</translation>
    </message>
    <message>
        <source>%1 may not delete documents</source>
        <translation>%1 darf keine Dokumente löschen</translation>
    </message>
    <message>
        <source>Cannot write the document info: %1</source>
        <translation>Die Dokumentinformation kann nicht geschrieben werden: %1</translation>
    </message>
    <message>
        <source>No permission to export: %1</source>
        <translation>Keine Berechtigung zum Exportieren: %1</translation>
    </message>
    <message>
        <source>Not a document id and version: %1 %2</source>
        <translation>Keine Dokument-ID und Version: %1 %2</translation>
    </message>
    <message>
        <source>Cannot read %1</source>
        <translation>%1 kann nicht gelesen werden</translation>
    </message>
    <message>
        <source>No upload to check</source>
        <translation>Kein Upload zu prüfen</translation>
    </message>
    <message>
        <source>Unknown upload %1</source>
        <translation>Unbekannter Upload %1</translation>
    </message>
    <message>
        <source>document %1 was not exported</source>
        <translation>Dokument %1 wurde nicht exportiert</translation>
    </message>
    <message>
        <source>document %1 was not deleted</source>
        <translation>Dokument %1 wurde nicht gelöscht</translation>
    </message>
    <message>
        <source>%1 was not archived</source>
        <translation>%1 wurde nicht archiviert</translation>
    </message>
    <message>
        <source>Cannot connect to %1: %2</source>
        <translation>Keine Verbindung zu %1: %2</translation>
    </message>
    <message>
        <source>Cannot connect to %1 on port %2: the address names port %3</source>
        <translation>Keine Verbindung zu %1 über Port %2: die Adresse nennt Port %3</translation>
    </message>
    <message>
        <source>Log in first: the server tells its archive names only to its users</source>
        <translation>Erst anmelden: Der Server nennt seine Archive nur seinen Benutzern</translation>
    </message>
    <message>
        <source>Login failed for %1: %2</source>
        <translation>Anmeldung für %1 fehlgeschlagen: %2</translation>
    </message>
</context>
<context>
    <name>OrvexArchiveCopy</name>
    <message>
        <source>%1 holds an archive already; the copy needs an empty one.</source>
        <translation>%1 enthält bereits ein Archiv; die Kopie braucht ein leeres.</translation>
    </message>
    <message>
        <source>%1: %2 rows</source>
        <translation>%1: %2 Zeilen</translation>
    </message>
    <message>
        <source>%1: %2 rows copied</source>
        <translation>%1: %2 Zeilen kopiert</translation>
    </message>
    <message>
        <source>full text: %1 documents indexed</source>
        <translation>Volltext: %1 Dokumente indiziert</translation>
    </message>
    <message>
        <source>%1: cannot be read: %2</source>
        <translation>%1: kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>%1: %2 rows, %3</source>
        <translation>%1: %2 Zeilen, %3</translation>
    </message>
    <message>
        <source>same content</source>
        <translation>gleicher Inhalt</translation>
    </message>
    <message>
        <source>DIFFERENT</source>
        <translation>ABWEICHEND</translation>
    </message>
    <message>
        <source>full text</source>
        <translation>Volltext</translation>
    </message>
    <message>
        <source>files: %1 checked, every content hash matches</source>
        <translation>Dateien: %1 geprüft, jede Prüfsumme stimmt</translation>
    </message>
    <message>
        <source>files: %1 checked, DIFFERENT content: %2</source>
        <translation>Dateien: %1 geprüft, ABWEICHENDER Inhalt: %2</translation>
    </message>
</context>
<context>
    <name>OrvexArchiveLocation</name>
    <message>
        <source>No archive folder given</source>
        <translation>Kein Archivordner angegeben</translation>
    </message>
    <message>
        <source>The server address %1 has an unclosed [</source>
        <translation>Die Serveradresse %1 hat eine offene [</translation>
    </message>
    <message>
        <source>The server address %1 has an unknown option &quot;%2&quot;</source>
        <translation>Die Serveradresse %1 hat eine unbekannte Option „%2“</translation>
    </message>
    <message>
        <source>The server address %1 has no valid port: %2</source>
        <translation>Die Serveradresse %1 hat keinen gültigen Port: %2</translation>
    </message>
    <message>
        <source>The server address %1 names no database (postgresql://user@host:port/database)</source>
        <translation>Die Serveradresse %1 nennt keine Datenbank (postgresql://benutzer@host:port/datenbank)</translation>
    </message>
</context>
<context>
    <name>OrvexArchiveMigrate</name>
    <message>
        <source>Copies the archive at SOURCE into the empty archive at TARGET and compares both: the rows of every table and the content hash of every document file.
SOURCE and TARGET are archive folders or server addresses (postgresql://user@host:port/database); on a server, connect as the role that owns the archive&apos;s tables.
Exit codes: 0 copied and equal, 1 bad command line, 2 not copied, 3 copied but different.</source>
        <translation>Kopiert das Archiv QUELLE in das leere Archiv ZIEL und vergleicht beide: die Zeilen jeder Tabelle und die Prüfsumme jeder Dokumentdatei.
QUELLE und ZIEL sind Archivordner oder Serveradressen (postgresql://benutzer@host:port/datenbank); auf einem Server als die Rolle verbinden, der die Tabellen des Archivs gehören.
Rückgabewerte: 0 kopiert und gleich, 1 falsche Befehlszeile, 2 nicht kopiert, 3 kopiert, aber abweichend.</translation>
    </message>
    <message>
        <source>The archive to copy, e.g. ~/.local/share/orvex/archive.</source>
        <translation>Das zu kopierende Archiv, z. B. ~/.local/share/orvex/archive.</translation>
    </message>
    <message>
        <source>The empty archive to fill, e.g. postgresql://orvex@db/orvex.</source>
        <translation>Das zu füllende leere Archiv, z. B. postgresql://orvex@db/orvex.</translation>
    </message>
    <message>
        <source>orvexarchive-migrate: give SOURCE and TARGET.</source>
        <translation>orvexarchive-migrate: QUELLE und ZIEL angeben.</translation>
    </message>
    <message>
        <source>There is no archive in %1.</source>
        <translation>In %1 gibt es kein Archiv.</translation>
    </message>
    <message>
        <source>The archive %1 cannot be opened: %2</source>
        <translation>Das Archiv %1 kann nicht geöffnet werden: %2</translation>
    </message>
    <message>
        <source>Copying %1 into %2</source>
        <translation>Kopiere %1 nach %2</translation>
    </message>
    <message>
        <source>Nothing was copied: %1</source>
        <translation>Es wurde nichts kopiert: %1</translation>
    </message>
    <message>
        <source>These archive users have no login role on the server yet; create one each (CREATE ROLE &quot;name&quot; LOGIN PASSWORD &apos;...&apos;): %1</source>
        <translation>Diese Archivbenutzer haben noch keine Anmelderolle auf dem Server; legen Sie je eine an (CREATE ROLE &quot;name&quot; LOGIN PASSWORD &apos;...&apos;): %1</translation>
    </message>
    <message>
        <source>The copy differs from its source.</source>
        <translation>Die Kopie weicht von ihrer Quelle ab.</translation>
    </message>
    <message>
        <source>Done: the copy holds the same as its source.</source>
        <translation>Fertig: Die Kopie enthält dasselbe wie ihre Quelle.</translation>
    </message>
</context>
<context>
    <name>OrvexArchiveStore</name>
    <message>
        <source>Cannot open the archive database %1: %2</source>
        <translation>Die Archivdatenbank %1 kann nicht geöffnet werden: %2</translation>
    </message>
    <message>
        <source>%1 is not an archive database or is damaged: %2</source>
        <translation>%1 ist keine Archivdatenbank oder ist beschädigt: %2</translation>
    </message>
    <message>
        <source>the archive folder %1 was not created</source>
        <translation>der Archivordner %1 wurde nicht angelegt</translation>
    </message>
    <message>
        <source>the folder %1 was not created</source>
        <translation>der Ordner %1 wurde nicht angelegt</translation>
    </message>
    <message>
        <source>%1 is not an archive database: %2</source>
        <translation>%1 ist keine Archivdatenbank: %2</translation>
    </message>
    <message>
        <source>The archive database %1 is damaged: %2</source>
        <translation>Die Archivdatenbank %1 ist beschädigt: %2</translation>
    </message>
    <message>
        <source>The archive %1 is read-only and needs an upgrade to schema version %2 before it can be opened.</source>
        <translation>Das Archiv %1 ist schreibgeschützt und muss vor dem Öffnen auf die Schemaversion %2 aktualisiert werden.</translation>
    </message>
    <message>
        <source>the archive was not upgraded</source>
        <translation>das Archiv wurde nicht aktualisiert</translation>
    </message>
    <message>
        <source>The archive is not open</source>
        <translation>Das Archiv ist nicht geöffnet</translation>
    </message>
    <message>
        <source>The change was refused</source>
        <translation>Die Änderung wurde abgelehnt</translation>
    </message>
    <message>
        <source>the user %1 was not added</source>
        <translation>der Benutzer %1 wurde nicht angelegt</translation>
    </message>
    <message>
        <source>the duplicate check was not stored</source>
        <translation>die Dublettenprüfung wurde nicht gespeichert</translation>
    </message>
    <message>
        <source>No archive folder given</source>
        <translation>Kein Archivordner angegeben</translation>
    </message>
    <message>
        <source>Cannot create the sample archive: %1</source>
        <translation>Das Beispielarchiv kann nicht angelegt werden: %1</translation>
    </message>
    <message>
        <source>%1 is not an archive database (no schema version)</source>
        <translation>%1 ist keine Archivdatenbank (keine Schemaversion)</translation>
    </message>
    <message>
        <source>The archive database %1 has schema version %2; this program knows only up to %3</source>
        <translation>Die Archivdatenbank %1 hat die Schemaversion %2; dieses Programm kennt nur bis %3</translation>
    </message>
    <message>
        <source>Invalid user name</source>
        <translation>Ungültiger Benutzername</translation>
    </message>
    <message>
        <source>Unknown document %1</source>
        <translation>Unbekanntes Dokument %1</translation>
    </message>
    <message>
        <source>Document %1 vanished during the import</source>
        <translation>Dokument %1 ist während des Imports verschwunden</translation>
    </message>
    <message>
        <source>Unknown upload %1</source>
        <translation>Unbekannter Upload %1</translation>
    </message>
</context>
<context>
    <name>OrvexClassifyClient</name>
    <message>
        <source>Not authorised</source>
        <translation>Nicht berechtigt</translation>
    </message>
    <message>
        <source>the clipboard was not changed</source>
        <translation>die Zwischenablage wurde nicht geändert</translation>
    </message>
</context>
<context>
    <name>OrvexContentHash</name>
    <message>
        <source>Cannot read %1: %2</source>
        <translation>%1 kann nicht gelesen werden: %2</translation>
    </message>
</context>
<context>
    <name>OrvexPostgresBackend</name>
    <message>
        <source>The file is incomplete on the archive server.</source>
        <translation>Die Datei ist auf dem Archivserver unvollständig.</translation>
    </message>
    <message>
        <source>The archive server stored no file row.</source>
        <translation>Der Archivserver hat keine Dateizeile gespeichert.</translation>
    </message>
    <message>
        <source>The PostgreSQL driver of Qt is not installed (Debian package libqt5sql5-psql).</source>
        <translation>Der PostgreSQL-Treiber von Qt ist nicht installiert (Debian-Paket libqt5sql5-psql).</translation>
    </message>
    <message>
        <source>The option %1 of the server address may not contain &quot;;&quot;.</source>
        <translation>Die Option %1 der Serveradresse darf kein „;“ enthalten.</translation>
    </message>
    <message>
        <source>Cannot connect to the archive server %1 as %2: %3</source>
        <translation>Keine Verbindung zum Archivserver %1 als %2: %3</translation>
    </message>
    <message>
        <source>The archive server gave no number for a new document.</source>
        <translation>Der Archivserver hat keine Nummer für ein neues Dokument vergeben.</translation>
    </message>
    <message>
        <source>Cannot read %1: %2</source>
        <translation>%1 kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>The file %1 is missing on the archive server.</source>
        <translation>Die Datei %1 fehlt auf dem Archivserver.</translation>
    </message>
    <message>
        <source>The file %1 is not on the archive server.</source>
        <translation>Die Datei %1 ist nicht auf dem Archivserver.</translation>
    </message>
    <message>
        <source>Cannot make a temporary copy of %1: %2</source>
        <translation>Von %1 kann keine temporäre Kopie angelegt werden: %2</translation>
    </message>
    <message>
        <source>The archive server refused the change: you may not edit this clipboard.</source>
        <translation>Der Archivserver hat die Änderung abgelehnt: Sie dürfen diese Zwischenablage nicht bearbeiten.</translation>
    </message>
    <message>
        <source>The archive server refused the change: you lack the right for it.</source>
        <translation>Der Archivserver hat die Änderung abgelehnt: Ihnen fehlt das Recht dazu.</translation>
    </message>
    <message>
        <source>The archive server refused the access: you lack the right for it.</source>
        <translation>Der Archivserver hat den Zugriff abgelehnt: Ihnen fehlt das Recht dazu.</translation>
    </message>
    <message>
        <source>The archive is read-only</source>
        <translation>Das Archiv ist schreibgeschützt</translation>
    </message>
    <message>
        <source>The archive server has no space left.</source>
        <translation>Der Archivserver hat keinen Platz mehr.</translation>
    </message>
    <message>
        <source>The archive server is out of resources.</source>
        <translation>Dem Archivserver gehen die Ressourcen aus.</translation>
    </message>
    <message>
        <source>The archive server was busy with a conflicting change; please try again.</source>
        <translation>Der Archivserver war mit einer widersprechenden Änderung beschäftigt; bitte noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The archive server took too long to answer.</source>
        <translation>Der Archivserver hat zu lange für die Antwort gebraucht.</translation>
    </message>
    <message>
        <source>The archive server refused the login.</source>
        <translation>Der Archivserver hat die Anmeldung abgelehnt.</translation>
    </message>
    <message>
        <source>The archive database does not exist on the server.</source>
        <translation>Die Archivdatenbank gibt es auf dem Server nicht.</translation>
    </message>
    <message>
        <source>The archive database on the server is not set up (or is of another version).</source>
        <translation>Die Archivdatenbank auf dem Server ist nicht eingerichtet (oder hat eine andere Version).</translation>
    </message>
    <message>
        <source>The archive holds this already.</source>
        <translation>Das Archiv enthält dies bereits.</translation>
    </message>
    <message>
        <source>This refers to something the archive does not hold (any more).</source>
        <translation>Dies verweist auf etwas, das das Archiv nicht (mehr) enthält.</translation>
    </message>
    <message>
        <source>The archive server refused a value.</source>
        <translation>Der Archivserver hat einen Wert abgelehnt.</translation>
    </message>
    <message>
        <source>The connection to the archive server was lost.</source>
        <translation>Die Verbindung zum Archivserver ist abgebrochen.</translation>
    </message>
    <message>
        <source>The archive server refused the request (error %1).</source>
        <translation>Der Archivserver hat die Anfrage abgelehnt (Fehler %1).</translation>
    </message>
</context>
<context>
    <name>OrvexSampleArchive</name>
    <message>
        <source>Invoice</source>
        <translation>Rechnung</translation>
    </message>
    <message>
        <source>Contract</source>
        <translation>Vertrag</translation>
    </message>
    <message>
        <source>Letter</source>
        <translation>Schreiben</translation>
    </message>
    <message>
        <source>Delivery note</source>
        <translation>Lieferschein</translation>
    </message>
    <message>
        <source>Offer</source>
        <translation>Angebot</translation>
    </message>
    <message>
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>In Bearbeitung</translation>
    </message>
    <message>
        <source>Approved</source>
        <translation>Freigegeben</translation>
    </message>
    <message>
        <source>Archived</source>
        <translation>Archiviert</translation>
    </message>
    <message>
        <source>All users</source>
        <translation>Alle Benutzer</translation>
    </message>
    <message>
        <source>Administrators</source>
        <translation>Administratoren</translation>
    </message>
</context>
<context>
    <name>OrvexStorageError</name>
    <message>
        <source>The archive database cannot be opened</source>
        <translation>Die Archivdatenbank kann nicht geöffnet werden</translation>
    </message>
    <message>
        <source>The archive is in use by another program</source>
        <translation>Das Archiv wird von einem anderen Programm verwendet</translation>
    </message>
    <message>
        <source>The archive database is damaged</source>
        <translation>Die Archivdatenbank ist beschädigt</translation>
    </message>
    <message>
        <source>The change contradicts what the archive holds</source>
        <translation>Die Änderung widerspricht dem Inhalt des Archivs</translation>
    </message>
    <message>
        <source>The archive database failed</source>
        <translation>Die Archivdatenbank meldet einen Fehler</translation>
    </message>
    <message>
        <source>The archive database failed (error %1)</source>
        <translation>Die Archivdatenbank meldet einen Fehler (Code %1)</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>The archive is read-only</source>
        <translation>Das Archiv ist schreibgeschützt</translation>
    </message>
</context>
</TS>
