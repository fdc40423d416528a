<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Details</name>
    <message>
        <source>from %1 to %2</source>
        <translation>von %1 bis %2</translation>
    </message>
    <message>
        <source>%1 or more</source>
        <translation>%1 oder mehr</translation>
    </message>
    <message>
        <source>%1 or less</source>
        <translation>%1 oder weniger</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>of the application</source>
        <translation>die Anwendung</translation>
    </message>
    <message>
        <source>of each profile: %1</source>
        <translation>jedes Profil: %1</translation>
    </message>
    <message>
        <source>a record of the store</source>
        <translation>ein interner Eintrag</translation>
    </message>
    <message>
        <source>not set</source>
        <translation>nicht gesetzt</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Meaning</source>
        <translation>Bedeutung</translation>
    </message>
    <message>
        <source>Nothing is known of this setting.</source>
        <translation>Über diese Einstellung ist nichts bekannt.</translation>
    </message>
    <message>
        <source>Scope</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>any</source>
        <translation>beliebig</translation>
    </message>
    <message>
        <source>Range</source>
        <translation>Wertebereich</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Einheit</translation>
    </message>
    <message>
        <source>Choices</source>
        <translation>Auswahl</translation>
    </message>
    <message>
        <source>%1 %2</source>
        <translation>%1 %2</translation>
    </message>
    <message>
        <source>Pending in this window</source>
        <translation>In diesem Fenster ausstehend</translation>
    </message>
    <message>
        <source>will not be stored: the default answers</source>
        <translation>wird nicht gespeichert: es gilt die Vorgabe</translation>
    </message>
    <message>
        <source>Effective</source>
        <translation>Wirksam</translation>
    </message>
    <message>
        <source>Answered by</source>
        <translation>Herkunft</translation>
    </message>
    <message>
        <source>Locked by</source>
        <translation>Gesperrt durch</translation>
    </message>
    <message>
        <source>Stored</source>
        <translation>Gespeichert</translation>
    </message>
    <message>
        <source>In profile %1</source>
        <translation>Im Profil %1</translation>
    </message>
    <message>
        <source>Default of the site</source>
        <translation>Vorgabe der Systemverwaltung</translation>
    </message>
    <message>
        <source>File of the site</source>
        <translation>Datei der Systemverwaltung</translation>
    </message>
    <message>
        <source>Built-in default</source>
        <translation>Eingebaute Vorgabe</translation>
    </message>
    <message>
        <source>Kinds differ</source>
        <translation>Verschiedene Typen</translation>
    </message>
    <message>
        <source>What is stored is of kind %1, and the default of kind %2.</source>
        <translation>Gespeichert ist ein Wert vom Typ %1, die Vorgabe ist vom Typ %2.</translation>
    </message>
    <message>
        <source>various</source>
        <translation>verschiedene</translation>
    </message>
    <message>
        <source>nothing: no layer has a value</source>
        <translation>keine: es gibt nirgends einen Wert</translation>
    </message>
    <message>
        <source>the built-in default</source>
        <translation>die eingebaute Vorgabe</translation>
    </message>
    <message>
        <source>the default of the site</source>
        <translation>die Vorgabe der Systemverwaltung</translation>
    </message>
    <message>
        <source>the site, which has locked it</source>
        <translation>die Systemverwaltung, die sie gesperrt hat</translation>
    </message>
    <message>
        <source>the settings file</source>
        <translation>die Einstellungsdatei</translation>
    </message>
    <message>
        <source>the profile %1</source>
        <translation>das Profil %1</translation>
    </message>
    <message>
        <source>Marks</source>
        <translation>Zeichen</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Differ from the default</source>
        <translation>Von der Vorgabe abweichend</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
</context>
<context>
    <name>ExportDialog</name>
    <message>
        <source>Nothing of this is stored.</source>
        <translation>Davon ist nichts gespeichert.</translation>
    </message>
</context>
<context>
    <name>QRVWindow::Applier</name>
    <message>
        <source>stopped</source>
        <translation>gestoppt</translation>
    </message>
    <message>
        <source>the process that applies edits cannot be started: %1</source>
        <translation>Der Prozess, der Änderungen anwendet, lässt sich nicht starten: %1</translation>
    </message>
    <message>
        <source>the process that applies edits was killed or crashed</source>
        <translation>Der Prozess, der Änderungen anwendet, wurde beendet oder ist abgestürzt</translation>
    </message>
    <message>
        <source>the process that applies edits ended with exit code %1 and said nothing</source>
        <translation>Der Prozess, der Änderungen anwendet, endete mit dem Code %1 ohne Meldung</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ApplyProgress</name>
    <message>
        <source>%1: another process had just reset it, and this save has stored it again.</source>
        <translation>%1: Ein anderer Prozess hatte die Einstellung gerade zurückgesetzt. Dieses Speichern hat sie wieder gespeichert.</translation>
    </message>
    <message>
        <source>%1: another process had just saved %2, which this save has replaced.</source>
        <translation>%1: Ein anderer Prozess hatte gerade %2 gespeichert. Dieses Speichern hat den Wert ersetzt.</translation>
    </message>
    <message>
        <source>Nothing is lost: 1 setting is still pending.</source>
        <translation>Nichts ist verloren: 1 Einstellung ist noch ausstehend.</translation>
    </message>
    <message numerus="yes">
        <source>Nothing is lost: %n settings are still pending.</source>
        <translation>
            <numerusform>Nichts ist verloren: %n Einstellung ist noch ausstehend.</numerusform>
            <numerusform>Nichts ist verloren: %n Einstellungen sind noch ausstehend.</numerusform>
        </translation>
    </message>
    <message>
        <source>Not applied: another process has changed what is edited here.</source>
        <translation>Nicht angewendet: Ein anderer Prozess hat geändert, was hier bearbeitet wird.</translation>
    </message>
    <message>
        <source>Not applied: %1</source>
        <translation>Nicht angewendet: %1</translation>
    </message>
    <message>
        <source>It waits for %1.</source>
        <translation>Es wird gewartet auf: %1.</translation>
    </message>
    <message>
        <source>Applying…</source>
        <translation>Wird angewendet…</translation>
    </message>
    <message>
        <source>Applied 1 setting.</source>
        <translation>1 Einstellung angewendet.</translation>
    </message>
    <message numerus="yes">
        <source>Applied %n settings.</source>
        <translation>
            <numerusform>%n Einstellung angewendet.</numerusform>
            <numerusform>%n Einstellungen angewendet.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::ChangeView</name>
    <message>
        <source>All &amp;lines</source>
        <translation>Alle &amp;Zeilen</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ChangesModel</name>
    <message>
        <source>%1 in profile %2</source>
        <translation>%1 im Profil %2</translation>
    </message>
    <message>
        <source>not stored</source>
        <translation>nicht gespeichert</translation>
    </message>
    <message>
        <source>this window</source>
        <translation>dieses Fenster</translation>
    </message>
    <message>
        <source>another process</source>
        <translation>ein anderer Prozess</translation>
    </message>
    <message>
        <source>%1: %2 was %3 and is %4, by %5</source>
        <translation>%1: %2 war %3 und ist %4 (%5)</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Vorher</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Nachher</translation>
    </message>
    <message>
        <source>By</source>
        <translation>Wer</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ChangesPane</name>
    <message>
        <source>Changes</source>
        <translation>Änderungen</translation>
    </message>
    <message>
        <source>Filter changes</source>
        <translation>Änderungen filtern</translation>
    </message>
    <message>
        <source>Store&apos;s &amp;records</source>
        <translation>Interne Ei&amp;nträge</translation>
    </message>
    <message>
        <source>&amp;Pause</source>
        <translation>&amp;Pause</translation>
    </message>
    <message>
        <source>Adds no lines until it is pressed again</source>
        <translation>Fügt keine Zeilen hinzu, bis der Knopf wieder gedrückt wird</translation>
    </message>
    <message>
        <source>C&amp;lear</source>
        <translation>L&amp;eeren</translation>
    </message>
    <message>
        <source>Empties this list; the settings stay as they are</source>
        <translation>Leert diese Liste; die Einstellungen bleiben, wie sie sind</translation>
    </message>
    <message>
        <source>Changes, the latest last</source>
        <translation>Änderungen, die neueste zuletzt</translation>
    </message>
    <message>
        <source>No changes yet.</source>
        <translation>Noch keine Änderungen.</translation>
    </message>
    <message>
        <source>No change matches what is shown here.</source>
        <translation>Keine Änderung passt zum Filter.</translation>
    </message>
    <message>
        <source>1 change.</source>
        <translation>1 Änderung.</translation>
    </message>
    <message numerus="yes">
        <source>%n changes.</source>
        <translation>
            <numerusform>%n Änderung.</numerusform>
            <numerusform>%n Änderungen.</numerusform>
        </translation>
    </message>
    <message>
        <source>1 new while paused.</source>
        <translation>1 neue während der Pause.</translation>
    </message>
    <message numerus="yes">
        <source>%n new while paused.</source>
        <translation>
            <numerusform>%n neue während der Pause.</numerusform>
            <numerusform>%n neue während der Pause.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::ChoiceField</name>
    <message>
        <source>%1 – %2</source>
        <translation>%1 – %2</translation>
    </message>
    <message>
        <source>none of the choices</source>
        <translation>nicht in der Auswahl</translation>
    </message>
    <message>
        <source>Other…</source>
        <translation>Anderer Wert…</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ColorField</name>
    <message>
        <source>no colour</source>
        <translation>keine Farbe</translation>
    </message>
    <message>
        <source>%1 – choose another colour</source>
        <translation>%1 – andere Farbe wählen</translation>
    </message>
    <message>
        <source>Choose a colour; now %1</source>
        <translation>Farbe wählen; jetzt %1</translation>
    </message>
    <message>
        <source>Choose a colour</source>
        <translation>Farbe wählen</translation>
    </message>
