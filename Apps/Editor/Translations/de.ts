<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AttributesDock</name>
    <message>
        <source>Attributes</source>
        <translation>Attribute</translation>
    </message>
    <message>
        <source>Select a node to see its attributes.</source>
        <translation>Einen Knoten auswählen, um seine Attribute zu sehen.</translation>
    </message>
    <message>
        <source>No library that is loaded has this type of node. The document keeps what it says.</source>
        <translation>Keine geladene Bibliothek kennt diesen Knotentyp. Die Angaben im Dokument bleiben erhalten.</translation>
    </message>
    <message>
        <source>Nodes of several types are selected. Select nodes of one type to edit them together.</source>
        <translation>Knoten verschiedener Typen sind ausgewählt. Gemeinsam bearbeiten lassen sich nur Knoten eines Typs.</translation>
    </message>
    <message>
        <source>Unknown type</source>
        <translation>Unbekannter Typ</translation>
    </message>
    <message numerus="yes">
        <source>%1 (%n nodes)</source>
        <translation>
            <numerusform>%1 (%n Knoten)</numerusform>
            <numerusform>%1 (%n Knoten)</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n nodes</source>
        <translation>
            <numerusform>%n Knoten</numerusform>
            <numerusform>%n Knoten</numerusform>
        </translation>
    </message>
    <message>
        <source>No presets yet</source>
        <translation>Noch keine Voreinstellungen</translation>
    </message>
    <message>
        <source>Save as Preset…</source>
        <translation>Als Voreinstellung speichern …</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Save as Preset</source>
        <translation>Als Voreinstellung speichern</translation>
    </message>
    <message>
        <source>Name of the preset:</source>
        <translation>Name der Voreinstellung:</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Command: value apply</source>
        <translation>Befehl: value apply</translation>
    </message>
    <message>
        <source>Options for value run</source>
        <translation>Optionen für value run</translation>
    </message>
    <message>
        <source>Reset attributes of %1</source>
        <translation>Attribute von %1 zurücksetzen</translation>
    </message>
    <message numerus="yes">
        <source>Reset attributes of %n nodes</source>
        <translation>
            <numerusform>Attribute von %n Knoten zurücksetzen</numerusform>
            <numerusform>Attribute von %n Knoten zurücksetzen</numerusform>
        </translation>
    </message>
    <message>
        <source>Apply preset %1</source>
        <translation>Voreinstellung %1 anwenden</translation>
    </message>
</context>
<context>
    <name>CanvasActions</name>
    <message>
        <source>Gray</source>
        <translation>Grau</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Teal</source>
        <translation>Türkis</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Gelb</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Purple</source>
        <translation>Violett</translation>
    </message>
    <message>
        <source>Add Node…</source>
        <translation>Knoten hinzufügen …</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Duplicate</source>
        <translation>Duplizieren</translation>
    </message>
    <message>
        <source>Duplicate with Inputs</source>
        <translation>Mit Eingängen duplizieren</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete and Reconnect</source>
        <translation>Löschen und neu verbinden</translation>
    </message>
    <message>
        <source>Mute or Unmute</source>
        <translation>Stumm schalten oder aktivieren</translation>
    </message>
    <message>
        <source>Rename…</source>
        <translation>Umbenennen …</translation>
    </message>
    <message>
        <source>Edit Note…</source>
        <translation>Notiz bearbeiten …</translation>
    </message>
    <message>
        <source>Connect Selected…</source>
        <translation>Auswahl verbinden …</translation>
    </message>
    <message>
        <source>Insert Node…</source>
        <translation>Knoten einfügen …</translation>
    </message>
    <message>
        <source>Insert Reroute Point</source>
        <translation>Umlenkpunkt einfügen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>Select Connected</source>
        <translation>Verbundene auswählen</translation>
    </message>
    <message>
        <source>About This Node Type</source>
        <translation>Hilfe zu diesem Knotentyp</translation>
    </message>
    <message>
        <source>Lay Out</source>
        <translation>Automatisch anordnen</translation>
    </message>
    <message>
        <source>Align Left</source>
        <translation>Links ausrichten</translation>
    </message>
    <message>
        <source>Align Right</source>
        <translation>Rechts ausrichten</translation>
    </message>
    <message>
        <source>Align Top</source>
        <translation>Oben ausrichten</translation>
    </message>
    <message>
        <source>Align Bottom</source>
        <translation>Unten ausrichten</translation>
    </message>
    <message>
        <source>Align in a Row</source>
        <translation>In einer Zeile ausrichten</translation>
    </message>
    <message>
        <source>Align in a Column</source>
        <translation>In einer Spalte ausrichten</translation>
    </message>
    <message>
        <source>Distribute Across</source>
        <translation>Horizontal verteilen</translation>
    </message>
    <message>
        <source>Distribute Down</source>
        <translation>Vertikal verteilen</translation>
    </message>
    <message>
        <source>Add Frame</source>
        <translation>Rahmen hinzufügen</translation>
    </message>
    <message>
        <source>Move Left</source>
        <translation>Nach links verschieben</translation>
    </message>
    <message>
        <source>Move Right</source>
        <translation>Nach rechts verschieben</translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation>Nach oben verschieben</translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation>Nach unten verschieben</translation>
    </message>
    <message>
        <source>Zoom to Selection</source>
        <translation>Auf Auswahl zoomen</translation>
    </message>
    <message>
        <source>Zoom to All</source>
        <translation>Alles einpassen</translation>
    </message>
    <message>
        <source>Zoom In</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Zoom Out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Life Size</source>
        <translation>Originalgröße</translation>
    </message>
    <message>
        <source>Thumbnails</source>
        <translation>Vorschaubilder</translation>
    </message>
    <message>
        <source>Dim What Does Not Feed the Shown Node</source>
        <translation>Unbeteiligte Knoten abblenden</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Übersichtskarte</translation>
    </message>
    <message>
        <source>Arrange</source>
        <translation>Anordnen</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Ansicht</translation>
    </message>
    <message>
        <source>Frame Color</source>
        <translation>Rahmenfarbe</translation>
    </message>
    <message>
        <source>Select Next Wire</source>
        <translation>Nächste Verbindung auswählen</translation>
    </message>
    <message>
        <source>Select Next Frame</source>
        <translation>Nächsten Rahmen auswählen</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Auswählen</translation>
    </message>
</context>
<context>
    <name>CanvasCommands</name>
    <message>
        <source>Add %1</source>
        <translation>%1 hinzufügen</translation>
    </message>
    <message numerus="yes">
        <source>Add %n file(s)</source>
        <translation>
            <numerusform>%n Datei hinzufügen</numerusform>
            <numerusform>%n Dateien hinzufügen</numerusform>
        </translation>
    </message>
    <message>
        <source>Connect %1 to %2</source>
        <translation>%1 mit %2 verbinden</translation>
    </message>
    <message numerus="yes">
        <source>Disconnect %n wire(s)</source>
        <translation>
            <numerusform>%n Verbindung trennen</numerusform>
            <numerusform>%n Verbindungen trennen</numerusform>
        </translation>
    </message>
    <message>
        <source>Remove the selection</source>
        <translation>Auswahl löschen</translation>
    </message>
    <message numerus="yes">
        <source>Duplicate %n node(s)</source>
        <translation>
            <numerusform>%n Knoten duplizieren</numerusform>
            <numerusform>%n Knoten duplizieren</numerusform>
        </translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>a frame</source>
        <translation>Rahmen</translation>
    </message>
    <message numerus="yes">
        <source>%n node(s)</source>
        <translation>
            <numerusform>%n Knoten</numerusform>
            <numerusform>%n Knoten</numerusform>
        </translation>
    </message>
    <message>
        <source>Move %1</source>
        <translation>%1 verschieben</translation>
    </message>
    <message>
        <source>Select the nodes that the frame is to go around.</source>
        <translation>Zuerst die Knoten auswählen, die der Rahmen umfassen soll.</translation>
    </message>
    <message>
        <source>Frame</source>
        <translation>Rahmen</translation>
    </message>
    <message>
        <source>Color frames</source>
        <translation>Rahmen einfärben</translation>
    </message>
