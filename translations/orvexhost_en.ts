<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>OrvexDockReadiness</name>
    <message numerus="yes">
        <source>%1 of %n board(s) to finish loading</source>
        <translation>
            <numerusform>%1 of %n board to finish loading</numerusform>
            <numerusform>%1 of %n boards to finish loading</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>the thumbnails of %1 of %n card(s) on %2</source>
        <translation>
            <numerusform>the thumbnails of %1 of %n card on %2</numerusform>
            <numerusform>the thumbnails of %1 of %n cards on %2</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>OrvexDocumentListModel</name>
    <message numerus="yes">
        <source>%n version(s)</source>
        <translation>
            <numerusform>%n version</numerusform>
            <numerusform>%n versions</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>OrvexHostCommands</name>
    <message numerus="yes">
        <source>Export %n document(s)</source>
        <translation>
            <numerusform>Export %n document</numerusform>
            <numerusform>Export %n documents</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Mail %n document(s)</source>
        <translation>
            <numerusform>Mail %n document</numerusform>
            <numerusform>Mail %n documents</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Skipped %n card(s) the archive does not know: %1.</source>
        <translation>
            <numerusform>Skipped %n card the archive does not know: %1.</numerusform>
            <numerusform>Skipped %n cards the archive does not know: %1.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Export canceled after %n document(s).</source>
        <translation>
            <numerusform>Export canceled after %n document.</numerusform>
            <numerusform>Export canceled after %n documents.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Handed %n document(s) to the mail program.</source>
        <translation>
            <numerusform>Handed %n document to the mail program.</numerusform>
            <numerusform>Handed %n documents to the mail program.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Handing %n document(s) to the mail program...</source>
        <translation>
            <numerusform>Handing %n document to the mail program...</numerusform>
            <numerusform>Handing %n documents to the mail program...</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>OrvexHostUploader</name>
    <message numerus="yes">
        <source>%n document(s) archived.</source>
        <translation>
            <numerusform>%n document archived.</numerusform>
            <numerusform>%n documents archived.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) failed.</source>
        <translation>
            <numerusform>%n file failed.</numerusform>
            <numerusform>%n files failed.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) not uploaded.</source>
        <translation>
            <numerusform>%n file not uploaded.</numerusform>
            <numerusform>%n files not uploaded.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>OrvexHostWindow</name>
    <message numerus="yes">
        <source>%n document(s)</source>
        <translation>
            <numerusform>%n document</numerusform>
            <numerusform>%n documents</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n document(s)</source>
        <translation>
            <numerusform>%1 of %n document</numerusform>
            <numerusform>%1 of %n documents</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>OrvexScreenshotJob</name>
    <message numerus="yes">
        <source>No screenshot: gave up after %n second(s) waiting for %1.</source>
        <translation>
            <numerusform>No screenshot: gave up after %n second waiting for %1.</numerusform>
            <numerusform>No screenshot: gave up after %n seconds waiting for %1.</numerusform>
        </translation>
    </message>
</context>
</TS>
