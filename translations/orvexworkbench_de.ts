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
    <name>OrvexArchiveWorker</name>
    <message>
        <source>Failed to load the plugin: %1 Error: %2</source>
        <translation>Das Plugin konnte nicht geladen werden: %1 Fehler: %2</translation>
    </message>
    <message>
        <source>Failed to load the archive client: </source>
        <translation>Der Archiv-Client konnte nicht geladen werden: </translation>
    </message>
    <message>
        <source>Failed to load the archive client.</source>
        <translation>Der Archiv-Client konnte nicht geladen werden.</translation>
    </message>
    <message>
        <source>No archive client is connected.</source>
        <translation>Es ist kein Archiv-Client verbunden.</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>%1 versions were given for %2 documents.</source>
        <translation>Für %2 Dokumente wurden %1 Versionen angegeben.</translation>
    </message>
    <message>
        <source>The folder %1 does not exist.</source>
        <translation>Der Ordner %1 existiert nicht.</translation>
    </message>
    <message>
        <source>Exportiere Dokument...</source>
        <translation>Exportiere Dokument...</translation>
    </message>
    <message>
        <source>Downloading ...</source>
        <translation>Herunterladen ...</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Unable to export documents. Permissions missmatch.</source>
        <translation>Die Dokumente können nicht exportiert werden. Die Berechtigungen stimmen nicht überein.</translation>
    </message>
    <message>
        <source>Export documents...</source>
        <translation>Dokumente exportieren...</translation>
    </message>
    <message>
        <source>The file could not be saved!</source>
        <translation>Die Datei konnte nicht gespeichert werden!</translation>
    </message>
    <message>
        <source>File exists</source>
        <translation>Datei existiert</translation>
    </message>
    <message>
        <source>The file %1 already exists, overwrite?</source>
        <translation>Die Datei %1 existiert bereits. Überschreiben?</translation>
    </message>
    <message>
        <source>The file could not be overwritten.</source>
        <translation>Die Datei konnte nicht überschrieben werden.</translation>
    </message>
    <message>
        <source>Send Document(s)...</source>
        <translation>Dokument(e) senden...</translation>
    </message>
    <message>
        <source>Another upload is still running.</source>
        <translation>Es läuft noch ein anderes Hochladen.</translation>
    </message>
    <message>
        <source>The file %1 cannot be read.</source>
        <translation>Die Datei %1 kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>The file %1 is empty.</source>
        <translation>Die Datei %1 ist leer.</translation>
    </message>
    <message>
        <source>Archiviere Dokument...</source>
        <translation>Archiviere Dokument...</translation>
    </message>
    <message>
        <source>Uploading %1...</source>
        <translation>%1 wird hochgeladen...</translation>
    </message>
    <message>
        <source>The archive did not accept %1.</source>
        <translation>Das Archiv hat %1 nicht angenommen.</translation>
    </message>
    <message>
        <source>The upload of %1 was canceled.</source>
        <translation>Das Hochladen von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>DocId: %1 / Version: %2 / Page: %3</source>
        <translation>DocId: %1 / Version: %2 / Seite: %3</translation>
    </message>
    <message>
        <source>do_archive</source>
        <translation>Trotzdem archivieren</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>%1 was not archived: it duplicates archived documents.</source>
        <translation>%1 wurde nicht archiviert: Der Inhalt ist bereits im Archiv vorhanden.</translation>
    </message>
    <message>
        <source>Duplicate Check</source>
        <translation>Dublettenprüfung</translation>
    </message>
    <message>
        <source>The archive reports that %1 may duplicate archived documents, but its answer could not be read.</source>
        <translation>Das Archiv meldet, dass %1 archivierte Dokumente doppeln könnte, aber seine Antwort ist nicht lesbar.</translation>
    </message>
    <message>
        <source>Archive the file anyway?</source>
        <translation>Die Datei trotzdem archivieren?</translation>
    </message>
    <message>
        <source>Archive Anyway</source>
        <translation>Trotzdem archivieren</translation>
    </message>
    <message>
        <source>The file names were not confirmed.</source>
        <translation>Die Dateinamen wurden nicht bestätigt.</translation>
    </message>
    <message>
        <source>%1 could not be saved (%2).</source>
        <translation>%1 konnte nicht gespeichert werden (%2).</translation>
    </message>
    <message>
        <source>%1 could not be overwritten (%2).</source>
        <translation>%1 konnte nicht überschrieben werden (%2).</translation>
    </message>
    <message>
        <source>%1 already exists and was kept.</source>
        <translation>%1 ist schon vorhanden und wurde behalten.</translation>
    </message>
