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
</TS>