</context>
<context>
    <name>QRVWindow::CompareDialog</name>
    <message>
        <source>only here</source>
        <translation>nur hier</translation>
    </message>
    <message>
        <source>only there</source>
        <translation>nur dort</translation>
    </message>
    <message>
        <source>differs</source>
        <translation>verschieden</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>Difference</source>
        <translation>Unterschied</translation>
    </message>
    <message>
        <source>Here</source>
        <translation>Hier</translation>
    </message>
    <message>
        <source>There</source>
        <translation>Dort</translation>
    </message>
    <message>
        <source>Compare settings</source>
        <translation>Einstellungen vergleichen</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen…</translation>
    </message>
    <message>
        <source>Compare &amp;with:</source>
        <translation>&amp;Vergleich mit:</translation>
    </message>
    <message>
        <source>Filter by setting or value</source>
        <translation>Nach Einstellung oder Wert filtern</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Differences</source>
        <translation>Unterschiede</translation>
    </message>
    <message>
        <source>10 minutes ago, yesterday, 09:30, 2026-11-22 09:30</source>
        <translation>10 minutes ago, yesterday, 09:30, 2026-11-22 09:30</translation>
    </message>
    <message>
        <source>As it was at this &amp;time:</source>
        <translation>Stand zu dieser Zei&amp;t:</translation>
    </message>
    <message>
        <source>Or before this &amp;save:</source>
        <translation>Oder vor diesem &amp;Speichern:</translation>
    </message>
    <message>
        <source>Take bac&amp;k saves…</source>
        <translation>Speichern zurück&amp;nehmen…</translation>
    </message>
    <message>
        <source>&amp;Copy as commands</source>
        <translation>Als Befehle &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Take their values</source>
        <translation>Andere W&amp;erte übernehmen</translation>
    </message>
    <message>
        <source>Commands that take their values for the checked lines</source>
        <translation>Befehle, die für die angehakten Zeilen die anderen Werte übernehmen</translation>
    </message>
    <message>
        <source>Makes pending edits of the checked lines. Nothing is written yet.</source>
        <translation>Merkt die angehakten Zeilen als ausstehende Änderungen vor. Noch wird nichts geschrieben.</translation>
    </message>
    <message>
        <source>Defaults</source>
        <translation>Vorgaben</translation>
    </message>
    <message>
        <source>Settings of the application</source>
        <translation>Einstellungen der Anwendung</translation>
    </message>
    <message>
        <source>Profile %1</source>
        <translation>Profil %1</translation>
    </message>
    <message>
        <source>The settings when the window started</source>
        <translation>Die Einstellungen beim Start des Fensters</translation>
    </message>
    <message>
        <source>A moment of the history</source>
        <translation>Ein Zeitpunkt des Verlaufs</translation>
    </message>
    <message>
        <source>Another file</source>
        <translation>Eine andere Datei</translation>
    </message>
    <message>
        <source>File %1</source>
        <translation>Datei %1</translation>
    </message>
    <message>
        <source>Compare with a file</source>
        <translation>Mit einer Datei vergleichen</translation>
    </message>
    <message>
        <source>The history has no saves.</source>
        <translation>Der Verlauf ist leer.</translation>
    </message>
    <message>
        <source>No file is chosen.</source>
        <translation>Es ist keine Datei gewählt.</translation>
    </message>
    <message>
        <source>Both sides are equal.</source>
        <translation>Beide Seiten sind gleich.</translation>
    </message>
    <message>
        <source>The filter shows %1 of %2 differences.</source>
        <translation>Der Filter zeigt %1 von %2 Unterschieden.</translation>
    </message>
    <message>
        <source>1 difference.</source>
        <translation>1 Unterschied.</translation>
    </message>
    <message numerus="yes">
        <source>%n differences.</source>
        <translation>
            <numerusform>%n Unterschied.</numerusform>
            <numerusform>%n Unterschiede.</numerusform>
        </translation>
    </message>
    <message>
        <source>Take values of the other side</source>
        <translation>Werte der anderen Seite übernehmen</translation>
    </message>
