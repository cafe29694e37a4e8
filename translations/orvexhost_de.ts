<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>OrvexClassificationDialog</name>
    <message>
        <source>Classification</source>
        <translation>Klassifikation</translation>
    </message>
    <message>
        <source>Field</source>
        <translation>Feld</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
</context>
<context>
    <name>OrvexDockReadiness</name>
    <message>
        <source>the window was closed</source>
        <translation>das geschlossene Fenster</translation>
    </message>
    <message>
        <source>the workbench dock to be shown</source>
        <translation>die Anzeige der Zwischenablage</translation>
    </message>
    <message>
        <source>the window to be shown</source>
        <translation>die Anzeige des Fensters</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n board(s) to finish loading</source>
        <translation>
            <numerusform>das Laden von %1 von %n Kartenseite</numerusform>
            <numerusform>das Laden von %1 von %n Kartenseiten</numerusform>
        </translation>
    </message>
    <message>
        <source>the boards to settle</source>
        <translation>die Kartenseiten</translation>
    </message>
    <message>
        <source>&quot;%1&quot;</source>
        <translation>„%1“</translation>
    </message>
    <message numerus="yes">
        <source>the thumbnails of %1 of %n card(s) on %2</source>
        <translation>
            <numerusform>die Vorschaubilder von %1 der %n Karte auf %2</numerusform>
            <numerusform>die Vorschaubilder von %1 der %n Karten auf %2</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>OrvexDockState</name>
    <message>
        <source>Could not write the dock&apos;s state %1: %2</source>
        <translation>Der Zustand des Docks %1 konnte nicht geschrieben werden: %2</translation>
    </message>
</context>
<context>
    <name>OrvexDocumentListModel</name>
    <message>
        <source>File: %1</source>
        <translation>Datei: %1</translation>
    </message>
    <message numerus="yes">
        <source>%n version(s)</source>
        <translation>
            <numerusform>%n Version</numerusform>
            <numerusform>%n Versionen</numerusform>
        </translation>
    </message>
    <message>
        <source>You may not read this document.</source>
        <translation>Sie dürfen dieses Dokument nicht lesen.</translation>
    </message>
    <message>
        <source>Id</source>
        <translation>Id</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
