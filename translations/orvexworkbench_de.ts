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
    <name>Orvexworkbenchplugin</name>
    <message>
        <source>Clipboard</source>
        <translation>Zwischenablage</translation>
    </message>
</context>
<context>
    <name>orvexLoginData</name>
    <message>
        <source>The profile information could not be loaded. Please start the Connection Manager!</source>
        <translation>Die Profilinformationen konnten nicht geladen werden. Bitte starten Sie den Connection Manager!</translation>
    </message>
    <message>
        <source>The profile %1 is not known to the Connection Manager.</source>
        <translation>Das Profil %1 ist dem Connection Manager nicht bekannt.</translation>
    </message>
    <message>
        <source>You are not connected to any profile. Please connect using the Connection Manager Orvex!</source>
        <translation>Sie sind mit keinem Profil verbunden. Bitte verbinden Sie sich über den Connection Manager Orvex!</translation>
    </message>
    <message>
        <source>The profile information could not be loaded. Trying to start the Connection Manager...</source>
        <translation>Die Profilinformationen konnten nicht geladen werden. Der Connection Manager wird gestartet...</translation>
    </message>
</context>
<context>
    <name>orvexLoginDialog</name>
    <message>
        <source>Orvex - Login</source>
        <translation>Orvex - Anmeldung</translation>
    </message>
    <message>
        <source>Choose profile:</source>
        <translation>Profil wählen:</translation>
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
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>The Card must be editable at least from a role!</source>
        <translation>Die Zwischenablage muss mindestens von einer Rolle bearbeitet werden können!</translation>
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
