<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>OrvexExportSummary</name>
    <message numerus="yes">
        <source>%n file(s) exported</source>
        <translation>
            <numerusform>%n file exported</numerusform>
            <numerusform>%n files exported</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n skipped</source>
        <comment>files</comment>
        <translation>
            <numerusform>%n skipped</numerusform>
            <numerusform>%n skipped</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <comment>files</comment>
        <translation>
            <numerusform>%n failed</numerusform>
            <numerusform>%n failed</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>orvexwbwebview</name>
    <message numerus="yes">
        <source>%n already on it</source>
        <translation>
            <numerusform>%n already on it</numerusform>
            <numerusform>%n already on it</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left out: it holds at most %1 documents</source>
        <translation>
            <numerusform>%n left out: it holds at most %1 documents</numerusform>
            <numerusform>%n left out: it holds at most %1 documents</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n refused by the archive</source>
        <translation>
            <numerusform>%n refused by the archive</numerusform>
            <numerusform>%n refused by the archive</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n without a valid id</source>
        <translation>
            <numerusform>%n without a valid id</numerusform>
            <numerusform>%n without a valid id</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>orvexworkbenchtab</name>
    <message numerus="yes">
        <source>A clipboard name has at most %n characters.</source>
        <translation>
            <numerusform>A clipboard name has at most %n character.</numerusform>
            <numerusform>A clipboard name has at most %n characters.</numerusform>
        </translation>
    </message>
</context>
</TS>