</context>
<context>
    <name>QRVWindow::CopyToProfileDialog</name>
    <message>
        <source>Copy to a profile</source>
        <translation>In ein Profil kopieren</translation>
    </message>
    <message>
        <source>Name of a profile, also a new one</source>
        <translation>Name eines Profils, auch eines neuen</translation>
    </message>
    <message>
        <source>To the &amp;profile:</source>
        <translation>In das &amp;Profil:</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>No settings are selected.</source>
        <translation>Es sind keine Einstellungen ausgewählt.</translation>
    </message>
    <message>
        <source>Name a profile.</source>
        <translation>Der Name eines Profils fehlt.</translation>
    </message>
    <message>
        <source>This is the profile that they are copied from.</source>
        <translation>Aus diesem Profil wird kopiert.</translation>
    </message>
    <message>
        <source>The name of a profile holds no dots.</source>
        <translation>Der Name eines Profils enthält keine Punkte.</translation>
    </message>
    <message>
        <source>1 setting becomes a pending edit of the profile.</source>
        <translation>1 Einstellung wird zur ausstehenden Änderung des Profils.</translation>
    </message>
    <message numerus="yes">
        <source>%n settings become pending edits of the profile.</source>
        <translation>
            <numerusform>%n Einstellung wird zur ausstehenden Änderung des Profils.</numerusform>
            <numerusform>%n Einstellungen werden zu ausstehenden Änderungen des Profils.</numerusform>
        </translation>
    </message>
    <message>
        <source>Copy to the profile %1</source>
        <translation>In das Profil %1 kopieren</translation>
    </message>
</context>
<context>
    <name>QRVWindow::DataField</name>
    <message>
        <source>Base64</source>
        <translation>Base64</translation>
    </message>
    <message>
        <source>Hexadecimal</source>
        <translation>Hexadezimal</translation>
    </message>
    <message>
        <source>Form of the data</source>
        <translation>Darstellung der Daten</translation>
    </message>
    <message>
        <source>%1 B</source>
        <translation>%1 B</translation>
    </message>
</context>
<context>
    <name>QRVWindow::DetailsPane</name>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Details</translation>
    </message>
    <message>
        <source>No setting is chosen.</source>
        <translation>Keine Einstellung gewählt.</translation>
    </message>
    <message>
        <source>Key path</source>
        <translation>Schlüsselpfad</translation>
    </message>
    <message>
        <source>Copy the key path</source>
        <translation>Schlüsselpfad kopieren</translation>
    </message>
    <message>
        <source>Command</source>
        <translation>Befehl</translation>
    </message>
    <message>
        <source>Command that sets it</source>
        <translation>Befehl, der sie setzt</translation>
    </message>
    <message>
        <source>Copy the command</source>
        <translation>Befehl kopieren</translation>
    </message>
    <message>
        <source>Back to defaults</source>
        <translation>Zurück zu Vorgaben</translation>
    </message>
    <message>
        <source>Copy as commands</source>
        <translation>Als Befehle kopieren</translation>
    </message>
    <message>
        <source>Last changes</source>
        <translation>Letzte Änderungen</translation>
    </message>
    <message numerus="yes">
        <source>%n settings</source>
        <translation>
            <numerusform>%n Einstellung</numerusform>
            <numerusform>%n Einstellungen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::DragHandle</name>
    <message>
        <source>Drag up or down to change the number.</source>
        <translation>Nach oben oder unten ziehen, um die Zahl zu ändern.</translation>
    </message>
    <message>
        <source>Handle to drag the number up or down</source>
        <translation>Griff, mit dem sich die Zahl durch Ziehen ändern lässt</translation>
    </message>
</context>
<context>
    <name>QRVWindow::EditDialog</name>
    <message>
        <source>&amp;Value</source>
        <translation>&amp;Wert</translation>
    </message>
    <message>
        <source>Edit %1</source>
        <translation>%1 bearbeiten</translation>
    </message>
    <message numerus="yes">
        <source>Set %n settings to one value</source>
        <translation>
            <numerusform>%n Einstellung auf einen Wert setzen</numerusform>
            <numerusform>%n Einstellungen auf einen Wert setzen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n settings get this value:</source>
        <translation>
            <numerusform>%n Einstellung bekommt diesen Wert:</numerusform>
            <numerusform>%n Einstellungen bekommen diesen Wert:</numerusform>
        </translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Kind:</source>
        <translation>Typ:</translation>
    </message>
    <message>
        <source>Profile:</source>
        <translation>Profil:</translation>
    </message>
    <message>
        <source>Now:</source>
        <translation>Jetzt:</translation>
    </message>
    <message>
        <source>different values</source>
        <translation>verschiedene Werte</translation>
    </message>
    <message>
        <source>Use the &amp;default</source>
        <translation>&amp;Vorgabe verwenden</translation>
    </message>
    <message>
        <source>Default:</source>
        <translation>Vorgabe:</translation>
    </message>
    <message>
        <source>C&amp;ommand that sets the same</source>
        <translation>&amp;Befehl, der dasselbe setzt</translation>
    </message>
    <message>
        <source>Command that sets the same</source>
        <translation>Befehl, der dasselbe setzt</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Copy the command</source>
        <translation>Befehl kopieren</translation>
    </message>
    <message>
        <source>The settings are of different kinds: %1 is %2, %3 is %4.</source>
        <translation>Die Einstellungen haben verschiedene Typen (%1: %2, %3: %4).</translation>
    </message>
    <message>
        <source>Edit of %1</source>
        <translation>%1 bearbeiten</translation>
    </message>
    <message numerus="yes">
        <source>Edit of %n settings</source>
        <translation>
            <numerusform>%n Einstellung bearbeiten</numerusform>
            <numerusform>%n Einstellungen bearbeiten</numerusform>
        </translation>
    </message>
    <message>
        <source>The value has changed in the file meanwhile: %1</source>
        <translation>Der Wert hat sich inzwischen in der Datei geändert: %1</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>The site has locked this setting: its value answers, whatever is stored.</source>
        <translation>Die Systemverwaltung hat diese Einstellung gesperrt: Ihr Wert gilt, was immer gespeichert ist.</translation>
    </message>
</context>
<context>
    <name>QRVWindow::EditorMessage</name>
    <message>
        <source>Store it anyway</source>
        <translation>Trotzdem speichern</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ExportDialog</name>
    <message>
        <source>Export settings</source>
        <translation>Einstellungen exportieren</translation>
    </message>
    <message>
        <source>Property list</source>
        <translation>Property-Liste</translation>
    </message>
    <message>
        <source>JSON</source>
        <translation>JSON</translation>
    </message>
    <message>
        <source>Commands for a shell</source>
        <translation>Befehle für eine Shell</translation>
    </message>
    <message>
        <source>&amp;Leave out what belongs to this machine</source>
        <translation>&amp;Weglassen, was zu diesem Rechner gehört</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen…</translation>
    </message>
    <message>
        <source>&amp;What:</source>
        <translation>&amp;Inhalt:</translation>
    </message>
    <message>
        <source>&amp;As:</source>
        <translation>&amp;Format:</translation>
    </message>
    <message>
        <source>&amp;File:</source>
        <translation>Da&amp;tei:</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Speichern</translation>
    </message>
    <message>
        <source>All settings</source>
        <translation>Alle Einstellungen</translation>
    </message>
    <message>
        <source>The selected setting</source>
        <translation>Die ausgewählte Einstellung</translation>
    </message>
    <message numerus="yes">
        <source>The %n selected settings</source>
        <translation>
            <numerusform>Die %n ausgewählte Einstellung</numerusform>
            <numerusform>Die %n ausgewählten Einstellungen</numerusform>
        </translation>
    </message>
    <message>
        <source>Profile %1</source>
        <translation>Profil %1</translation>
    </message>
    <message>
        <source>Export to a file</source>
        <translation>In eine Datei exportieren</translation>
    </message>
    <message>
        <source>Replace the file?</source>
        <translation>Datei ersetzen?</translation>
    </message>
    <message>
        <source>%1 exists. Replace it?</source>
        <translation>%1 gibt es schon. Ersetzen?</translation>
    </message>
    <message>
        <source>&amp;Replace</source>
        <translation>&amp;Ersetzen</translation>
    </message>