</context>
<context>
    <name>OrvexDirUtils</name>
    <message>
        <source>Directory (%1) does not exist.</source>
        <translation>Das Verzeichnis (%1) existiert nicht.</translation>
    </message>
    <message>
        <source>File (%1) could not be deleted.</source>
        <translation>Die Datei (%1) konnte nicht gelöscht werden.</translation>
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
    <name>OrvexExportSummary</name>
    <message numerus="yes">
        <source>%n file(s) exported</source>
        <translation>
            <numerusform>%n Datei exportiert</numerusform>
            <numerusform>%n Dateien exportiert</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n skipped</source>
        <comment>files</comment>
        <translation>
            <numerusform>%n übersprungen</numerusform>
            <numerusform>%n übersprungen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <comment>files</comment>
        <translation>
            <numerusform>%n fehlgeschlagen</numerusform>
            <numerusform>%n fehlgeschlagen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>OrvexFileCopy</name>
    <message>
        <source>Transfer</source>
        <translation>Übertragung</translation>
    </message>
    <message>
        <source>Starting...</source>
        <translation>Starte...</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>Document sent. Waiting for confirmation...</source>
        <translation>Dokument gesendet. Warte auf Bestätigung...</translation>
    </message>
</context>
<context>
    <name>OrvexLauncher</name>
    <message>
        <source>The e-mail could not be created, unable to start Mail-Client!</source>
        <translation>Die E-Mail konnte nicht erstellt werden, das E-Mail-Programm lässt sich nicht starten!</translation>
    </message>
    <message>
        <source>No mail program is set up (%1).</source>
        <translation>Es ist kein E-Mail-Programm eingerichtet (%1).</translation>
    </message>
    <message>
        <source>%1 was not found.</source>
        <translation>%1 wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>No program to open %1 is set up (%2).</source>
        <translation>Es ist kein Programm zum Öffnen von %1 eingerichtet (%2).</translation>
    </message>
    <message>
        <source>No program to open %1 files is set up (%2).</source>
        <translation>Es ist kein Programm zum Öffnen von %1-Dateien eingerichtet (%2).</translation>
    </message>
    <message>
        <source>%1 could not be started (%2).</source>
        <translation>%1 ließ sich nicht starten (%2).</translation>
    </message>
    <message>
        <source>%1 could not be opened: %2 could not be started (%3).</source>
        <translation>%1 konnte nicht geöffnet werden: %2 ließ sich nicht starten (%3).</translation>
    </message>
    <message>
        <source>The mail program %1 crashed.</source>
        <translation>Das E-Mail-Programm %1 ist abgestürzt.</translation>
    </message>
    <message>
        <source>The mail program %1 ended with exit code %2.</source>
        <translation>Das E-Mail-Programm %1 endete mit dem Rückgabewert %2.</translation>
    </message>
    <message>
        <source>%1 could not be opened: %2 crashed.</source>
        <translation>%1 konnte nicht geöffnet werden: %2 ist abgestürzt.</translation>
    </message>
    <message>
        <source>%1 could not be opened: %2 ended with exit code %3.</source>
        <translation>%1 konnte nicht geöffnet werden: %2 endete mit dem Rückgabewert %3.</translation>
    </message>
</context>
<context>
    <name>OrvexMimeData</name>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Permission denied.</source>
        <translation>Zugriff verweigert.</translation>
    </message>
    <message>
        <source>Failed to export: </source>
        <translation>Export fehlgeschlagen: </translation>
    </message>
    <message>
        <source>There is no connection to the archive.</source>
        <translation>Es besteht keine Verbindung zum Archiv.</translation>
    </message>
