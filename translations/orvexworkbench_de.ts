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
    <name>orvexworkbenchdock</name>
    <message>
        <source>Clipboard</source>
        <translation>Zwischenablage</translation>
    </message>
</context>
</TS>