</context>
<context>
    <name>QRVWindow::FilterBar</name>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>What the store itself keeps, such as the name of this machine</source>
        <translation>Was die Einstellungsverwaltung selbst festhält, zum Beispiel den Namen dieses Rechners</translation>
    </message>
    <message>
        <source>Words of a name or value, or for example: %1</source>
        <translation>Wörter aus einem Namen oder Wert, oder zum Beispiel: %1</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Filters of before (Alt+Down)</source>
        <translation>Frühere Filter (Alt+Abwärtspfeil)</translation>
    </message>
    <message>
        <source>History of filters</source>
        <translation>Frühere Filter</translation>
    </message>
    <message>
        <source>F&amp;ilter:</source>
        <translation>&amp;Filter:</translation>
    </message>
    <message>
        <source>&amp;Modified %1</source>
        <translation>&amp;Geändert %1</translation>
    </message>
    <message>
        <source>&amp;Store&apos;s records %1</source>
        <translation>&amp;Interne Einträge %1</translation>
    </message>
    <message>
        <source>&amp;Live %1</source>
        <translation>&amp;Live %1</translation>
    </message>
    <message>
        <source>%1 of 1 setting</source>
        <translation>%1 von 1 Einstellung</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n settings</source>
        <translation>
            <numerusform>%1 von %n Einstellung</numerusform>
            <numerusform>%1 von %n Einstellungen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::HistoryDialog</name>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Vorher</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Nachher</translation>
    </message>
    <message>
        <source>In the file now</source>
        <translation>Jetzt in der Datei</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Anmerkung</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Filter by setting or program</source>
        <translation>Nach Einstellung oder Programm filtern</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Changes of the selected saves</source>
        <translation>Änderungen der ausgewählten Speichervorgänge</translation>
    </message>
    <message>
        <source>Take back what was changed since, &amp;too</source>
        <translation>&amp;Auch zurücknehmen, was seither geändert wurde</translation>
    </message>
    <message>
        <source>Take &amp;back</source>
        <translation>Zu&amp;rücknehmen</translation>
    </message>
    <message>
        <source>Makes pending edits of the checked lines. Nothing is written yet.</source>
        <translation>Merkt die angehakten Zeilen als ausstehende Änderungen vor. Noch wird nichts geschrieben.</translation>
    </message>
    <message>
        <source>%1 Changed since.</source>
        <translation>%1 Seither geändert.</translation>
    </message>
    <message>
        <source>It has the value of before.</source>
        <translation>Der vorherige Wert gilt bereits.</translation>
    </message>
    <message>
        <source>The history is read…</source>
        <translation>Der Verlauf wird gelesen…</translation>
    </message>
    <message>
        <source>The history has no saves.</source>
        <translation>Der Verlauf ist leer.</translation>
    </message>
    <message>
        <source>What was changed since is taken back, too. Each such line says so.</source>
        <translation>Auch was seither geändert wurde, wird zurückgenommen. Jede solche Zeile sagt es.</translation>
    </message>
    <message>
        <source>1 setting was changed since. It stays as it is.</source>
        <translation>1 Einstellung wurde seither geändert. Sie bleibt, wie sie ist.</translation>
    </message>
    <message numerus="yes">
        <source>%n settings were changed since. They stay as they are.</source>
        <translation>
            <numerusform>%n Einstellung wurde seither geändert. Sie bleibt, wie sie ist.</numerusform>
            <numerusform>%n Einstellungen wurden seither geändert. Sie bleiben, wie sie sind.</numerusform>
        </translation>
    </message>
    <message>
        <source>Take back saves</source>
        <translation>Speichern zurücknehmen</translation>
    </message>
</context>
<context>
    <name>QRVWindow::HistoryList</name>
    <message>
        <source>not stored</source>
        <translation>nicht gespeichert</translation>
    </message>
    <message>
        <source>another program</source>
        <translation>ein anderes Programm</translation>
    </message>
    <message>
        <source>%1, %2: was %3, is %4</source>
        <translation>%1, %2: war %3, ist %4</translation>
    </message>
    <message>
        <source>%1, %2: %3 was %4, is %5</source>
        <translation>%1, %2: %3 war %4, ist %5</translation>
    </message>
    <message>
        <source>Last changes</source>
        <translation>Letzte Änderungen</translation>
    </message>
    <message>
        <source>Looking into the history…</source>
        <translation>Der Verlauf wird durchsucht…</translation>
    </message>
    <message>
        <source>The history has no change of this setting.</source>
        <translation>Der Verlauf enthält keine Änderung dieser Einstellung.</translation>
    </message>
    <message>
        <source>Take back to %1</source>
        <translation>Zurücknehmen auf: %1</translation>
    </message>
    <message>
        <source>Last change</source>
        <translation>Letzte Änderung</translation>
    </message>
    <message>
        <source>Take back</source>
        <translation>Zurücknehmen</translation>
    </message>
    <message>
        <source>Makes an edit with the value from before this change</source>
        <translation>Merkt den Wert von vor dieser Änderung als ausstehende Änderung vor</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ImportDialog</name>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>In the file now</source>
        <translation>Jetzt in der Datei</translation>
    </message>
    <message>
        <source>Will be</source>
        <translation>Wird</translation>
    </message>
    <message>
        <source>Import settings</source>
        <translation>Einstellungen importieren</translation>
    </message>
    <message>
        <source>What an import of %1 changes:</source>
        <translation>Was ein Import von %1 ändert:</translation>
    </message>
    <message>
        <source>Changes by the import</source>
        <translation>Änderungen durch den Import</translation>
    </message>
    <message>
        <source>&amp;Reset settings that the file does not hold</source>
        <translation>Einstellungen zu&amp;rücksetzen, die nicht in der Datei stehen</translation>
    </message>
    <message>
        <source>&amp;Make pending edits</source>
        <translation>Als ausstehend &amp;vormerken</translation>
    </message>
    <message>
        <source>Nothing would change.</source>
        <translation>Nichts würde sich ändern.</translation>
    </message>
    <message>
        <source>Nothing is written: the changes become pending edits.</source>
        <translation>Es wird nichts geschrieben: die Änderungen werden als ausstehend vorgemerkt.</translation>
    </message>
    <message>
        <source>1 setting stays as it is. Nothing is written: the changes become pending edits.</source>
        <translation>1 Einstellung bleibt, wie sie ist. Es wird nichts geschrieben: die Änderungen werden als ausstehend vorgemerkt.</translation>
    </message>
    <message numerus="yes">
        <source>%n settings stay as they are. Nothing is written: the changes become pending edits.</source>
        <translation>
            <numerusform>%n Einstellung bleibt, wie sie ist. Es wird nichts geschrieben: die Änderungen werden als ausstehend vorgemerkt.</numerusform>
            <numerusform>%n Einstellungen bleiben, wie sie sind. Es wird nichts geschrieben: die Änderungen werden als ausstehend vorgemerkt.</numerusform>
        </translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Import</translation>
    </message>
