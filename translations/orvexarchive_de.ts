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