</context>
<context>
    <name>OrvexHostCommands</name>
    <message>
        <source>Open document %1</source>
        <translation>Dokument %1 öffnen</translation>
    </message>
    <message>
        <source>Show the classification of card %1</source>
        <translation>Klassifizierung von Karte %1 anzeigen</translation>
    </message>
    <message numerus="yes">
        <source>Export %n document(s)</source>
        <translation>
            <numerusform>%n Dokument exportieren</numerusform>
            <numerusform>%n Dokumente exportieren</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Mail %n document(s)</source>
        <translation>
            <numerusform>%n Dokument per E-Mail versenden</numerusform>
            <numerusform>%n Dokumente per E-Mail versenden</numerusform>
        </translation>
    </message>
    <message>
        <source>Unknown command %1</source>
        <translation>Unbekannter Befehl %1</translation>
    </message>
    <message>
        <source>Unknown command %1 (%2)</source>
        <translation>Unbekannter Befehl %1 (%2)</translation>
    </message>
    <message>
        <source>The clipboard holds no documents.</source>
        <translation>Die Zwischenablage enthält keine Dokumente.</translation>
    </message>
    <message>
        <source>Unknown card</source>
        <translation>Unbekannte Karte</translation>
    </message>
    <message>
        <source>The archive knows no document for the card(s) %1.</source>
        <translation>Das Archiv kennt kein Dokument zu Karte(n) %1.</translation>
    </message>
    <message numerus="yes">
        <source>Skipped %n card(s) the archive does not know: %1.</source>
        <translation>
            <numerusform>%n Karte, die das Archiv nicht kennt, übersprungen: %1.</numerusform>
            <numerusform>%n Karten, die das Archiv nicht kennt, übersprungen: %1.</numerusform>
        </translation>
    </message>
    <message>
        <source>Archive</source>
        <translation>Archiv</translation>
    </message>
    <message>
        <source>The archive could not be reached: %1</source>
        <translation>Das Archiv ist nicht erreichbar: %1</translation>
    </message>
    <message>
        <source>Open document</source>
        <translation>Dokument öffnen</translation>
    </message>
    <message>
        <source>The archive knows no document %1 (card %2).</source>
        <translation>Das Archiv kennt das Dokument %1 nicht (Karte %2).</translation>
    </message>
    <message>
        <source>Opening document %1 was canceled.</source>
        <translation>Das Öffnen von Dokument %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>The document %1 could not be opened: %2</source>
        <translation>Das Dokument %1 konnte nicht geöffnet werden: %2</translation>
    </message>
    <message>
        <source>Opened %1 in the viewer.</source>
        <translation>%1 im Betrachter geöffnet.</translation>
    </message>
    <message>
        <source>Document</source>
        <translation>Dokument</translation>
    </message>
    <message>
        <source>Entry</source>
        <translation>Eintrag</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>File name</source>
        <translation>Dateiname</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>Field %1</source>
        <translation>Feld %1</translation>
    </message>
    <message>
        <source>The command names no card.</source>
        <translation>Der Befehl nennt keine Karte.</translation>
    </message>
    <message>
        <source>Classification of document %1</source>
        <translation>Klassifikation von Dokument %1</translation>
    </message>
    <message>
        <source>Export documents to</source>
        <translation>Dokumente exportieren nach</translation>
    </message>
    <message>
        <source>Export canceled.</source>
        <translation>Export abgebrochen.</translation>
    </message>
    <message numerus="yes">
        <source>Export canceled after %n document(s).</source>
        <translation>
            <numerusform>Export nach %n Dokument abgebrochen.</numerusform>
            <numerusform>Export nach %n Dokumenten abgebrochen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Export documents</source>
        <translation>Dokumente exportieren</translation>
    </message>
    <message>
        <source>The documents could not be exported: %1</source>
        <translation>Die Dokumente konnten nicht exportiert werden: %1</translation>
    </message>
    <message>
        <source>Mailing canceled.</source>
        <translation>E-Mail-Versand abgebrochen.</translation>
    </message>
    <message>
        <source>Mail documents</source>
        <translation>Dokumente per E-Mail versenden</translation>
    </message>
    <message>
        <source>The documents could not be fetched for the e-mail: %1</source>
        <translation>Die Dokumente für die E-Mail konnten nicht geholt werden: %1</translation>
    </message>
    <message numerus="yes">
        <source>Handed %n document(s) to the mail program.</source>
        <translation>
            <numerusform>%n Dokument an das E-Mail-Programm übergeben.</numerusform>
            <numerusform>%n Dokumente an das E-Mail-Programm übergeben.</numerusform>
        </translation>
    </message>
    <message>
        <source>Opening %1 in the viewer...</source>
        <translation>%1 wird im Betrachter geöffnet ...</translation>
    </message>
    <message numerus="yes">
        <source>Handing %n document(s) to the mail program...</source>
        <translation>
            <numerusform>%n Dokument wird an das E-Mail-Programm übergeben ...</numerusform>
            <numerusform>%n Dokumente werden an das E-Mail-Programm übergeben ...</numerusform>
        </translation>
    </message>
    <message>
        <source>Export to %1: %2</source>
        <translation>Export nach %1: %2</translation>
    </message>
</context>
<context>
    <name>OrvexHostOptions</name>
    <message>
        <source>A small document-management client: the archive&apos;s documents and the clipboard workbench.
Exit codes: 0 done, 1 bad command line, 2 archive failed, 3 plugin failed, 4 no screenshot.</source>
        <translation>Ein kleiner Dokumentenverwaltungs-Client: die Dokumente des Archivs und die Zwischenablage.