</context>
<context>
    <name>QRVWindow::KeysDialog</name>
    <message>
        <source> or </source>
        <comment>between two keys</comment>
        <translation> oder </translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source>What it does</source>
        <translation>Wirkung</translation>
    </message>
    <message>
        <source>Keys of the window</source>
        <translation>Tasten des Fensters</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>QRVWindow::Kinds</name>
    <message>
        <source>boolean</source>
        <translation>Wahrheitswert</translation>
    </message>
    <message>
        <source>integer</source>
        <translation>Ganzzahl</translation>
    </message>
    <message>
        <source>real</source>
        <translation>Kommazahl</translation>
    </message>
    <message>
        <source>string</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>colour</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>data</source>
        <translation>Daten</translation>
    </message>
    <message>
        <source>array</source>
        <translation>Liste</translation>
    </message>
    <message>
        <source>dictionary</source>
        <translation>Wörterbuch</translation>
    </message>
    <message>
        <source>by what is typed</source>
        <translation>nach der Eingabe</translation>
    </message>
</context>
<context>
    <name>QRVWindow::LineField</name>
    <message>
        <source>as JSON</source>
        <translation>als JSON</translation>
    </message>
    <message>
        <source>%1 B</source>
        <translation>%1 B</translation>
    </message>
    <message>
        <source>the file keeps whole seconds</source>
        <translation>die Datei speichert nur ganze Sekunden</translation>
    </message>
    <message>
        <source>outside of 0 to 1</source>
        <translation>außerhalb von 0 bis 1</translation>
    </message>
</context>
<context>
    <name>QRVWindow::MainWindow</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Details</translation>
    </message>
    <message>
        <source>Changes</source>
        <translation>Änderungen</translation>
    </message>
    <message>
        <source>take back a change of %1</source>
        <translation>Änderung von %1 zurücknehmen</translation>
    </message>
    <message>
        <source>Settings of %1[*]</source>
        <translation>Einstellungen von %1[*]</translation>
    </message>
    <message>
        <source>&amp;Undo: %1</source>
        <translation>&amp;Rückgängig: %1</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo: %1</source>
        <translation>W&amp;iederholen: %1</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>W&amp;iederholen</translation>
    </message>
    <message>
        <source>Changes (%1)</source>
        <translation>Änderungen (%1)</translation>
    </message>
    <message>
        <source>There is no setting %1. Did you mean %2?</source>
        <translation>Es gibt keine Einstellung %1. War %2 gemeint?</translation>
    </message>
    <message>
        <source>There is no setting %1.</source>
        <translation>Es gibt keine Einstellung %1.</translation>
    </message>
    <message>
        <source>Import settings</source>
        <translation>Einstellungen importieren</translation>
    </message>
    <message>
        <source>Enter, F2</source>
        <translation>Eingabe, F2</translation>
    </message>
    <message>
        <source>Edit the value, or open and close the level</source>
        <translation>Wert bearbeiten, oder Ebene auf- und zuklappen</translation>
    </message>
    <message>
        <source>Escape</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Go back: editor, rows, filter</source>
        <translation>Zurückgehen: Editor, Zeilen, Filter</translation>
    </message>
    <message>
        <source>Left, Right</source>
        <translation>Links, Rechts</translation>
    </message>
    <message>
        <source>Close and open a level</source>
        <translation>Ebene zu- und aufklappen</translation>
    </message>
    <message>
        <source>Tab</source>
        <translation>Tab</translation>
    </message>
    <message>
        <source>Go to the next control</source>
        <translation>Zum nächsten Bedienelement gehen</translation>
    </message>
    <message>
        <source>New profile</source>
        <translation>Neues Profil</translation>
    </message>
    <message>
        <source>Name of the profile, which exists as soon as it has a setting:</source>
        <translation>Name des Profils, das es gibt, sobald es eine Einstellung hat:</translation>
    </message>
    <message>
        <source>The name of a profile has at least one letter and no dot.</source>
        <translation>Der Name eines Profils hat mindestens ein Zeichen und keinen Punkt.</translation>
    </message>
    <message>
        <source>No program opens the folder %1.</source>
        <translation>Kein Programm öffnet den Ordner %1.</translation>
    </message>
    <message>
        <source>Start anew</source>
        <translation>Neu beginnen</translation>
    </message>
    <message>
        <source>The damaged file is replaced by one with the pending edits only. Its bytes are kept beside it.</source>
        <translation>Die beschädigte Datei wird durch eine ersetzt, die nur die ausstehenden Änderungen enthält. Ihr Inhalt wird daneben aufbewahrt.</translation>
    </message>
    <message>
        <source>&amp;Replace the file</source>
        <translation>Datei &amp;ersetzen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>1 edit is pending and not in the settings file.</source>
        <translation>1 Änderung ist ausstehend und nicht in der Einstellungsdatei.</translation>
    </message>
    <message numerus="yes">
        <source>%n edits are pending and not in the settings file.</source>
        <translation>
            <numerusform>%n Änderung ist ausstehend und nicht in der Einstellungsdatei.</numerusform>
            <numerusform>%n Änderungen sind ausstehend und nicht in der Einstellungsdatei.</numerusform>
        </translation>
    </message>
    <message>
        <source>&amp;Discard</source>
        <translation>Ver&amp;werfen</translation>
    </message>
    <message>
        <source>&amp;Review…</source>
        <translation>&amp;Prüfen…</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Import…</source>
        <translation>&amp;Importieren…</translation>
    </message>
    <message>
        <source>&amp;Export…</source>
        <translation>&amp;Exportieren…</translation>
    </message>
    <message>
        <source>Compare with &amp;defaults…</source>
        <translation>Mit &amp;Vorgaben vergleichen…</translation>
    </message>
    <message>
        <source>&amp;Compare…</source>
        <translation>Ver&amp;gleichen…</translation>
    </message>
    <message>
        <source>&amp;Read again</source>
        <translation>&amp;Neu einlesen</translation>
    </message>
    <message>
        <source>C&amp;lose</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Tree</source>
        <translation>&amp;Baum</translation>
    </message>
    <message>
        <source>&amp;Flat list</source>
        <translation>&amp;Flache Liste</translation>
    </message>
    <message>
        <source>&amp;Details</source>
        <translation>&amp;Details</translation>
    </message>
    <message>
        <source>&amp;Changes</source>
        <translation>Änder&amp;ungen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Keys</source>
        <translation>&amp;Tasten</translation>
    </message>
    <message>
        <source>&amp;History…</source>
        <translation>Ver&amp;lauf…</translation>
    </message>