</context>
<context>
    <name>DockFrames</name>
    <message>
        <source>Viewer</source>
        <translation>Bildansicht</translation>
    </message>
    <message>
        <source>3D View</source>
        <translation>3D-Ansicht</translation>
    </message>
    <message>
        <source>Attributes</source>
        <translation>Attribute</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Outputs</source>
        <translation>Ausgaben</translation>
    </message>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
    <message>
        <source>Profiler</source>
        <translation>Laufzeit</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Missing Files</source>
        <translation>Fehlende Dateien</translation>
    </message>
</context>
<context>
    <name>DocumentDialogs</name>
    <message>
        <source>Value graphs (*.json)</source>
        <translation>Value-Graphen (*.json)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>Speichern unter</translation>
    </message>
    <message>
        <source>untitled.json</source>
        <translation>unbenannt.json</translation>
    </message>
    <message>
        <source>Unsaved Changes</source>
        <translation>Nicht gespeicherte Änderungen</translation>
    </message>
    <message>
        <source>Save the changes to %1?</source>
        <translation>Änderungen an %1 speichern?</translation>
    </message>
    <message>
        <source>What is not saved is lost.</source>
        <translation>Nicht gespeicherte Änderungen gehen verloren.</translation>
    </message>
    <message>
        <source>Cannot Save</source>
        <translation>Speichern nicht möglich</translation>
    </message>
</context>
<context>
    <name>EditorWindow</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;New…</source>
        <translation>&amp;Neu …</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Öffnen …</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>Zuletzt &amp;geöffnet</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Speichern</translation>
    </message>
    <message>
        <source>Save &amp;As…</source>
        <translation>Speichern &amp;unter …</translation>
    </message>
    <message>
        <source>Re&amp;vert</source>
        <translation>Gespeicherten Stand &amp;laden</translation>
    </message>
    <message>
        <source>&amp;Write All Outputs</source>
        <translation>Alle &amp;Ausgaben schreiben</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>T&amp;heme</source>
        <translation>&amp;Farbschema</translation>
    </message>
    <message>
        <source>As the Desktop</source>
        <translation>Wie der Desktop</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Hell</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
    <message>
        <source>&amp;Reset the Layout</source>
        <translation>Anordnung &amp;zurücksetzen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;First Steps</source>
        <translation>&amp;Erste Schritte</translation>
    </message>
    <message>
        <source>&amp;Keyboard Shortcuts</source>
        <translation>&amp;Tastenkürzel</translation>
    </message>
    <message>
        <source>Nodes evaluated</source>
        <translation>Berechnete Knoten</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Stops computing until the next change</source>
        <translation>Hält die Berechnung bis zur nächsten Änderung an</translation>
    </message>
    <message>
        <source>Stop computing</source>
        <translation>Berechnung anhalten</translation>
    </message>
    <message>
        <source>Cannot open</source>
        <translation>Öffnen nicht möglich</translation>
    </message>
    <message>
        <source>%1 cannot be opened.</source>
        <translation>%1 lässt sich nicht öffnen.</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 gespeichert</translation>
    </message>
    <message>
        <source>Revert</source>
        <translation>Gespeicherten Stand laden</translation>
    </message>
    <message>
        <source>Go back to what was saved last? What was changed since is lost.</source>
        <translation>Zum zuletzt gespeicherten Stand zurückkehren? Änderungen seitdem gehen verloren.</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>%1[*] – Value</source>
        <translation>%1[*] – Value</translation>
    </message>
    <message>
        <source>Cannot start from this template</source>
        <translation>Diese Vorlage lässt sich nicht verwenden</translation>
    </message>
    <message>
        <source>Undo %1</source>
        <translation>Rückgängig: %1</translation>
    </message>
    <message>
        <source>Redo %1</source>
        <translation>Wiederholen: %1</translation>
    </message>
    <message>
        <source>Outputs Are Being Written</source>
        <translation>Ausgaben werden geschrieben</translation>
    </message>
    <message>
        <source>Stop writing? What is written already stays.</source>
        <translation>Das Schreiben abbrechen? Was schon geschrieben ist, bleibt.</translation>
    </message>
    <message>
        <source>&amp;Next Area</source>
        <translation>&amp;Nächster Bereich</translation>
    </message>
    <message>
        <source>&amp;Previous Area</source>
        <translation>&amp;Voriger Bereich</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Value</translation>
    </message>
</context>
<context>
    <name>FilesChangedBar</name>
    <message>
        <source>Changed files</source>
        <translation>Geänderte Dateien</translation>
    </message>
    <message>
        <source>Read Again</source>
        <translation>Neu einlesen</translation>
    </message>
    <message>
        <source>Read the changed files again</source>
        <translation>Geänderte Dateien neu einlesen</translation>
    </message>
    <message>
        <source>Always</source>
        <translation>Immer</translation>
    </message>
    <message>
        <source>Read changed files again without asking</source>
        <translation>Geänderte Dateien ohne Nachfrage neu einlesen</translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation>Ignorieren</translation>
    </message>
    <message>
        <source>Go on with what was read before</source>
        <translation>Mit dem bisherigen Inhalt weiterarbeiten</translation>
    </message>
    <message>
        <source>The file of %1 has changed.</source>
        <translation>Die Datei von %1 hat sich geändert.</translation>
    </message>
    <message>
        <source>The files of %1 readers have changed.</source>
        <translation>Die Dateien von %1 Leseknoten haben sich geändert.</translation>
    </message>
</context>
<context>
    <name>FirstSteps</name>
    <message>
        <source>First steps</source>
        <translation>Erste Schritte</translation>
    </message>
    <message>
        <source>Do not show this again</source>
        <translation>Nicht mehr anzeigen</translation>
    </message>
    <message>
        <source>&amp;Skip</source>
        <translation>Über&amp;springen</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Zurück</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Weiter</translation>
    </message>
    <message>
        <source>Add nodes</source>
        <translation>Knoten hinzufügen</translation>
    </message>
    <message>
        <source>This is the graph. Press Tab, or double-click, and type what you look for: the node appears where the pointer is. Drag from one plug to another to connect them.</source>
        <translation>Das ist der Graph. Tab drücken oder doppelklicken und den gesuchten Knoten eintippen: Er erscheint am Mauszeiger. Von einem Anschluss zum anderen ziehen, um sie zu verbinden.</translation>
    </message>
    <message>
        <source>See the result</source>
        <translation>Das Ergebnis sehen</translation>
    </message>
    <message>
        <source>The image of the node that you choose is shown here, and again after every change. Scroll to zoom, and drag to move.</source>
        <translation>Hier ist das Bild des gewählten Knotens zu sehen, nach jeder Änderung neu. Scrollen zoomt, Ziehen verschiebt.</translation>
    </message>
    <message>
        <source>Set attributes</source>
        <translation>Attribute einstellen</translation>
    </message>
    <message>
        <source>Select a node to see its attributes. Everything can be undone, so try what a slider does.</source>
        <translation>Einen Knoten auswählen, um seine Attribute zu sehen. Alles lässt sich rückgängig machen – also einfach ausprobieren, was ein Regler bewirkt.</translation>
    </message>
    <message>
        <source>Keep the result</source>
        <translation>Das Ergebnis behalten</translation>
    </message>
    <message>
        <source>An output writes an image to a file. The ending of its name says the format. Write All writes them all.</source>
        <translation>Eine Ausgabe schreibt ein Bild in eine Datei. Die Dateiendung bestimmt das Format. „Alle schreiben“ schreibt sämtliche Ausgaben.</translation>
    </message>
    <message>
        <source>Find out more</source>
        <translation>Mehr erfahren</translation>
    </message>
    <message>
        <source>Each node has a page that says what it does and what each of its attributes is for. You can read these steps again from the Help menu.</source>
        <translation>Zu jedem Knoten gibt es eine Seite, die erklärt, was er tut und wozu seine Attribute dienen. Diese Schritte sind jederzeit im Menü „Hilfe“ zu finden.</translation>
    </message>
    <message>
        <source>Step %1 of %2</source>
        <translation>Schritt %1 von %2</translation>
    </message>
    <message>
        <source>&amp;Done</source>
        <translation>&amp;Fertig</translation>
    </message>
</context>
<context>
    <name>GlProgram</name>
    <message>
        <source>a shader does not compile: %1</source>
        <translation>ein Shader lässt sich nicht übersetzen: %1</translation>
    </message>
    <message>
        <source>the shaders do not fit together: %1</source>
        <translation>die Shader passen nicht zusammen: %1</translation>
    </message>