Rückgabewerte: 0 fertig, 1 falsche Befehlszeile, 2 Archivfehler, 3 Pluginfehler, 4 kein Bildschirmfoto.</translation>
    </message>
    <message>
        <source>Wait until the window, the workbench dock and its boards are shown, save a PNG of the window to FILE and exit.</source>
        <translation>Warten, bis Fenster, Zwischenablage und deren Karten angezeigt sind, ein PNG-Bild des Fensters in DATEI speichern und beenden.</translation>
    </message>
    <message>
        <source>FILE</source>
        <translation>DATEI</translation>
    </message>
    <message>
        <source>Seconds to wait for the screenshot before giving up (default: %1).</source>
        <translation>Sekunden, die auf das Bildschirmfoto gewartet wird (Vorgabe: %1).</translation>
    </message>
    <message>
        <source>SECONDS</source>
        <translation>SEKUNDEN</translation>
    </message>
    <message>
        <source>Workbench plugin module to load (default: %1).</source>
        <translation>Zu ladendes Zwischenablage-Plugin (Vorgabe: %1).</translation>
    </message>
    <message>
        <source>NAME</source>
        <translation>NAME</translation>
    </message>
    <message>
        <source>Unexpected argument: %1</source>
        <translation>Unerwartetes Argument: %1</translation>
    </message>
    <message>
        <source>The archive folder must not be empty.</source>
        <translation>Der Archivordner darf nicht leer sein.</translation>
    </message>
    <message>
        <source>The screenshot file name must not be empty.</source>
        <translation>Der Dateiname des Bildschirmfotos darf nicht leer sein.</translation>
    </message>
    <message>
        <source>The timeout must be a positive number of seconds, not &quot;%1&quot;.</source>
        <translation>Die Wartezeit muss eine positive Zahl von Sekunden sein, nicht „%1“.</translation>
    </message>
    <message>
        <source>With --screenshot: also write what the workbench dock shows (its tabs, their lock state, cards and thumbnails, the clipboard chooser) as JSON to FILE.</source>
        <translation>Mit --screenshot: zusätzlich schreiben, was das Zwischenablage-Dock zeigt (seine Reiter, ihre Sperre, Karten und Vorschaubilder, die Zwischenablagen-Auswahl), als JSON in DATEI.</translation>
    </message>
    <message>
        <source>--dump-state needs a file name and --screenshot.</source>
        <translation>--dump-state braucht einen Dateinamen und --screenshot.</translation>
    </message>
    <message>
        <source>Archive folder, or the address of an archive on a PostgreSQL server (postgresql://user@host:port/database); a new folder gets a sample archive (default: %1).</source>
        <translation>Archivordner oder die Adresse eines Archivs auf einem PostgreSQL-Server (postgresql://benutzer@host:port/datenbank); ein neuer Ordner erhält ein Beispielarchiv (Vorgabe: %1).</translation>
    </message>
    <message>
        <source>DIR|ADDRESS</source>
        <translation>ORDNER|ADRESSE</translation>
    </message>
    <message>
        <source>Work as this archive user (default: the system user; on a server the address&apos;s user), on a server as its database role.</source>
        <translation>Als dieser Archivbenutzer arbeiten (Vorgabe: der Systembenutzer; auf einem Server der Benutzer der Adresse), auf einem Server als dessen Datenbankrolle.</translation>
    </message>
</context>
<context>
    <name>OrvexHostSession</name>
    <message>
        <source>The archive in %1 could not be opened: %2</source>
        <translation>Das Archiv in %1 konnte nicht geöffnet werden: %2</translation>
    </message>
    <message>
        <source>The workbench plugin made no instance of itself.</source>
        <translation>Das Zwischenablage-Plugin hat keine Instanz von sich erzeugt.</translation>
    </message>
</context>
<context>
    <name>OrvexHostUploader</name>
    <message>
        <source>%1 is not a PDF document.</source>
        <translation>%1 ist kein PDF-Dokument.</translation>
    </message>
    <message>
        <source>Another upload is still running.</source>
        <translation>Ein anderer Upload läuft noch.</translation>
    </message>
    <message>
        <source>Archive files</source>
        <translation>Dateien archivieren</translation>
    </message>
    <message>
        <source>These files could not be archived:</source>
        <translation>Diese Dateien konnten nicht archiviert werden:</translation>
    </message>
    <message numerus="yes">
        <source>%n document(s) archived.</source>
        <translation>
            <numerusform>%n Dokument archiviert.</numerusform>
            <numerusform>%n Dokumente archiviert.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) failed.</source>
        <translation>
            <numerusform>%n Datei fehlgeschlagen.</numerusform>
            <numerusform>%n Dateien fehlgeschlagen.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) not uploaded.</source>
        <translation>
            <numerusform>%n Datei nicht hochgeladen.</numerusform>
            <numerusform>%n Dateien nicht hochgeladen.</numerusform>
        </translation>
    </message>
    <message>
        <source>PDF documents (*.pdf);;All files (*)</source>
        <translation>PDF-Dokumente (*.pdf);;Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>OrvexHostWindow</name>
    <message>
        <source>Orvex Host</source>
        <translation>Orvex Host</translation>
    </message>
    <message>
        <source>Filter documents by id, title, type, status or date</source>
        <translation>Dokumente nach Id, Titel, Typ, Status oder Datum filtern</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Reload</source>
        <translation>&amp;Neu laden</translation>
    </message>
    <message>
        <source>Reload the document list and the clipboards</source>
        <translation>Dokumentliste und Zwischenablagen neu laden</translation>
    </message>
    <message>
        <source>F5</source>
        <translation>F5</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Filter</source>
        <translation>&amp;Filter</translation>
    </message>
    <message>
        <source>Ctrl+F</source>
        <translation>Ctrl+F</translation>
    </message>
    <message>
        <source>Orvex Host – %1</source>
        <translation>Orvex Host – %1</translation>
    </message>
    <message>
        <source>User: %1</source>
        <translation>Benutzer: %1</translation>
    </message>
    <message numerus="yes">
        <source>%n document(s)</source>
        <translation>
            <numerusform>%n Dokument</numerusform>
            <numerusform>%n Dokumente</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n document(s)</source>
        <translation>
            <numerusform>%1 von %n Dokument</numerusform>
            <numerusform>%1 von %n Dokumenten</numerusform>
        </translation>
    </message>
    <message>
        <source>&amp;Archive files...</source>
        <translation>Dateien &amp;archivieren...</translation>
    </message>
    <message>
        <source>Archive PDF files; files dropped onto the document list are archived too</source>
        <translation>PDF-Dateien archivieren; auf die Dokumentliste gezogene Dateien werden ebenfalls archiviert</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Orvex Host – %1 (read-only)</source>
        <translation>Orvex Host – %1 (schreibgeschützt)</translation>
    </message>
    <message>
        <source>Filter documents</source>
        <translation>Dokumente filtern</translation>
    </message>
    <message>
        <source>Documents</source>
        <translation>Dokumente</translation>
    </message>