</context>
<context>
    <name>QRVWindow::NewSettingDialog</name>
    <message>
        <source>&amp;Value</source>
        <translation>&amp;Wert</translation>
    </message>
    <message>
        <source>&amp;Key path</source>
        <translation>&amp;Schlüsselpfad</translation>
    </message>
    <message>
        <source>Key path</source>
        <translation>Schlüsselpfad</translation>
    </message>
    <message>
        <source>! A value is missing.</source>
        <translation>! Ein Wert fehlt.</translation>
    </message>
    <message>
        <source>a name between two dots is missing</source>
        <translation>zwischen zwei Punkten fehlt ein Name</translation>
    </message>
    <message>
        <source>! A key path is missing.</source>
        <translation>! Ein Schlüsselpfad fehlt.</translation>
    </message>
    <message>
        <source>! %1</source>
        <translation>! %1</translation>
    </message>
    <message>
        <source>New setting</source>
        <translation>Neue Einstellung</translation>
    </message>
    <message>
        <source>%1 has a value, so nothing can be below it.</source>
        <translation>%1 hat einen Wert, deshalb kann nichts darunter liegen.</translation>
    </message>
</context>
<context>
    <name>QRVWindow::PendingBar</name>
    <message>
        <source>Pending edits</source>
        <translation>Ausstehende Änderungen</translation>
    </message>
    <message>
        <source>&amp;Apply</source>
        <translation>&amp;Anwenden</translation>
    </message>
    <message>
        <source>&amp;Review…</source>
        <translation>&amp;Prüfen…</translation>
    </message>
    <message>
        <source>&amp;Discard</source>
        <translation>Ver&amp;werfen</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>S&amp;toppen</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>1 setting is pending.</source>
        <translation>1 Einstellung ist ausstehend.</translation>
    </message>
    <message numerus="yes">
        <source>%n settings are pending.</source>
        <translation>
            <numerusform>%n Einstellung ist ausstehend.</numerusform>
            <numerusform>%n Einstellungen sind ausstehend.</numerusform>
        </translation>
    </message>
    <message>
        <source>1 conflict: %1 was changed by another process since you edited it.</source>
        <translation>1 Konflikt: %1 wurde seit der Bearbeitung von einem anderen Prozess geändert.</translation>
    </message>
    <message numerus="yes">
        <source>%n conflicts: %1 and others were changed by another process since you edited them.</source>
        <translation>
            <numerusform>%n Konflikt: %1 wurde seit der Bearbeitung von einem anderen Prozess geändert.</numerusform>
            <numerusform>%n Konflikte: %1 und andere wurden seit der Bearbeitung von einem anderen Prozess geändert.</numerusform>
        </translation>
    </message>
    <message>
        <source>Cannot be applied: %1</source>
        <translation>Kann nicht angewendet werden: %1</translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation>Erneut versu&amp;chen</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ReviewDialog</name>
    <message>
        <source>not settled</source>
        <translation>nicht entschieden</translation>
    </message>
    <message>
        <source>mine</source>
        <translation>meiner</translation>
    </message>
    <message>
        <source>theirs</source>
        <translation>der andere</translation>
    </message>
    <message>
        <source>Whose value stands</source>
        <translation>Wessen Wert gilt</translation>
    </message>
    <message>
        <source>&amp;Apply</source>
        <translation>&amp;Anwenden</translation>
    </message>
    <message>
        <source>&amp;Apply %1</source>
        <translation>%1 &amp;anwenden</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>In the file now</source>
        <translation>Jetzt in der Datei</translation>
    </message>
    <message>
        <source>What you saw</source>
        <translation>Beim Bearbeiten</translation>
    </message>
    <message>
        <source>Will be</source>
        <translation>Wird</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Anmerkung</translation>
    </message>
    <message>
        <source>Whose value</source>
        <translation>Wessen Wert</translation>
    </message>
    <message>
        <source>Review pending edits</source>
        <translation>Ausstehende Änderungen prüfen</translation>
    </message>
    <message>
        <source>Pending edits</source>
        <translation>Ausstehende Änderungen</translation>
    </message>
    <message>
        <source>Keep &amp;mine</source>
        <translation>&amp;Meinen behalten</translation>
    </message>
    <message>
        <source>Take &amp;theirs</source>
        <translation>An&amp;deren übernehmen</translation>
    </message>
    <message>
        <source>&amp;Copy as commands</source>
        <translation>Als Befehle &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Discard checked</source>
        <translation>Angehakte ver&amp;werfen</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>S&amp;toppen</translation>
    </message>
    <message>
        <source>The file already holds it.</source>
        <translation>Die Datei enthält den Wert bereits.</translation>
    </message>
    <message>
        <source>%1 Another process changed it since you edited it.</source>
        <translation>%1 Ein anderer Prozess hat die Einstellung seit der Bearbeitung geändert.</translation>
    </message>
    <message>
        <source>Cannot be applied: %1</source>
        <translation>Kann nicht angewendet werden: %1</translation>
    </message>
    <message>
        <source>1 conflict is not settled: it stays pending. Keep your value or take theirs.</source>
        <translation>1 Konflikt ist nicht entschieden und bleibt ausstehend. Den eigenen Wert behalten oder den anderen übernehmen.</translation>
    </message>
    <message numerus="yes">
        <source>%n conflicts are not settled: they stay pending. Keep your values or take theirs.</source>
        <translation>
            <numerusform>%n Konflikt ist nicht entschieden und bleibt ausstehend. Den eigenen Wert behalten oder den anderen übernehmen.</numerusform>
            <numerusform>%n Konflikte sind nicht entschieden und bleiben ausstehend. Die eigenen Werte behalten oder die anderen übernehmen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Nothing is pending.</source>
        <translation>Nichts ist ausstehend.</translation>
    </message>
    <message>
        <source>1 setting is pending. One save brings it into the file.</source>
        <translation>1 Einstellung ist ausstehend. Ein Speichern bringt sie in die Datei.</translation>
    </message>
    <message numerus="yes">
        <source>%n settings are pending. One save brings those that are checked into the file.</source>
        <translation>
            <numerusform>%n Einstellung ist ausstehend. Ein Speichern bringt sie in die Datei, wenn sie angehakt ist.</numerusform>
            <numerusform>%n Einstellungen sind ausstehend. Ein Speichern bringt die angehakten in die Datei.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::RowActions</name>
    <message>
        <source>&amp;Edit value</source>
        <translation>Wert &amp;bearbeiten</translation>
    </message>
    <message>
        <source>Enter</source>
        <translation>Eingabe</translation>
    </message>
    <message>
        <source>&amp;Reset to default</source>
        <translation>Auf &amp;Vorgabe zurücksetzen</translation>
    </message>
    <message>
        <source>&amp;Set selected to one value…</source>
        <translation>Ausgewählte auf &amp;einen Wert setzen…</translation>
    </message>
    <message>
        <source>Copy to &amp;profile…</source>
        <translation>In Profil k&amp;opieren…</translation>
    </message>
    <message>
        <source>&amp;New setting…</source>
        <translation>&amp;Neue Einstellung…</translation>
    </message>
    <message>
        <source>&amp;Copy value</source>
        <translation>Wert &amp;kopieren</translation>
    </message>
    <message>
        <source>Copy &amp;key path</source>
        <translation>&amp;Schlüsselpfad kopieren</translation>
    </message>
    <message>
        <source>Copy co&amp;mmand</source>
        <translation>Be&amp;fehl kopieren</translation>
    </message>
    <message>
        <source>Copy &amp;all pending as commands</source>
        <translation>A&amp;lle ausstehenden als Befehle kopieren</translation>
    </message>
    <message>
        <source>E&amp;xpand all</source>
        <translation>Alles &amp;aufklappen</translation>
    </message>
    <message>
        <source>Co&amp;llapse all</source>
        <translation>Alles &amp;zuklappen</translation>
    </message>
    <message>
        <source>Copied values: %1</source>
        <translation>Kopierte Werte: %1</translation>
    </message>
    <message>
        <source>Copied key paths: %1</source>
        <translation>Kopierte Schlüsselpfade: %1</translation>
    </message>
    <message>
        <source>Copied commands: %1</source>
        <translation>Kopierte Befehle: %1</translation>
    </message>
    <message>
        <source>Edits copied as commands: %1</source>
        <translation>Als Befehle kopierte Änderungen: %1</translation>
    </message>