</context>
<context>
    <name>GraphCanvas</name>
    <message>
        <source>Canvas</source>
        <translation>Arbeitsfläche</translation>
    </message>
    <message>
        <source>Graph of nodes</source>
        <translation>Knotengraph</translation>
    </message>
    <message numerus="yes">
        <source>%n node(s) selected</source>
        <translation>
            <numerusform>%n Knoten ausgewählt</numerusform>
            <numerusform>%n Knoten ausgewählt</numerusform>
        </translation>
    </message>
    <message>
        <source>There is no node type &quot;%1&quot;.</source>
        <translation>Es gibt keinen Knotentyp „%1“.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; has no output that fits.</source>
        <translation>„%1“ hat keinen passenden Ausgang.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; has no input that fits.</source>
        <translation>„%1“ hat keinen passenden Eingang.</translation>
    </message>
    <message>
        <source>Nothing of &quot;%1&quot; fits a free input of &quot;%2&quot;.</source>
        <translation>Nichts von „%1“ passt an einen freien Eingang von „%2“.</translation>
    </message>
    <message>
        <source>Name of the node</source>
        <translation>Name des Knotens</translation>
    </message>
    <message>
        <source>Note of the node</source>
        <translation>Notiz des Knotens</translation>
    </message>
    <message>
        <source>Title of the frame</source>
        <translation>Titel des Rahmens</translation>
    </message>
    <message>
        <source>Wire from %1 to %2 selected</source>
        <translation>Verbindung von %1 zu %2 ausgewählt</translation>
    </message>
    <message>
        <source>Frame &quot;%1&quot; selected</source>
        <translation>Rahmen „%1“ ausgewählt</translation>
    </message>
</context>
<context>
    <name>GraphView</name>
    <message>
        <source>Press Tab or double click to add a node.
Drop image files here to read them.</source>
        <translation>Tab oder Doppelklick fügt einen Knoten hinzu.
Bilddateien zum Einlesen hierher ziehen.</translation>
    </message>
</context>
<context>
    <name>HelpDock</name>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Page of the node</source>
        <translation>Seite des Knotens</translation>
    </message>
    <message>
        <source>Select a node to read its page.</source>
        <translation>Einen Knoten auswählen, um seine Seite zu lesen.</translation>
    </message>
    <message>
        <source>No library that is loaded has the type %1.</source>
        <translation>Keine geladene Bibliothek kennt den Typ %1.</translation>
    </message>
</context>
<context>
    <name>HistoryDock</name>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>History of changes</source>
        <translation>Verlauf der Änderungen</translation>
    </message>
    <message>
        <source>New document</source>
        <translation>Neues Dokument</translation>
    </message>
    <message>
        <source>Opened</source>
        <translation>Geöffnet</translation>
    </message>
</context>
<context>
    <name>HistoryModel</name>
    <message>
        <source>Where the document is</source>
        <translation>Aktueller Stand</translation>
    </message>
    <message>
        <source>Undone</source>
        <translation>Rückgängig gemacht</translation>
    </message>
</context>
<context>
    <name>HistoryNames</name>
    <message>
        <source>Add output %1 to %2</source>
        <translation>Ausgabe %1 nach %2 hinzufügen</translation>
    </message>
    <message>
        <source>Change output %1 to %2</source>
        <translation>Ausgabe %1 nach %2 ändern</translation>
    </message>
    <message>
        <source>Remove output %1 to %2</source>
        <translation>Ausgabe %1 nach %2 entfernen</translation>
    </message>
    <message>
        <source>Add frame &quot;%1&quot;</source>
        <translation>Rahmen „%1“ hinzufügen</translation>
    </message>
    <message>
        <source>Change frame &quot;%1&quot;</source>
        <translation>Rahmen „%1“ ändern</translation>
    </message>
    <message>
        <source>Delete frame &quot;%1&quot;</source>
        <translation>Rahmen „%1“ löschen</translation>
    </message>
    <message>
        <source>Add frame</source>
        <translation>Rahmen hinzufügen</translation>
    </message>
    <message>
        <source>Change frame</source>
        <translation>Rahmen ändern</translation>
    </message>
    <message>
        <source>Delete frame</source>
        <translation>Rahmen löschen</translation>
    </message>
    <message>
        <source>Add %1</source>
        <translation>%1 hinzufügen</translation>
    </message>
    <message>
        <source>Delete %n nodes and reconnect</source>
        <translation>%n Knoten löschen und neu verbinden</translation>
    </message>
    <message>
        <source>Delete %1 and reconnect</source>
        <translation>%1 löschen und neu verbinden</translation>
    </message>
    <message>
        <source>Delete %n nodes</source>
        <translation>%n Knoten löschen</translation>
    </message>
    <message>
        <source>Delete %1</source>
        <translation>%1 löschen</translation>
    </message>
    <message>
        <source>Rename %1 to %2</source>
        <translation>%1 in %2 umbenennen</translation>
    </message>
    <message>
        <source>Unmute %n nodes</source>
        <translation>%n Knoten aktivieren</translation>
    </message>
    <message>
        <source>Unmute %1</source>
        <translation>%1 aktivieren</translation>
    </message>
    <message>
        <source>Mute %n nodes</source>
        <translation>%n Knoten stumm schalten</translation>
    </message>
    <message>
        <source>Mute %1</source>
        <translation>%1 stumm schalten</translation>
    </message>
    <message>
        <source>Edit note of %1</source>
        <translation>Notiz von %1 bearbeiten</translation>
    </message>
    <message>
        <source>Reorder %1</source>
        <translation>%1 umordnen</translation>
    </message>
    <message>
        <source>Move %n nodes</source>
        <translation>%n Knoten verschieben</translation>
    </message>
    <message>
        <source>Move %1</source>
        <translation>%1 verschieben</translation>
    </message>
    <message>
        <source>Connect %1 to %2</source>
        <translation>%1 mit %2 verbinden</translation>
    </message>
    <message>
        <source>Disconnect %1 from %2</source>
        <translation>%1 von %2 trennen</translation>
    </message>
    <message>
        <source>Set attributes of %1</source>
        <translation>Attribute von %1 setzen</translation>
    </message>
    <message>
        <source>Set %n attributes</source>
        <translation>%n Attribute setzen</translation>
    </message>
    <message>
        <source>Set %1</source>
        <translation>%1 setzen</translation>
    </message>
    <message>
        <source>Insert %1 between %2 and %3</source>
        <translation>%1 zwischen %2 und %3 einfügen</translation>
    </message>
    <message>
        <source>Paste %n nodes</source>
        <translation>%n Knoten einfügen</translation>
    </message>
    <message>
        <source>Paste %1</source>
        <translation>%1 einfügen</translation>
    </message>
    <message>
        <source>Duplicate %n nodes</source>
        <translation>%n Knoten duplizieren</translation>
    </message>
    <message>
        <source>Duplicate %1</source>
        <translation>%1 duplizieren</translation>
    </message>
</context>
<context>
    <name>Minimap</name>
    <message>
        <source>Map of the graph</source>
        <translation>Übersicht des Graphen</translation>
    </message>
    <message>
        <source>Map of the graph: click to go there</source>
        <translation>Übersicht des Graphen: Klick springt zur Stelle</translation>
    </message>
</context>
<context>
    <name>MissingInputs</name>
    <message>
        <source>Missing Files</source>
        <translation>Fehlende Dateien</translation>
    </message>
    <message>
        <source>What is missing</source>
        <translation>Was fehlt</translation>
    </message>
    <message>
        <source>Node</source>
        <translation>Knoten</translation>
    </message>
    <message>
        <source>&amp;Locate…</source>
        <translation>Datei s&amp;uchen …</translation>
    </message>
    <message>
        <source>Locate the file</source>
        <translation>Datei suchen</translation>
    </message>
    <message>
        <source>No library that is loaded has its type</source>
        <translation>Keine geladene Bibliothek kennt den Typ</translation>
    </message>
    <message>
        <source>Everything that the document needs is there.</source>
        <translation>Alles, was das Dokument braucht, ist vorhanden.</translation>
    </message>
    <message>
        <source>The document needs what is not there. Nodes without it make no images.</source>
        <translation>Dem Dokument fehlen Dateien oder Bibliotheken. Die betroffenen Knoten liefern keine Bilder.</translation>
    </message>
    <message>
        <source>Locate %1</source>
        <translation>%1 suchen</translation>
    </message>
    <message>
        <source>Locate files of %1</source>
        <translation>Datei von %1 zuordnen</translation>
    </message>
    <message numerus="yes">
        <source>Locate files of %n readers</source>
        <translation>
            <numerusform>Dateien von %n Leseknoten zuordnen</numerusform>
            <numerusform>Dateien von %n Leseknoten zuordnen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>NodeFace</name>
    <message>
        <source>Unknown type</source>
        <translation>Unbekannter Typ</translation>
    </message>