</context>
<context>
    <name>OrvexScreenshotJob</name>
    <message>
        <source>The window was closed before the screenshot.</source>
        <translation>Das Fenster wurde vor dem Bildschirmfoto geschlossen.</translation>
    </message>
    <message>
        <source>Could not write the screenshot %1: %2</source>
        <translation>Das Bildschirmfoto %1 konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>Screenshot saved to %1</source>
        <translation>Bildschirmfoto gespeichert in %1</translation>
    </message>
    <message numerus="yes">
        <source>No screenshot: gave up after %n second(s) waiting for %1.</source>
        <translation>
            <numerusform>Kein Bildschirmfoto: nach %n Sekunde Warten auf %1 aufgegeben.</numerusform>
            <numerusform>Kein Bildschirmfoto: nach %n Sekunden Warten auf %1 aufgegeben.</numerusform>
        </translation>
    </message>
    <message>
        <source>%1, the dock&apos;s state to %2</source>
        <translation>%1, Zustand des Docks in %2</translation>
    </message>
</context>
<context>
    <name>OrvexWorkbenchLoader</name>
    <message>
        <source>The workbench plugin %1 does not exist.</source>
        <translation>Das Zwischenablage-Plugin %1 gibt es nicht.</translation>
    </message>
    <message>
        <source>The workbench plugin %1 could not be loaded: %2</source>
        <translation>Das Zwischenablage-Plugin %1 konnte nicht geladen werden: %2</translation>
    </message>
    <message>
        <source>%1 is a Qt plugin, but not a document plugin (%2).</source>
        <translation>%1 ist ein Qt-Plugin, aber kein Dokument-Plugin (%2).</translation>
    </message>
</context>
</TS>