</context>
<context>
    <name>QRVWindow::RowModel</name>
    <message>
        <source>%1, 1 setting</source>
        <translation>%1, 1 Einstellung</translation>
    </message>
    <message numerus="yes">
        <source>%1, %n settings</source>
        <translation>
            <numerusform>%1, %n Einstellung</numerusform>
            <numerusform>%1, %n Einstellungen</numerusform>
        </translation>
    </message>
    <message>
        <source>open</source>
        <translation>aufgeklappt</translation>
    </message>
    <message>
        <source>closed</source>
        <translation>zugeklappt</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>Sign</source>
        <translation>Zeichen</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Layer</source>
        <translation>Herkunft</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>Vorgabe</translation>
    </message>
    <message>
        <source>Seen</source>
        <translation>Beobachtet</translation>
    </message>
    <message>
        <source>In profile %1</source>
        <translation>Im Profil %1</translation>
    </message>
</context>
<context>
    <name>QRVWindow::RowView</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
</context>
<context>
    <name>QRVWindow::SavesModel</name>
    <message>
        <source>another program</source>
        <translation>ein anderes Programm</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Program</source>
        <translation>Programm</translation>
    </message>
    <message>
        <source>Why</source>
        <translation>Grund</translation>
    </message>
    <message>
        <source>Settings changed</source>
        <translation>Geänderte Einstellungen</translation>
    </message>
    <message>
        <source>Saves</source>
        <translation>Speichervorgänge</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ScopeBar</name>
    <message>
        <source>S&amp;cope:</source>
        <translation>Be&amp;reich:</translation>
    </message>
    <message>
        <source>Scope</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Com&amp;pare with:</source>
        <translation>&amp;Vergleich mit:</translation>
    </message>
    <message>
        <source>Compare with</source>
        <translation>Vergleich mit</translation>
    </message>
    <message>
        <source>View:</source>
        <translation>Ansicht:</translation>
    </message>
    <message>
        <source>Tree</source>
        <translation>Baum</translation>
    </message>
    <message>
        <source>Shows the settings below the levels of their key paths</source>
        <translation>Zeigt die Einstellungen unter den Ebenen ihrer Schlüsselpfade</translation>
    </message>
    <message>
        <source>Flat</source>
        <translation>Flach</translation>
    </message>
    <message>
        <source>Shows the settings as a list of key paths</source>
        <translation>Zeigt die Einstellungen als Liste von Schlüsselpfaden</translation>
    </message>
    <message>
        <source>Application</source>
        <translation>Anwendung</translation>
    </message>
    <message>
        <source>Defaults</source>
        <translation>Vorgaben</translation>
    </message>
    <message>
        <source>Profile %1</source>
        <translation>Profil %1</translation>
    </message>
    <message>
        <source>New profile…</source>
        <translation>Neues Profil…</translation>
    </message>
    <message>
        <source>Something else…</source>
        <translation>Etwas anderes…</translation>
    </message>
</context>
<context>
    <name>QRVWindow::Session</name>
    <message>
        <source>Edit %1</source>
        <translation>%1 bearbeiten</translation>
    </message>
    <message numerus="yes">
        <source>Reset %n setting(s)</source>
        <translation>
            <numerusform>%n Einstellung zurücksetzen</numerusform>
            <numerusform>%n Einstellungen zurücksetzen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Discard %n edit(s)</source>
        <translation>
            <numerusform>%n Änderung verwerfen</numerusform>
            <numerusform>%n Änderungen verwerfen</numerusform>
        </translation>
    </message>
    <message>
        <source>Keep this window&apos;s value</source>
        <translation>Wert dieses Fensters behalten</translation>
    </message>
    <message>
        <source>Take the other value</source>
        <translation>Anderen Wert übernehmen</translation>
    </message>
    <message numerus="yes">
        <source>Apply %n edit(s)</source>
        <translation>
            <numerusform>%n Änderung anwenden</numerusform>
            <numerusform>%n Änderungen anwenden</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::SettingsFile</name>
    <message>
        <source>%1 cannot be read: %2</source>
        <translation>%1 kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>%1 holds no settings: %2</source>
        <translation>%1 enthält keine Einstellungen: %2</translation>
    </message>
    <message>
        <source>%1 is the settings file itself. Choose another one.</source>
        <translation>%1 ist die Einstellungsdatei selbst. Bitte eine andere wählen.</translation>
    </message>
    <message>
        <source>%1 cannot be written: %2</source>
        <translation>%1 kann nicht geschrieben werden: %2</translation>
    </message>
</context>
<context>
    <name>QRVWindow::SettingsFileReader</name>
    <message>
        <source>The links to the settings file lead nowhere: %1</source>
        <translation>Die Verknüpfungen zur Einstellungsdatei führen ins Leere: %1</translation>
    </message>
    <message>
        <source>The settings file is read-only: its mode is %1.</source>
        <translation>Die Einstellungsdatei ist schreibgeschützt: Ihre Zugriffsrechte sind %1.</translation>
    </message>
    <message>
        <source>The settings file cannot be replaced: no right to write in its folder, %1.</source>
        <translation>Die Einstellungsdatei kann nicht ersetzt werden: In ihrem Ordner, %1, fehlt das Recht zum Schreiben.</translation>
    </message>
    <message>
        <source>The settings file cannot be replaced: it belongs to %1, and in its folder only owners may replace files.</source>
        <translation>Die Einstellungsdatei kann nicht ersetzt werden: Sie gehört %1, und in ihrem Ordner dürfen nur Eigentümer Dateien ersetzen.</translation>
    </message>
    <message>
        <source>The settings file cannot be replaced: %1.</source>
        <translation>Die Einstellungsdatei kann nicht ersetzt werden: %1.</translation>
    </message>
</context>
<context>
    <name>QRVWindow::StatusLine</name>
    <message>
        <source>Watching</source>
        <translation>Beobachtung läuft</translation>
    </message>
    <message>
        <source>What other processes change appears by itself.</source>
        <translation>Was andere Prozesse ändern, erscheint von selbst.</translation>
    </message>
    <message>
        <source>F1: keys</source>
        <translation>F1: Tasten</translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source>The file is being read.</source>
        <translation>Die Datei wird gelesen.</translation>
    </message>
    <message>
        <source>File: writable, %1, read at %2</source>
        <translation>Datei: beschreibbar, %1, gelesen um %2</translation>
    </message>
    <message>
        <source>File: read-only, %1, read at %2</source>
        <translation>Datei: schreibgeschützt, %1, gelesen um %2</translation>
    </message>
    <message>
        <source>File: none yet, looked for at %1</source>
        <translation>Datei: noch keine, gesucht um %1</translation>
    </message>
    <message>
        <source>File: damaged, %1, read at %2</source>
        <translation>Datei: beschädigt, %1, gelesen um %2</translation>
    </message>
    <message>
        <source>File: cannot be read</source>
        <translation>Datei: nicht lesbar</translation>
    </message>
    <message>
        <source>File: there is no home folder</source>
        <translation>Datei: kein persönlicher Ordner vorhanden</translation>
    </message>
    <message>
        <source>Undo steps: %1</source>
        <translation>Rückgängig-Schritte: %1</translation>
    </message>