</context>
<context>
    <name>NodeHeader</name>
    <message>
        <source>Enabled</source>
        <translation>Aktiv</translation>
    </message>
    <message>
        <source>A disabled node passes on what comes in, or does nothing; Help says what.</source>
        <translation>Ein inaktiver Knoten reicht weiter, was hineinkommt, oder tut nichts; Näheres in der Hilfe.</translation>
    </message>
    <message>
        <source>Name of the node</source>
        <translation>Name des Knotens</translation>
    </message>
    <message>
        <source>Na&amp;me</source>
        <translation>&amp;Name</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Notiz</translation>
    </message>
    <message>
        <source>What this node is there for</source>
        <translation>Wozu dieser Knoten da ist</translation>
    </message>
    <message>
        <source>N&amp;ote</source>
        <translation>N&amp;otiz</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Sets every attribute to its default</source>
        <translation>Setzt alle Attribute auf ihre Standardwerte</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Voreinstellungen</translation>
    </message>
    <message>
        <source>Sets of values under a name</source>
        <translation>Benannte Sätze von Werten</translation>
    </message>
    <message>
        <source>Copy as Command</source>
        <translation>Als Befehl kopieren</translation>
    </message>
    <message>
        <source>Copies what the node does as a command for the terminal</source>
        <translation>Kopiert, was der Knoten tut, als Befehl für das Terminal</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Shows the page of this node</source>
        <translation>Zeigt die Seite dieses Knotens</translation>
    </message>
</context>
<context>
    <name>NodeHelp</name>
    <message>
        <source>from %1 to %2</source>
        <translation>von %1 bis %2</translation>
    </message>
    <message>
        <source>from %1</source>
        <translation>ab %1</translation>
    </message>
    <message>
        <source>up to %1</source>
        <translation>bis %1</translation>
    </message>
    <message>
        <source>in %1</source>
        <translation>in %1</translation>
    </message>
    <message>
        <source>default %1</source>
        <translation>Standard %1</translation>
    </message>
    <message>
        <source>One of %1</source>
        <translation>Eines von %1</translation>
    </message>
    <message>
        <source>any number of connections</source>
        <translation>beliebig viele Verbindungen</translation>
    </message>
    <message>
        <source>Attributes</source>
        <translation>Attribute</translation>
    </message>
    <message>
        <source>Inputs</source>
        <translation>Eingänge</translation>
    </message>
    <message>
        <source>Outputs</source>
        <translation>Ausgänge</translation>
    </message>
    <message>
        <source>Every attribute is an input too: a wire can feed it.</source>
        <translation>Jedes Attribut ist auch ein Eingang: Eine Verbindung kann es steuern.</translation>
    </message>
    <message>
        <source>Also found as: %1</source>
        <translation>Auch zu finden als: %1</translation>
    </message>
    <message>
        <source>from %1</source>
        <comment>a library</comment>
        <translation>aus %1</translation>
    </message>
</context>
<context>
    <name>NodeItem</name>
    <message>
        <source>Show this node (V)</source>
        <translation>Diesen Knoten anzeigen (V)</translation>
    </message>
    <message>
        <source>Not evaluated: a node that feeds it failed.</source>
        <translation>Nicht berechnet: Ein Knoten davor ist fehlgeschlagen.</translation>
    </message>
</context>
<context>
    <name>NodePainter</name>
    <message>
        <source>&lt; 1 ms</source>
        <translation>&lt; 1 ms</translation>
    </message>
    <message>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>Muted: %1</source>
        <translation>Stumm: %1</translation>
    </message>
</context>
<context>
    <name>NodePanel</name>
    <message>
        <source>The nodes have different values</source>
        <translation>Die Knoten haben verschiedene Werte</translation>
    </message>
</context>
<context>
    <name>NodeSearchPopup</name>
    <message>
        <source>Add a node</source>
        <translation>Knoten hinzufügen</translation>
    </message>
    <message>
        <source>Find a node type</source>
        <translation>Knotentyp suchen</translation>
    </message>
    <message>
        <source>Node types</source>
        <translation>Knotentypen</translation>
    </message>
    <message>
        <source>No node type is found by these words.</source>
        <translation>Kein Knotentyp passt zu diesen Wörtern.</translation>
    </message>
</context>
<context>
    <name>OutputForm</name>
    <message>
        <source>Image that is written</source>
        <translation>Bild, das geschrieben wird</translation>
    </message>
    <message>
        <source>&amp;Image</source>
        <translation>B&amp;ild</translation>
    </message>
    <message>
        <source>File that is written</source>
        <translation>Datei, in die geschrieben wird</translation>
    </message>
    <message>
        <source>The ending says the format. A relative path starts from the folder of the document.</source>
        <translation>Die Endung bestimmt das Format. Ein relativer Pfad beginnt im Ordner des Dokuments.</translation>
    </message>
    <message>
        <source>Choose the file</source>
        <translation>Datei auswählen</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>Da&amp;tei</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automatisch</translation>
    </message>
    <message>
        <source>&amp;Samples</source>
        <translation>&amp;Zahlentyp</translation>
    </message>
    <message>
        <source>What each sample is stored as</source>
        <translation>Wie jeder Wert gespeichert wird</translation>
    </message>
    <message>
        <source>Float (32 bits)</source>
        <translation>Gleitkomma (32 Bit)</translation>
    </message>
    <message>
        <source>Half (16 bits)</source>
        <translation>Gleitkomma (16 Bit)</translation>
    </message>
    <message>
        <source>Integers of 16 bits</source>
        <translation>Ganzzahlen (16 Bit)</translation>
    </message>
    <message>
        <source>Integers of 8 bits</source>
        <translation>Ganzzahlen (8 Bit)</translation>
    </message>
    <message>
        <source>Signed integers of 16 bits</source>
        <translation>Ganzzahlen mit Vorzeichen (16 Bit)</translation>
    </message>
    <message>
        <source>I&amp;ntegers hold</source>
        <translation>&amp;Ganzzahlen enthalten</translation>
    </message>
    <message>
        <source>What integers stand for</source>
        <translation>Wofür Ganzzahlen stehen</translation>
    </message>
    <message>
        <source>0 to 1, as shares of the largest</source>
        <translation>0 bis 1, als Anteil am größten Wert</translation>
    </message>
    <message>
        <source>The values themselves</source>
        <translation>Die Werte selbst</translation>
    </message>
    <message>
        <source>&amp;Opacity</source>
        <translation>De&amp;ckkraft</translation>
    </message>
    <message>
        <source>Whether the opacity is written</source>
        <translation>Ob die Deckkraft geschrieben wird</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
    <message>
        <source>Leave out</source>
        <translation>Weglassen</translation>
    </message>
    <message>
        <source>&amp;Metadata</source>
        <translation>&amp;Metadaten</translation>
    </message>
    <message>
        <source>Whether metadata is written</source>
        <translation>Ob Metadaten geschrieben werden</translation>
    </message>
    <message>
        <source>Layer</source>
        <translation>Ebene</translation>
    </message>
    <message>
        <source>Outputs with one path and different layers are written to one file, where its format has layers.</source>
        <translation>Ausgaben mit gleichem Pfad und verschiedenen Ebenen landen in einer Datei, wenn ihr Format Ebenen kennt.</translation>
    </message>
    <message>
        <source>&amp;Layer</source>
        <translation>&amp;Ebene</translation>
    </message>
    <message>
        <source>Write to</source>
        <translation>Schreiben nach</translation>
    </message>
