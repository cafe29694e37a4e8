<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Orvexworkbenchplugin</name>
    <message>
        <source>Clipboard</source>
        <translation>Zwischenablage</translation>
    </message>
</context>
<context>
    <name>orvexwbwebview</name>
    <message>
        <source>New Clipboard</source>
        <translation>Neue Zwischenablage</translation>
    </message>
    <message>
        <source>Clear Clipboard</source>
        <translation>Zwischenablage leeren</translation>
    </message>
    <message>
        <source>Remove Clipboard</source>
        <translation>Zwischenablage entfernen</translation>
    </message>
    <message>
        <source>Export Documents</source>
        <translation>Dokumente exportieren</translation>
    </message>
    <message>
        <source>Mail Documents</source>
        <translation>Dokumente mailen</translation>
    </message>
    <message>
        <source>Permissions</source>
        <translation>Berechtigungen</translation>
    </message>
    <message>
        <source>Drop Document here</source>
        <translation>Dokument hier ablegen</translation>
    </message>
    <message>
        <source>Search...</source>
        <translation>Suchen...</translation>
    </message>
    <message>
        <source>Loading...</source>
        <translation>Lade...</translation>
    </message>
    <message>
        <source>Notice...</source>
        <translation>Notiz...</translation>
    </message>
    <message>
        <source>Open Document</source>
        <translation>Dokument öffnen</translation>
    </message>
    <message>
        <source>Remove Card</source>
        <translation>Karte entfernen</translation>
    </message>
    <message>
        <source>Show Classification</source>
        <translation>Klassifizierung anzeigen</translation>
    </message>
    <message>
        <source>Unkown</source>
        <translation>Unbekannt</translation>
    </message>
    <message>
        <source>Loading clipboard...</source>
        <translation>Lade Zwischenablage...</translation>
    </message>
</context>
<context>
    <name>orvexworkbenchdock</name>
    <message>
        <source>Clipboard</source>
        <translation>Zwischenablage</translation>
    </message>
</context>
</TS>