</context>
<context>
    <name>QRVWindow::TroubleBanner</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Show fewer</source>
        <translation>Weniger anzeigen</translation>
    </message>
    <message>
        <source>Show 1 more</source>
        <translation>1 weitere Meldung anzeigen</translation>
    </message>
    <message numerus="yes">
        <source>Show %n more</source>
        <translation>
            <numerusform>%n weitere Meldung anzeigen</numerusform>
            <numerusform>%n weitere Meldungen anzeigen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::TroubleLine</name>
    <message>
        <source>%1:</source>
        <translation>%1:</translation>
    </message>
    <message>
        <source>%1 %2:</source>
        <translation>%1 %2:</translation>
    </message>
    <message>
        <source>Keep its bytes beside, start anew…</source>
        <translation>Inhalt aufbewahren, neu beginnen…</translation>
    </message>
    <message>
        <source>Import a copy…</source>
        <translation>Kopie importieren…</translation>
    </message>
    <message>
        <source>Open folder</source>
        <translation>Ordner öffnen</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>How to…</source>
        <translation>Anleitung…</translation>
    </message>
    <message>
        <source>What to do</source>
        <translation>Was zu tun ist</translation>
    </message>
    <message>
        <source>Copy command</source>
        <translation>Befehl kopieren</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ValueCells</name>
    <message>
        <source>not stored</source>
        <translation>nicht gespeichert</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>not stored, no default</source>
        <translation>nicht gespeichert, keine Vorgabe</translation>
    </message>
    <message>
        <source>not stored: default %1</source>
        <translation>nicht gespeichert: Vorgabe %1</translation>
    </message>
</context>
<context>
    <name>QRVWindow::ValueEditor</name>
    <message>
        <source>string of several lines</source>
        <translation>mehrzeiliger Text</translation>
    </message>
    <message>
        <source>Kind: %1</source>
        <translation>Typ: %1</translation>
    </message>
    <message>
        <source>Value of %1</source>
        <translation>Wert von %1</translation>
    </message>
    <message>
        <source>! Not a value: %1</source>
        <translation>! Kein Wert: %1</translation>
    </message>
    <message>
        <source>! %1. Press Enter again to store it anyway.</source>
        <translation>! %1. Noch einmal die Eingabetaste drücken, um trotzdem zu speichern.</translation>
    </message>
    <message>
        <source>! %1.</source>
        <translation>! %1.</translation>
    </message>
</context>
<context>
    <name>RowText</name>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>not set</source>
        <translation>nicht gesetzt</translation>
    </message>
    <message>
        <source>not stored</source>
        <translation>nicht gespeichert</translation>
    </message>
    <message>
        <source>pending</source>
        <translation>ausstehend</translation>
    </message>
    <message>
        <source>file damaged</source>
        <translation>Datei beschädigt</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>default</source>
        <translation>Vorgabe</translation>
    </message>
    <message>
        <source>site</source>
        <translation>System</translation>
    </message>
    <message>
        <source>stored</source>
        <translation>gespeichert</translation>
    </message>
    <message>
        <source>profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>this window</source>
        <translation>dieses Fenster</translation>
    </message>
    <message>
        <source>another process</source>
        <translation>ein anderer Prozess</translation>
    </message>
    <message>
        <source>changed since you edited it</source>
        <translation>seit der Bearbeitung geändert</translation>
    </message>
    <message>
        <source>back to default</source>
        <translation>zurück zur Vorgabe</translation>
    </message>
    <message>
        <source>will store</source>
        <translation>wird gespeichert</translation>
    </message>
    <message>
        <source>%1 by %2</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>modified</source>
        <translation>geändert</translation>
    </message>
    <message>
        <source>changed a moment ago by %1</source>
        <translation>gerade geändert (%1)</translation>
    </message>
    <message>
        <source>in profile %1: %2</source>
        <translation>im Profil %1: %2</translation>
    </message>
</context>
<context>
    <name>Signs</name>
    <message>
        <source>differs from the default</source>
        <translation>weicht von der Vorgabe ab</translation>
    </message>
    <message>
        <source>pending</source>
        <translation>ausstehend</translation>
    </message>
    <message>
        <source>back to the default, pending</source>
        <translation>zurück zur Vorgabe, ausstehend</translation>
    </message>
    <message>
        <source>has a warning</source>
        <translation>mit Warnung</translation>
    </message>
    <message>
        <source>conflict</source>
        <translation>Konflikt</translation>
    </message>
    <message>
        <source>changed a moment ago</source>
        <translation>gerade geändert</translation>
    </message>
    <message>
        <source>locked by the site</source>
        <translation>von der Systemverwaltung gesperrt</translation>
    </message>
    <message>
        <source>record of the store</source>
        <translation>interner Eintrag</translation>
    </message>
</context>
<context>
    <name>Troubles</name>
    <message>
        <source>Reading the settings waits for %1.</source>
        <translation>Das Lesen der Einstellungen wartet auf: %1.</translation>
    </message>
    <message>
        <source>There is no settings file yet: everything has its default. The first change that is applied makes one.</source>
        <translation>Es gibt noch keine Einstellungsdatei: Überall gilt die Vorgabe. Die erste Änderung, die angewendet wird, legt eine an.</translation>
    </message>
    <message>
        <source>%1. The application reads defaults. Nothing can be changed here until the file is repaired or replaced.</source>
        <translation>%1. Die Anwendung liest Vorgaben. Hier kann nichts geändert werden, bis die Datei repariert oder ersetzt ist.</translation>
    </message>
    <message>
        <source>%1. Nothing can be changed here until it can be read.</source>
        <translation>%1. Hier kann nichts geändert werden, bis die Datei lesbar ist.</translation>
    </message>
    <message>
        <source>There is no home folder, so there is no settings file. Defaults are shown, and nothing can be changed here.</source>
        <translation>Es gibt keinen persönlichen Ordner und daher keine Einstellungsdatei. Vorgaben werden gezeigt, und hier kann nichts geändert werden.</translation>
    </message>
    <message>
        <source>%1 Edits cannot be applied; they can be copied as commands.</source>
        <translation>%1 Änderungen können nicht angewendet, aber als Befehle kopiert werden.</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
</context>
<context>
    <name>WindowState</name>
    <message>
        <source>The window&apos;s state cannot be read: %1</source>
        <translation>Der Zustand des Fensters kann nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>The window&apos;s state cannot be kept: %1</source>
        <translation>Der Zustand des Fensters kann nicht gespeichert werden: %1</translation>
    </message>
</context>
</TS>