</context>
<context>
    <name>OutputsDock</name>
    <message>
        <source>Outputs</source>
        <translation>Ausgaben</translation>
    </message>
    <message>
        <source>What was written</source>
        <translation>Was geschrieben wurde</translation>
    </message>
    <message>
        <source>Nothing is written yet. Add an output to keep an image as a file.</source>
        <translation>Noch wird nichts geschrieben. Eine Ausgabe hinzufügen, um ein Bild als Datei zu behalten.</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Add an output</source>
        <translation>Ausgabe hinzufügen</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected output</source>
        <translation>Ausgewählte Ausgabe entfernen</translation>
    </message>
    <message>
        <source>&amp;Write All</source>
        <translation>Alle &amp;schreiben</translation>
    </message>
    <message>
        <source>Write all outputs</source>
        <translation>Alle Ausgaben schreiben</translation>
    </message>
    <message>
        <source>Writes every output, and what the enabled writers write</source>
        <translation>Schreibt alle Ausgaben und die Dateien der aktiven Schreibknoten</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Cancel writing</source>
        <translation>Schreiben abbrechen</translation>
    </message>
    <message>
        <source>Progress of writing</source>
        <translation>Fortschritt beim Schreiben</translation>
    </message>
    <message>
        <source>1 file written</source>
        <translation>1 Datei geschrieben</translation>
    </message>
    <message>
        <source>%1 files written</source>
        <translation>%1 Dateien geschrieben</translation>
    </message>
    <message>
        <source>, 1 error</source>
        <translation>, 1 Fehler</translation>
    </message>
    <message>
        <source>, %1 errors</source>
        <translation>, %1 Fehler</translation>
    </message>
    <message>
        <source>, canceled</source>
        <translation>, abgebrochen</translation>
    </message>
    <message>
        <source>there is no image to write: add a node that makes one</source>
        <translation>kein Bild zum Schreiben vorhanden: zuerst einen Knoten hinzufügen, der eines erzeugt</translation>
    </message>
</context>
<context>
    <name>OutputsModel</name>
    <message>
        <source>Automatic</source>
        <translation>Automatisch</translation>
    </message>
    <message>
        <source>Image</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Samples</source>
        <translation>Zahlentyp</translation>
    </message>
</context>
<context>
    <name>PanelWindow</name>
    <message>
        <source>Image files (%1)</source>
        <translation>Bilddateien (%1)</translation>
    </message>
    <message>
        <source>Command</source>
        <translation>Befehl</translation>
    </message>
    <message>
        <source>The command that makes this image</source>
        <translation>Der Befehl, der dieses Bild erzeugt</translation>
    </message>
    <message>
        <source>The output that is shown</source>
        <translation>Der angezeigte Ausgang</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgang</translation>
    </message>
    <message>
        <source>Save image…</source>
        <translation>Bild speichern …</translation>
    </message>
    <message>
        <source>Writes the image that is shown to a file</source>
        <translation>Schreibt das angezeigte Bild in eine Datei</translation>
    </message>
    <message>
        <source>Copy as command</source>
        <translation>Als Befehl kopieren</translation>
    </message>
    <message>
        <source>Copies the command that makes this image</source>
        <translation>Kopiert den Befehl, der dieses Bild erzeugt</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>The node has no image to show.</source>
        <translation>Der Knoten hat kein Bild zum Anzeigen.</translation>
    </message>
    <message>
        <source>There is not enough memory to show the image.</source>
        <translation>Der Speicher reicht nicht, um das Bild anzuzeigen.</translation>
    </message>
    <message>
        <source>This node makes no image.</source>
        <translation>Dieser Knoten erzeugt kein Bild.</translation>
    </message>
    <message>
        <source>Save image</source>
        <translation>Bild speichern</translation>
    </message>
</context>
<context>
    <name>ProblemsDock</name>
    <message>
        <source>Errors and notes</source>
        <translation>Fehler und Hinweise</translation>
    </message>
    <message>
        <source>No problems.</source>
        <translation>Keine Probleme.</translation>
    </message>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
    <message>
        <source>Problems (%1)</source>
        <translation>Probleme (%1)</translation>
    </message>
</context>
<context>
    <name>ProblemsModel</name>
    <message>
        <source>Document</source>
        <translation>Dokument</translation>
    </message>
    <message>
        <source>Error at %1</source>
        <translation>Fehler bei %1</translation>
    </message>
    <message>
        <source>Note on %1</source>
        <translation>Hinweis zu %1</translation>
    </message>
    <message>
        <source>Node</source>
        <translation>Knoten</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
</context>
<context>
    <name>ProfilerDock</name>
    <message>
        <source>Profiler</source>
        <translation>Laufzeit</translation>
    </message>
    <message>
        <source>Cost of each node</source>
        <translation>Aufwand je Knoten</translation>
    </message>
    <message>
        <source>Nothing has been evaluated yet.</source>
        <translation>Noch wurde nichts berechnet.</translation>
    </message>
</context>
<context>
    <name>ProfilerModel</name>
    <message>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>Total</source>
        <translation>Gesamt</translation>
    </message>
    <message>
        <source>How long the last evaluation took</source>
        <translation>Dauer der letzten Berechnung</translation>
    </message>
    <message>
        <source>What the samples of the results take in memory</source>
        <translation>Speicher, den die Ergebnisse belegen</translation>
    </message>
    <message>
        <source>How often the node was evaluated since the document was opened</source>
        <translation>Wie oft der Knoten seit dem Öffnen des Dokuments berechnet wurde</translation>
    </message>
    <message>
        <source>Node</source>
        <translation>Knoten</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Memory</source>
        <translation>Speicher</translation>
    </message>
    <message>
        <source>Evaluations</source>
        <translation>Berechnungen</translation>
    </message>
</context>
<context>
    <name>QNodeAttributesWidget</name>
    <message>
        <source>on</source>
        <translation>an</translation>
    </message>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
    <message>
        <source>%1: all defaults</source>
        <translation>%1: alle Standardwerte</translation>
    </message>
    <message>
        <source>Reset all</source>
        <translation>Alle zurücksetzen</translation>
    </message>
    <message>
        <source>Sets every attribute to its default</source>
        <translation>Setzt alle Attribute auf ihre Standardwerte</translation>
    </message>
    <message>
        <source>This node has no attributes.</source>
        <translation>Dieser Knoten hat keine Attribute.</translation>
    </message>
    <message>
        <source>Reset %1</source>
        <translation>%1 zurücksetzen</translation>
    </message>
    <message>
        <source>Back to the default</source>
        <translation>Zurück zum Standardwert</translation>
    </message>
    <message>
        <source>Name in documents: %1</source>
        <translation>Name in Dokumenten: %1</translation>
    </message>
    <message>
        <source>Default: %1</source>
        <translation>Standard: %1</translation>
    </message>
    <message>
        <source>driven by %1</source>
        <translation>gesteuert von %1</translation>
    </message>
    <message>
        <source>The value comes from a connection. Disconnect it to edit it here.</source>
        <translation>Der Wert kommt über eine Verbindung. Diese trennen, um ihn hier zu bearbeiten.</translation>
    </message>
</context>
<context>
    <name>QPlatformTheme</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Ja</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>&amp;Nein</translation>
    </message>
</context>
<context>
    <name>RecentFiles</name>
    <message>
        <source>No recent documents</source>
        <translation>Keine zuletzt geöffneten Dokumente</translation>
    </message>
    <message>
        <source>Clear List</source>
        <translation>Liste leeren</translation>
    </message>