</context>
<context>
    <name>OrvexUndoOffer</name>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
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
    <name>dmsmailnames</name>
    <message>
        <source>Send documents...</source>
        <translation>Dokumente senden...</translation>
    </message>
    <message>
        <source>use following filenames</source>
        <translation>folgende Dateinamen verwenden</translation>
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
    <message>
        <source>Filter clipboards</source>
        <translation>Zwischenablagen filtern</translation>
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
    <message>
        <source>Appending Documents...</source>
        <translation>Dokumente werden hinzugefügt...</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Added %1 document(s) to clipboard %2</source>
        <translation>%1 Dokument(e) zur Zwischenablage %2 hinzugefügt</translation>
    </message>
    <message>
        <source>The note could not be saved. Leave its field again to try once more.</source>
        <translation>Die Notiz konnte nicht gespeichert werden. Verlassen Sie ihr Feld erneut, um es noch einmal zu versuchen.</translation>
    </message>
    <message>
        <source>Run search</source>
        <translation>Suche starten</translation>
    </message>
    <message>
        <source>Clear search</source>
        <translation>Suche zurücksetzen</translation>
    </message>
    <message>
        <source>Clipboard menu</source>
        <translation>Menü der Zwischenablage</translation>
    </message>
    <message>
        <source>Card menu</source>
        <translation>Kartenmenü</translation>
    </message>
    <message>
        <source>First page</source>
        <translation>Erste Seite</translation>
    </message>
    <message>
        <source>Previous page</source>
        <translation>Vorige Seite</translation>
    </message>
    <message>
        <source>Next page</source>
        <translation>Nächste Seite</translation>
    </message>
    <message>
        <source>Last page</source>
        <translation>Letzte Seite</translation>
    </message>
    <message>
        <source>Page %1 of %2</source>
        <translation>Seite %1 von %2</translation>
    </message>
    <message>
        <source>Clipboard %1 is read-only: documents cannot be added to it.</source>
        <translation>Die Zwischenablage %1 ist schreibgeschützt: Es können keine Dokumente hinzugefügt werden.</translation>
    </message>
    <message>
        <source>Clipboard %1 is full: it holds at most %2 documents.</source>
        <translation>Die Zwischenablage %1 ist voll: Sie fasst höchstens %2 Dokumente.</translation>
    </message>
    <message>
        <source>Nothing was added to clipboard %1: the dragged data names no documents.</source>
        <translation>Zur Zwischenablage %1 wurde nichts hinzugefügt: Die gezogenen Daten nennen keine Dokumente.</translation>
    </message>
    <message numerus="yes">
        <source>%n already on it</source>
        <translation>
            <numerusform>%n war schon darin</numerusform>
            <numerusform>%n waren schon darin</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left out: it holds at most %1 documents</source>
        <translation>
            <numerusform>%n ausgelassen: Sie fasst höchstens %1 Dokumente</numerusform>
            <numerusform>%n ausgelassen: Sie fasst höchstens %1 Dokumente</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n refused by the archive</source>
        <translation>
            <numerusform>%n vom Archiv abgelehnt</numerusform>
            <numerusform>%n vom Archiv abgelehnt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n without a valid id</source>
        <translation>
            <numerusform>%n ohne gültige ID</numerusform>
            <numerusform>%n ohne gültige ID</numerusform>
        </translation>
    </message>
    <message>
        <source>Clipboard %1 is read-only: cards cannot be removed from it.</source>
        <translation>Die Zwischenablage %1 ist schreibgeschützt: Karten können nicht daraus entfernt werden.</translation>
    </message>
    <message>
        <source>Card %1 removed from clipboard %2.</source>
        <translation>Karte %1 aus der Zwischenablage %2 entfernt.</translation>
    </message>
    <message>
        <source>Card %1 could not be removed from clipboard %2.</source>
        <translation>Karte %1 konnte nicht aus der Zwischenablage %2 entfernt werden.</translation>
    </message>
    <message>
        <source>Card %1 cannot come back: clipboard %2 is full.</source>
        <translation>Karte %1 kann nicht zurückkommen: Die Zwischenablage %2 ist voll.</translation>
    </message>
    <message>
        <source>A note holds at most %1 characters: the rest was left out.</source>
        <translation>Eine Notiz fasst höchstens %1 Zeichen: Der Rest wurde weggelassen.</translation>
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
    <message>
        <source>No clipboard matches</source>
        <translation>Keine Zwischenablage passt</translation>
    </message>
    <message>
        <source>Clipboard %1 removed.</source>
        <translation>Zwischenablage %1 entfernt.</translation>
    </message>
    <message>
        <source>Clipboard %1 could not be removed.</source>
        <translation>Zwischenablage %1 konnte nicht entfernt werden.</translation>
    </message>
    <message>
        <source>Read-only: you may view this clipboard but not change it.</source>
        <translation>Schreibgeschützt: Sie dürfen diese Zwischenablage ansehen, aber nicht ändern.</translation>
    </message>
    <message>
        <source>At most %1 characters</source>
        <translation>Höchstens %1 Zeichen</translation>
    </message>
    <message>
        <source>A clipboard needs a name: %1 keeps its name.</source>
        <translation>Eine Zwischenablage braucht einen Namen: %1 behält ihren Namen.</translation>
    </message>
    <message numerus="yes">
        <source>A clipboard name has at most %n characters.</source>
        <translation>
            <numerusform>Der Name einer Zwischenablage hat höchstens %n Zeichen.</numerusform>
            <numerusform>Der Name einer Zwischenablage hat höchstens %n Zeichen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Clipboard %1 could not be renamed.</source>
        <translation>Zwischenablage %1 konnte nicht umbenannt werden.</translation>
    </message>
</context>
</TS>
