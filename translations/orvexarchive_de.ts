<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
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
        <source>Cannot write %1: %2</source>
        <translation>%1 kann nicht geschrieben werden: %2</translation>
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
</context>
<context>
    <name>OrvexClassifyClient</name>
    <message>
        <source>Not authorised</source>
        <translation>Nicht berechtigt</translation>
    </message>
</context>
<context>
    <name>OrvexContentHash</name>
    <message>
        <source>Cannot read %1: %2</source>
        <translation>%1 kann nicht gelesen werden: %2</translation>
    </message>
</context>
</TS>