</context>
<context>
    <name>RecoveryDialog</name>
    <message>
        <source>Recover Documents</source>
        <translation>Dokumente wiederherstellen</translation>
    </message>
    <message>
        <source>These documents were being edited when the program ended. Their changes were kept.</source>
        <translation>Diese Dokumente waren in Bearbeitung, als das Programm endete. Ihre Änderungen sind erhalten.</translation>
    </message>
    <message>
        <source>Documents that can be recovered</source>
        <translation>Wiederherstellbare Dokumente</translation>
    </message>
    <message>
        <source>Document</source>
        <translation>Dokument</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Last change</source>
        <translation>Letzte Änderung</translation>
    </message>
    <message>
        <source>&amp;Discard…</source>
        <translation>&amp;Verwerfen …</translation>
    </message>
    <message>
        <source>Discard the changes</source>
        <translation>Änderungen verwerfen</translation>
    </message>
    <message>
        <source>&amp;Later</source>
        <translation>&amp;Später</translation>
    </message>
    <message>
        <source>Decide later</source>
        <translation>Später entscheiden</translation>
    </message>
    <message>
        <source>&amp;Recover</source>
        <translation>&amp;Wiederherstellen</translation>
    </message>
    <message>
        <source>Recover the document</source>
        <translation>Dokument wiederherstellen</translation>
    </message>
    <message>
        <source>New document</source>
        <translation>Neues Dokument</translation>
    </message>
    <message>
        <source>It was being edited on another machine, and may still be.</source>
        <translation>Es war auf einem anderen Rechner in Bearbeitung und ist es vielleicht noch.</translation>
    </message>
    <message>
        <source>The document cannot be recovered.</source>
        <translation>Das Dokument lässt sich nicht wiederherstellen.</translation>
    </message>
    <message>
        <source>Discard Changes</source>
        <translation>Änderungen verwerfen</translation>
    </message>
    <message>
        <source>Discard the changes to %1? They cannot be brought back.</source>
        <translation>Änderungen an %1 verwerfen? Sie lassen sich nicht zurückholen.</translation>
    </message>
    <message>
        <source>Nothing is left to recover.</source>
        <translation>Es gibt nichts mehr wiederherzustellen.</translation>
    </message>
</context>
<context>
    <name>SaveAsTo</name>
    <message>
        <source>Adapt paths to %1</source>
        <translation>Pfade an %1 anpassen</translation>
    </message>
</context>
<context>
    <name>ScEng::AttributeEditor</name>
    <message>
        <source>Choose a file</source>
        <translation>Datei auswählen</translation>
    </message>
    <message>
        <source>W</source>
        <translation>B</translation>
    </message>
    <message>
        <source>H</source>
        <translation>H</translation>
    </message>
    <message>
        <source>R</source>
        <translation>R</translation>
    </message>
    <message>
        <source>G</source>
        <translation>G</translation>
    </message>
    <message>
        <source>B</source>
        <translation>B</translation>
    </message>
    <message>
        <source>O</source>
        <translation>D</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>Deckkraft</translation>
    </message>
</context>
<context>
    <name>ScEng::ContourPopup</name>
    <message>
        <source>Show contours</source>
        <translation>Höhenlinien zeigen</translation>
    </message>
    <message>
        <source>Contours</source>
        <translation>Höhenlinien</translation>
    </message>
    <message>
        <source>Step</source>
        <translation>Abstand</translation>
    </message>
    <message>
        <source>The step of value from one contour to the next</source>
        <translation>Wertabstand von einer Höhenlinie zur nächsten</translation>
    </message>
    <message>
        <source>A tenth of the range</source>
        <translation>Ein Zehntel des Wertebereichs</translation>
    </message>
</context>
<context>
    <name>ScEng::HistogramBar</name>
    <message>
        <source>Range</source>
        <translation>Wertebereich</translation>
    </message>
    <message>
        <source>Where the values of black and white come from</source>
        <translation>Woher die Werte für Schwarz und Weiß kommen</translation>
    </message>
    <message>
        <source>Value shown as black</source>
        <translation>Als Schwarz gezeigter Wert</translation>
    </message>
    <message>
        <source>Value shown as white</source>
        <translation>Als Weiß gezeigter Wert</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Log</translation>
    </message>
    <message>
        <source>Logarithmic histogram</source>
        <translation>Logarithmisches Histogramm</translation>
    </message>
    <message>
        <source>Shows rare values beside frequent ones</source>
        <translation>Macht seltene Werte neben häufigen sichtbar</translation>
    </message>
    <message>
        <source>Histogram and shown range</source>
        <translation>Histogramm und gezeigter Wertebereich</translation>
    </message>
</context>
<context>
    <name>ScEng::HistogramPlot</name>
    <message>
        <source>Histogram</source>
        <translation>Histogramm</translation>
    </message>
</context>
<context>
    <name>ScEng::ImageView</name>
    <message>
        <source>Computing…</source>
        <translation>Berechnung läuft …</translation>
    </message>
    <message>
        <source>Computing… %1 %</source>
        <translation>Berechnung läuft … %1 %</translation>
    </message>
    <message>
        <source>Image</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Arrow keys move the image, Ctrl with arrow keys moves a cursor over its pixels</source>
        <translation>Pfeiltasten verschieben das Bild, Strg mit Pfeiltasten bewegt einen Zeiger über seine Pixel</translation>
    </message>
    <message>
        <source>Preview 1:%1</source>
        <translation>Vorschau 1:%1</translation>
    </message>
</context>
<context>
    <name>ScEng::ProbeTable</name>
    <message>
        <source>Probes</source>
        <translation>Messpunkte</translation>
    </message>
    <message>
        <source>No.</source>
        <translation>Nr.</translation>
    </message>
    <message>
        <source>Place</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Karte</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Lowest</source>
        <translation>Kleinster</translation>
    </message>
    <message>
        <source>Highest</source>
        <translation>Größter</translation>
    </message>
    <message>
        <source>Mean</source>
        <translation>Mittel</translation>
    </message>
    <message>
        <source>Count</source>
        <translation>Anzahl</translation>
    </message>
    <message>
        <source>outside</source>
        <translation>außerhalb</translation>
    </message>
    <message>
        <source>mean %1</source>
        <translation>Mittel %1</translation>
    </message>
</context>
<context>
    <name>ScEng::RangeHandle</name>
    <message>
        <source>White point</source>
        <translation>Weißpunkt</translation>
    </message>
    <message>
        <source>Black point</source>
        <translation>Schwarzpunkt</translation>
    </message>
    <message>
        <source>The value shown as white</source>
        <translation>Der als Weiß gezeigte Wert</translation>
    </message>
    <message>
        <source>The value shown as black</source>
        <translation>Der als Schwarz gezeigte Wert</translation>
    </message>
</context>
<context>
    <name>ScEng::RangeModes</name>
    <message>
        <source>Absolute</source>
        <translation>Absolut</translation>
    </message>
    <message>
        <source>Declared</source>
        <translation>Angegeben</translation>
    </message>
    <message>
        <source>Lowest to highest</source>
        <translation>Gemessen</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Eigener</translation>
    </message>
    <message>
        <source>Plain</source>
        <translation>Einfach</translation>
    </message>
    <message>
        <source>Color ramp</source>
        <translation>Farbverlauf</translation>
    </message>
    <message>
        <source>Hillshade</source>
        <translation>Schummerung</translation>
    </message>
    <message>
        <source>Slope</source>
        <translation>Neigung</translation>
    </message>
    <message>
        <source>All channels</source>
        <translation>Alle Kanäle</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>X</source>
        <translation>X</translation>
    </message>
    <message>
        <source>First</source>
        <translation>Erster</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Y</source>
        <translation>Y</translation>
    </message>
    <message>
        <source>Second</source>
        <translation>Zweiter</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Z</source>
        <translation>Z</translation>
    </message>
    <message>
        <source>Third</source>
        <translation>Dritter</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>Deckkraft</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
</context>
<context>
    <name>ScEng::ShadingPopup</name>
    <message>
        <source>Shading</source>
        <translation>Darstellung</translation>
    </message>
    <message>
        <source>Color ramp</source>
        <translation>Farbverlauf</translation>
    </message>
    <message>
        <source>Light from</source>
        <translation>Licht aus</translation>
    </message>
    <message>
        <source>Where the light comes from, clockwise from the top of the image</source>
        <translation>Woher das Licht kommt, im Uhrzeigersinn ab der Oberkante des Bildes</translation>
    </message>
    <message>
        <source>Light height</source>
        <translation>Lichthöhe</translation>
    </message>
    <message>
        <source>How high the light stands over the horizon</source>
        <translation>Wie hoch das Licht über dem Horizont steht</translation>
    </message>
    <message>
        <source>Height scale</source>
        <translation>Höhenmaßstab</translation>
    </message>
    <message>
        <source>Heights in pixels per unit of value</source>
        <translation>Höhe in Pixeln je Werteinheit</translation>
    </message>
</context>
<context>
    <name>ScEng::ToolRow</name>
    <message>
        <source>More tools</source>
        <translation>Weitere Werkzeuge</translation>
    </message>
