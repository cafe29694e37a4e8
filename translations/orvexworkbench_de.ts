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
    <name>orvexclipboardchooser</name>
    <message>
        <source>Form</source>
        <translation>Formular</translation>
    </message>
    <message>
        <source>Scroll up</source>
        <translation>Nach oben blättern</translation>
    </message>
    <message>
        <source>Scroll down</source>
        <translation>Nach unten blättern</translation>
    </message>
</context>
<context>
    <name>orvexwbcornerwidget</name>
    <message>
        <source>Wizard</source>
        <translation>Assistent</translation>
    </message>
    <message>
        <source>Filter...</source>
        <translation>Filter...</translation>
    </message>
    <message>
        <source>Add New Clipboard</source>
        <translation>Neue Zwischenablage hinzufügen</translation>
    </message>
</context>
<context>
    <name>orvexworkbenchdock</name>
    <message>
        <source>Clipboard</source>
        <translation>Zwischenablage</translation>
    </message>
</context>
<context>
    <name>orvexworkbenchtab</name>
    <message>
        <source>(unnamed)</source>
        <translation>(ohne Namen)</translation>
    </message>
    <message>
        <source>New Clipboard</source>
        <translation>Neue Zwischenablage</translation>
    </message>
    <message>
        <source>Remove Clipboard</source>
        <translation>Zwischenablage entfernen</translation>
    </message>
    <message>
        <source>Remove Clipboard </source>
        <translation>Zwischenablage entfernen: </translation>
    </message>
</context>
</TS>
