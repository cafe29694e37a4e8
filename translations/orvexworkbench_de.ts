<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>DMSUserRights</name>
    <message>
        <source>Form</source>
        <translation>Formular</translation>
    </message>
    <message>
        <source>Edit roles</source>
        <translation>Rollen mit Bearbeitungsrecht</translation>
    </message>
    <message>
        <source>Grant edit rights to the selected roles</source>
        <translation>Den ausgewählten Rollen das Bearbeiten erlauben</translation>
    </message>
    <message>
        <source>Withdraw edit rights from the selected roles</source>
        <translation>Den ausgewählten Rollen das Bearbeiten entziehen</translation>
    </message>
    <message>
        <source>View roles</source>
        <translation>Rollen mit Leserecht</translation>
    </message>
    <message>
        <source>Grant view rights to the selected roles</source>
        <translation>Den ausgewählten Rollen das Ansehen erlauben</translation>
    </message>
    <message>
        <source>Withdraw view rights from the selected roles</source>
        <translation>Den ausgewählten Rollen das Ansehen entziehen</translation>
    </message>
    <message>
        <source>Available roles</source>
        <translation>Verfügbare Rollen</translation>
    </message>
    <message>
        <source>Visible to all</source>
        <translation>Für alle sichtbar</translation>
    </message>
    <message>
        <source>Editable by all</source>
        <translation>Von allen bearbeitbar</translation>
    </message>
</context>
<context>
    <name>OrvexDuplicatesDlg</name>
    <message>
        <source>Duplicate Detected</source>
        <translation>Duplikat erkannt</translation>
    </message>
    <message>
        <source>Original</source>
        <translation>Original</translation>
    </message>
    <message>
        <source>Duplicates</source>
        <translation>Duplikate</translation>
    </message>
    <message>
        <source>You are not authorized to display this duplicate.</source>
        <translation>Sie sind nicht berechtigt, dieses Duplikat anzuzeigen.</translation>
    </message>
    <message>
        <source>Docid</source>
        <translation>Dok-ID</translation>
    </message>
    <message>
        <source>Alternates the duplicate and the original in one place, so that differences flicker</source>
        <translation>Zeigt Duplikat und Original abwechselnd an derselben Stelle, sodass Unterschiede flackern</translation>
    </message>
    <message>
        <source>Show Difference</source>
        <translation>Unterschied zeigen</translation>
    </message>
    <message>
        <source>Previous</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Found %1 duplicates</source>
        <translation>%1 Duplikate gefunden</translation>
    </message>
    <message>
        <source>Discards this file and stops archiving the remaining files</source>
        <translation>Verwirft diese Datei und archiviert die übrigen Dateien nicht mehr</translation>
    </message>
    <message>
        <source>Cancel All</source>
        <translation>Alle abbrechen</translation>
    </message>
</context>
<context>
    <name>Orvexworkbenchplugin</name>
    <message>
        <source>Clipboard</source>
        <translation>Zwischenablage</translation>
    </message>
</context>
<context>
    <name>orvexcbrights</name>
    <message>
        <source>Clipboard Permissions</source>
        <translation>Berechtigungen der Zwischenablage</translation>
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