</context>
<context>
    <name>ScEng::ViewerToolbar</name>
    <message>
        <source>0 to 1, of the signed mode -1 to 1</source>
        <translation>0 bis 1, mit Vorzeichen -1 bis 1</translation>
    </message>
    <message>
        <source>The range that the image declares</source>
        <translation>Der im Bild angegebene Bereich</translation>
    </message>
    <message>
        <source>The lowest to the highest value of the image</source>
        <translation>Vom kleinsten zum größten Wert des Bildes</translation>
    </message>
    <message>
        <source>A range of your own, which stays when the image changes</source>
        <translation>Ein eigener Bereich, der bei Änderungen des Bildes bestehen bleibt</translation>
    </message>
    <message>
        <source>Viewer tools</source>
        <translation>Werkzeuge der Bildansicht</translation>
    </message>
    <message>
        <source>Shading</source>
        <translation>Darstellung</translation>
    </message>
    <message>
        <source>Shading: gray, a color ramp, or relief lit from the side</source>
        <translation>Darstellung: grau, mit Farbverlauf oder als seitlich beleuchtetes Relief</translation>
    </message>
    <message>
        <source>Contours</source>
        <translation>Höhenlinien</translation>
    </message>
    <message>
        <source>Lines of equal value</source>
        <translation>Linien gleicher Werte</translation>
    </message>
    <message>
        <source>Marks</source>
        <translation>Markierungen</translation>
    </message>
    <message>
        <source>Marks NaN, infinities, and values below and above the range</source>
        <translation>Markiert NaN, Unendlich und Werte unter und über dem Wertebereich</translation>
    </message>
    <message>
        <source>Tiles</source>
        <translation>Kacheln</translation>
    </message>
    <message>
        <source>Shows the image three by three times</source>
        <translation>Zeigt das Bild drei mal drei nebeneinander</translation>
    </message>
    <message>
        <source>Probe</source>
        <translation>Messpunkt</translation>
    </message>
    <message>
        <source>A click watches a pixel, a drag watches a region</source>
        <translation>Ein Klick beobachtet ein Pixel, Ziehen einen Bereich</translation>
    </message>
    <message>
        <source>Compare</source>
        <translation>Vergleichen</translation>
    </message>
    <message>
        <source>The image before to the left of a line</source>
        <translation>Links einer Linie das vorherige Bild</translation>
    </message>
    <message>
        <source>Fit</source>
        <translation>Einpassen</translation>
    </message>
    <message>
        <source>Shows the whole image (F)</source>
        <translation>Zeigt das ganze Bild (F)</translation>
    </message>
    <message>
        <source>Life size</source>
        <translation>Originalgröße</translation>
    </message>
    <message>
        <source>One pixel for one (1)</source>
        <translation>Pixel für Pixel (1)</translation>
    </message>
    <message>
        <source>Histogram</source>
        <translation>Histogramm</translation>
    </message>
    <message>
        <source>Shows or hides the histogram</source>
        <translation>Blendet das Histogramm ein oder aus</translation>
    </message>
    <message>
        <source>Which values are black and white</source>
        <translation>Welche Werte schwarz und weiß sind</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>Kanäle</translation>
    </message>
    <message>
        <source>The channels that are shown</source>
        <translation>Die angezeigten Kanäle</translation>
    </message>
</context>
<context>
    <name>ScEng::ViewerWidget</name>
    <message>
        <source>color</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>signed</source>
        <translation>mit Vorzeichen</translation>
    </message>
    <message>
        <source>pair</source>
        <translation>Paar</translation>
    </message>
    <message>
        <source>value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>no finite value</source>
        <translation>kein endlicher Wert</translation>
    </message>
    <message>
        <source>measured %1 to %2</source>
        <translation>gemessen %1 bis %2</translation>
    </message>
    <message>
        <source>%1 NaN</source>
        <translation>%1 NaN</translation>
    </message>
    <message>
        <source>%1 infinite</source>
        <translation>%1 unendlich</translation>
    </message>
    <message>
        <source>Facts of the image</source>
        <translation>Angaben zum Bild</translation>
    </message>
    <message>
        <source>Value under the cursor</source>
        <translation>Wert unter dem Zeiger</translation>
    </message>
    <message>
        <source>%1 × %2</source>
        <translation>%1 × %2</translation>
    </message>
    <message>
        <source>declared %1 to %2</source>
        <translation>angegeben %1 bis %2</translation>
    </message>
    <message>
        <source>x %1, y %2</source>
        <translation>x %1, y %2</translation>
    </message>
    <message>
        <source>map %1</source>
        <translation>Karte %1</translation>
    </message>
    <message>
        <source>Viewer</source>
        <translation>Bildansicht</translation>
    </message>
    <message>
        <source>preview 1:%1</source>
        <translation>Vorschau 1:%1</translation>
    </message>
</context>
<context>
    <name>SecondMapRow</name>
    <message>
        <source>&amp;Map</source>
        <translation>&amp;Karte</translation>
    </message>
    <message>
        <source>Image over the terrain</source>
        <translation>Bild über dem Gelände</translation>
    </message>
    <message>
        <source>An image that is laid over the terrain</source>
        <translation>Ein Bild, das über das Gelände gelegt wird</translation>
    </message>
    <message>
        <source>How the image is laid over the terrain</source>
        <translation>Wie das Bild über das Gelände gelegt wird</translation>
    </message>
    <message>
        <source>As color, or as a tint where its values are high</source>
        <translation>Als Farbe, oder als Tönung, wo seine Werte hoch sind</translation>
    </message>
    <message>
        <source>Color</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Mask</source>
        <translation>Maske</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
</context>
<context>
    <name>SharedPanel</name>
    <message>
        <source>A connection feeds it at %1.</source>
        <translation>Bei %1 kommt der Wert über eine Verbindung.</translation>
    </message>
    <message numerus="yes">
        <source>Set %1 of %n nodes</source>
        <translation>
            <numerusform>%1 von %n Knoten setzen</numerusform>
            <numerusform>%1 von %n Knoten setzen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ShortcutsDialog</name>
    <message>
        <source>Keyboard Shortcuts</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Search by name or keys</source>
        <translation>Nach Name oder Tasten suchen</translation>
    </message>
    <message>
        <source>Shortcuts</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>Aktion</translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source> or </source>
        <translation> oder </translation>
    </message>
    <message>
        <source>No shortcut has these words.</source>
        <translation>Kein Tastenkürzel passt zu diesen Wörtern.</translation>
    </message>
</context>
<context>
    <name>Templates</name>
    <message>
        <source>Empty</source>
        <translation>Leer</translation>
    </message>
    <message>
        <source>A document without nodes.</source>
        <translation>Ein Dokument ohne Knoten.</translation>
    </message>
    <message>
        <source>Shaded Terrain</source>
        <translation>Beleuchtetes Gelände</translation>
    </message>
    <message>
        <source>A generated height field, lit from the upper left.</source>
        <translation>Ein erzeugtes Höhenfeld, von links oben beleuchtet.</translation>
    </message>
    <message>
        <source>Height Bands</source>
        <translation>Höhenstufen</translation>
    </message>
    <message>
        <source>Terraces, and a soft mask for each band of heights.</source>
        <translation>Terrassen und eine weiche Maske je Höhenstufe.</translation>
    </message>
    <message>
        <source>Cliffs</source>
        <translation>Klippen</translation>
    </message>
    <message>
        <source>How steep the land is, and a mask of the steepest places.</source>
        <translation>Wie steil das Gelände ist, und eine Maske der steilsten Stellen.</translation>
    </message>
    <message>
        <source>Lakes</source>
        <translation>Seen</translation>
    </message>
    <message>
        <source>Water in the low places, each lake with a number, and the shores.</source>
        <translation>Wasser in den Senken, jeder See mit einer Nummer, dazu die Ufer.</translation>
    </message>
    <message>
        <source>Beveled Shape</source>
        <translation>Abgeschrägte Form</translation>
    </message>
    <message>
        <source>A mask raised with a bevel and lit. Connect your own mask.</source>
        <translation>Eine Maske, mit Fase erhöht und beleuchtet. Zum Anschließen einer eigenen Maske.</translation>
    </message>
    <message>
        <source>Hollows</source>
        <translation>Mulden</translation>
    </message>
    <message>
        <source>Land shaded by how much of the sky each place sees.</source>
        <translation>Gelände, schattiert nach dem sichtbaren Anteil des Himmels.</translation>
    </message>
</context>
<context>
    <name>TemplatesDialog</name>
    <message>
        <source>New from Template</source>
        <translation>Neu aus Vorlage</translation>
    </message>
    <message>
        <source>Templates</source>
        <translation>Vorlagen</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Erstellen</translation>
    </message>
</context>
<context>
    <name>TerrainCanvas</name>
    <message>
        <source>Terrain</source>
        <translation>Gelände</translation>
    </message>
    <message>
        <source>Arrow keys turn the terrain, with Shift they move it, plus and minus zoom, Home shows all of it.</source>
        <translation>Pfeiltasten drehen das Gelände, mit Umschalt verschieben sie es, Plus und Minus zoomen, Pos1 zeigt alles.</translation>
    </message>
    <message>
        <source>The 3D view needs OpenGL, which cannot be used here: %1.</source>
        <translation>Die 3D-Ansicht braucht OpenGL, das hier nicht nutzbar ist: %1.</translation>
    </message>
    <message>
        <source>There is no height map to show.</source>
        <translation>Es gibt keine Höhenkarte zum Anzeigen.</translation>
    </message>
    <message>
        <source>An image of %1 × %2 pixels is too small for a terrain.</source>
        <translation>Ein Bild mit %1 × %2 Pixeln ist zu klein für ein Gelände.</translation>
    </message>
    <message>
        <source>The image has no finite heights.</source>
        <translation>Das Bild hat keine endlichen Höhen.</translation>
    </message>
</context>
<context>
    <name>TerrainRenderer</name>
    <message>
        <source>this display offers no OpenGL context</source>
        <translation>diese Anzeige bietet keinen OpenGL-Kontext</translation>
    </message>
    <message>
        <source>OpenGL cannot draw off the screen here</source>
        <translation>OpenGL kann hier nicht außerhalb des Bildschirms zeichnen</translation>
    </message>
    <message>
        <source>this OpenGL is older than 2.1</source>
        <translation>dieses OpenGL ist älter als 2.1</translation>
    </message>
    <message>
        <source>the display took its OpenGL context back</source>
        <translation>die Anzeige hat ihren OpenGL-Kontext zurückgezogen</translation>
    </message>
    <message>
        <source>OpenGL has no memory for a picture of this size</source>
        <translation>OpenGL fehlt der Speicher für ein Bild dieser Größe</translation>
    </message>
</context>
<context>
    <name>TerrainSettingsPopup</name>
    <message>
        <source>Exaggeration of heights</source>
        <translation>Überhöhung</translation>
    </message>
    <message>
        <source>Direction of the light</source>
        <translation>Lichtrichtung</translation>
    </message>
    <message>
        <source>Height of the light</source>
        <translation>Lichthöhe</translation>
    </message>
    <message>
        <source>Settings of the 3D view</source>
        <translation>Einstellungen der 3D-Ansicht</translation>
    </message>
    <message>
        <source>&amp;Exaggeration</source>
        <translation>&amp;Überhöhung</translation>
    </message>
    <message>
        <source>Light &amp;direction</source>
        <translation>Licht&amp;richtung</translation>
    </message>
    <message>
        <source>Light &amp;height</source>
        <translation>Licht&amp;höhe</translation>
    </message>
    <message>
        <source>&amp;Reset settings</source>
        <translation>Einstellungen &amp;zurücksetzen</translation>
    </message>
    <message>
        <source>Reset the settings of the 3D view</source>
        <translation>Einstellungen der 3D-Ansicht zurücksetzen</translation>
    </message>
</context>
<context>
    <name>TerrainView</name>
    <message>
        <source>3D view</source>
        <translation>3D-Ansicht</translation>
    </message>
    <message>
        <source>Reset view</source>
        <translation>Ansicht zurücksetzen</translation>
    </message>
    <message>
        <source>Show all of the terrain (Home)</source>
        <translation>Das ganze Gelände zeigen (Pos1)</translation>
    </message>
    <message>
        <source>−</source>
        <translation>−</translation>
    </message>
    <message>
        <source>Zoom out (−)</source>
        <translation>Verkleinern (−)</translation>
    </message>
    <message>
        <source>+</source>
        <translation>+</translation>
    </message>
    <message>
        <source>Zoom in (+)</source>
        <translation>Vergrößern (+)</translation>
    </message>
    <message>
        <source>Wireframe</source>
        <translation>Drahtgitter</translation>
    </message>
    <message>
        <source>Show the lines of the mesh (W)</source>
        <translation>Die Linien des Gitters zeigen (W)</translation>
    </message>
    <message>
        <source>Height and light…</source>
        <translation>Höhe und Licht …</translation>
    </message>
    <message>
        <source>Exaggeration and light</source>
        <translation>Überhöhung und Licht</translation>
    </message>
</context>
<context>
    <name>TerrainWorker</name>
    <message>
        <source>there is not enough memory for this image</source>
        <translation>der Speicher reicht nicht für dieses Bild</translation>
    </message>
</context>
<context>
    <name>ViewerDock</name>
    <message>
        <source>Output</source>
        <translation>Ausgang</translation>
    </message>
    <message>
        <source>The output of the node that is shown</source>
        <translation>Der angezeigte Ausgang des Knotens</translation>
    </message>
    <message>
        <source>Result or input</source>
        <translation>Ergebnis oder Eingang</translation>
    </message>
    <message>
        <source>Shows the result of the node, or an image that feeds it</source>
        <translation>Zeigt das Ergebnis des Knotens oder eines seiner Eingangsbilder</translation>
    </message>
    <message>
        <source>Pin</source>
        <translation>Anheften</translation>
    </message>
    <message>
        <source>Stays with this node whatever is selected</source>
        <translation>Bleibt bei diesem Knoten, egal was ausgewählt ist</translation>
    </message>
    <message>
        <source>Pin the shown node</source>
        <translation>Angezeigten Knoten anheften</translation>
    </message>
    <message>
        <source>Nothing is shown</source>
        <translation>Nichts angezeigt</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Input %1: %2</source>
        <translation>Eingang %1: %2</translation>
    </message>
    <message>
        <source>Pinned</source>
        <translation>Angeheftet</translation>
    </message>
</context>
<context>
    <name>WatchMenu</name>
    <message>
        <source>&amp;Changed Image Files</source>
        <translation>&amp;Geänderte Bilddateien</translation>
    </message>
    <message>
        <source>&amp;Ask</source>
        <translation>&amp;Fragen</translation>
    </message>
    <message>
        <source>&amp;Read Again at Once</source>
        <translation>&amp;Sofort neu lesen</translation>
    </message>
    <message>
        <source>&amp;Leave Alone</source>
        <translation>&amp;Unverändert lassen</translation>
    </message>
</context>
<context>
    <name>WireDrag</name>
    <message>
        <source>No output here fits: %1</source>
        <translation>Hier passt kein Ausgang: %1</translation>
    </message>
    <message>
        <source>No input here fits: %1</source>
        <translation>Hier passt kein Eingang: %1</translation>
    </message>
</context>
<context>
    <name>WireFit</name>
    <message>
        <source>image</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>flag</source>
        <translation>Schalter</translation>
    </message>
    <message>
        <source>number</source>
        <translation>Zahl</translation>
    </message>
    <message>
        <source>text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>color</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>point</source>
        <translation>Punkt</translation>
    </message>
    <message>
        <source>frame</source>
        <translation>Rahmen</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>Both are inputs</source>
        <translation>Beides sind Eingänge</translation>
    </message>
    <message>
        <source>Both are outputs</source>
        <translation>Beides sind Ausgänge</translation>
    </message>
    <message>
        <source>A node cannot feed itself</source>
        <translation>Ein Knoten kann sich nicht selbst speisen</translation>
    </message>
    <message>
        <source>Output: %1, input: %2</source>
        <translation>Ausgang: %1, Eingang: %2</translation>
    </message>
    <message>
        <source>This would close a cycle</source>
        <translation>Das ergäbe einen Kreis</translation>
    </message>
</context>
<context>
    <name>Workspace</name>
    <message>
        <source>Read again: %1</source>
        <translation>Neu eingelesen: %1</translation>
    </message>
</context>
</TS>
