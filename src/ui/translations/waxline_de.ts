<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Localizable</name>
    <message>
        <source>IDS_APP_NAME</source>
        <extracomment>Application name; plain text, no markup</extracomment>
        <translation>Waxline</translation>
    </message>
    <message>
        <source>IDS_APP_SUMMARY</source>
        <extracomment>One line for menus and the software centre; plain text, no markup</extracomment>
        <translation>Schallplatten und Kassetten in MP3-Titel mit Tags verwandeln</translation>
    </message>
    <message>
        <source>IDS_WARNING</source>
        <extracomment>Title of every warning box; a title: at most about 40 characters</extracomment>
        <translation>Bitte beachten</translation>
    </message>
    <message>
        <source>IDS_NODEVICE</source>
        <extracomment>Panel 1's Next found no deck; an alert text, Qt rich text</extracomment>
        <translation>Waxline findet keinen Plattenspieler und kein Kassettendeck. Ist das USB-Kabel an beiden Enden eingesteckt und das Gerät eingeschaltet? Versuchen Sie sonst einen anderen USB-Anschluss und drücken Sie dann noch einmal &lt;b&gt;Weiter&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_TOOMANYDEVICES</source>
        <extracomment>Panel 1's Next found several decks; an alert text, Qt rich text</extracomment>
        <translation>Es ist mehr als ein Gerät angeschlossen. Ziehen Sie alle ab, von denen Sie gerade nicht aufnehmen möchten, bis nur noch eines angeschlossen ist, und drücken Sie dann noch einmal &lt;b&gt;Weiter&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_LIMIT</source>
        <extracomment>New Track pressed with 40 tracks: the recording stops; an alert text, Qt rich text</extracomment>
        <translation>Das sind 40 Titel, so viele, wie &lt;b&gt;Neuer Titel&lt;/b&gt; in einer Aufnahme beginnen kann (die automatische Trennung kennt diese Grenze nicht). Waxline hält hier an, damit Sie die Titel benennen und speichern können. Den Rest nehmen Sie danach als weitere Seite auf.</translation>
    </message>
    <message>
        <source>IDS_LASTTRACK</source>
        <extracomment>New Track pressed with 39 tracks: track 40 starts; an alert text, Qt rich text</extracomment>
        <translation>Titel 40 hat begonnen. Er ist der letzte, den &lt;b&gt;Neuer Titel&lt;/b&gt; in dieser Aufnahme beginnen kann: Beim nächsten &lt;b&gt;Neuer Titel&lt;/b&gt; endet die Aufnahme.</translation>
    </message>
    <message>
        <source>IDS_ITUNES_ERROR</source>
        <extracomment>The music folder is missing or cannot be written; OK tries again; an alert text, Qt rich text</extracomment>
        <translation>Waxline kann nicht in Ihren Musikordner speichern. Prüfen Sie, ob es den Ordner gibt, ob Sie darin schreiben dürfen und ob auf dem Datenträger Platz ist, und drücken Sie dann &lt;b&gt;OK&lt;/b&gt;, um es noch einmal zu versuchen.</translation>
    </message>
    <message>
        <source>IDS_CANCEL_RECORDING</source>
        <extracomment>Close button: asks before quitting; an alert text, Qt rich text</extracomment>
        <translation>Waxline beenden? Noch nicht gespeicherte Titel gehen dabei verloren.</translation>
    </message>
    <message>
        <source>IDS_YES</source>
        <extracomment>Alert button; a button caption: at most 12 characters</extracomment>
        <translation>Ja</translation>
    </message>
    <message>
        <source>IDS_NO</source>
        <extracomment>Alert button; a button caption: at most 12 characters</extracomment>
        <translation>Nein</translation>
    </message>
    <message>
        <source>IDS_CONTINUE</source>
        <extracomment>Alert button; a button caption: at most 12 characters</extracomment>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>IDS_OK</source>
        <extracomment>Alert button; a button caption: at most 12 characters</extracomment>
        <translation>OK</translation>
    </message>
    <message>
        <source>IDS_UNKNOWN_TRACK</source>
        <extracomment>Plain text for a tag and file name; %1 = track number; plain text, no markup</extracomment>
        <translation>Titel %1</translation>
    </message>
    <message>
        <source>IDS_UNKNOWN_ARTIST</source>
        <extracomment>Plain text for a tag and folder name; plain text, no markup</extracomment>
        <translation>Unbekannter Interpret</translation>
    </message>
    <message>
        <source>IDS_UNKNOWN_ALBUM</source>
        <extracomment>Plain text for a tag and folder name; plain text, no markup</extracomment>
        <translation>Unbekanntes Album</translation>
    </message>
    <message>
        <source>IDS_STOP_DEVICE_GONE</source>
        <extracomment>The deck vanished while recording; an alert text, Qt rich text</extracomment>
        <translation>Das Gerät wurde getrennt, deshalb endete die Aufnahme. Die bis dahin aufgenommenen Titel bleiben erhalten.</translation>
    </message>
    <message>
        <source>IDS_STOP_DISK_FULL</source>
        <extracomment>%1 = folder; an alert text, Qt rich text</extracomment>
        <translation>Der Datenträger ist voll, deshalb endete die Aufnahme. Die bis dahin aufgenommenen Titel liegen in %1. Schaffen Sie Platz, bevor Sie weiter aufnehmen.</translation>
    </message>
    <message>
        <source>IDS_STOP_FOLDER_GONE</source>
        <extracomment>%1 = folder; an alert text, Qt rich text</extracomment>
        <translation>Der Ordner %1 wurde entfernt, deshalb endete die Aufnahme. Starten Sie Waxline neu, um wieder aufzunehmen.</translation>
    </message>
    <message>
        <source>IDS_STOP_WRITE_FAILED</source>
        <extracomment>%1 = file, %2 = reason from the system; an alert text, Qt rich text</extracomment>
        <translation>Waxline konnte %1 nicht schreiben (%2), deshalb endete die Aufnahme. Was bis dahin aufgenommen war, bleibt erhalten.</translation>
    </message>
    <message>
        <source>IDS_NO_AUDIO_SERVER</source>
        <extracomment>At start-up; %1 = reason; an alert text, Qt rich text</extracomment>
        <translation>Waxline erreicht das Audiosystem dieses Computers nicht (%1). Prüfen Sie, ob der Ton funktioniert, etwa in den Audio-Einstellungen, und starten Sie Waxline neu.</translation>
    </message>
    <message>
        <source>IDS_NO_USB_REGISTRY</source>
        <extracomment>At start-up; %1 = reason from the system; an alert text, Qt rich text</extracomment>
        <translation>Waxline kann die USB-Geräte dieses Computers nicht auflisten (%1) und findet deshalb weder Plattenspieler noch Kassettendeck. Starten Sie Waxline neu; bleibt es dabei, braucht die Geräteverwaltung des Systems (udev) Aufmerksamkeit.</translation>
    </message>
    <message>
        <source>IDS_MONITOR_FAILED</source>
        <extracomment>Listening to the deck failed; Waxline ends after this; %1 = reason; an alert text, Qt rich text</extracomment>
        <translation>Waxline kann das Gerät nicht über Ihre Lautsprecher wiedergeben (%1) und muss sich beenden. Prüfen Sie die Audio-Einstellungen und starten Sie Waxline dann neu.</translation>
    </message>
    <message>
        <source>IDS_RECOVER_TITLE</source>
        <extracomment>Start-up found a recording that did not stop cleanly; a title: at most about 40 characters</extracomment>
        <translation>Unterbrochene Aufnahme gefunden</translation>
    </message>
    <message>
        <source>IDS_RECOVER_TEXT</source>
        <extracomment>%1 = number of tracks, %2 = length h:mm:ss; an alert text, Qt rich text</extracomment>
        <translation>Waxline wurde während einer Aufnahme beendet. Erhaltene Titel: %1, Länge %2. Möchten Sie sie benennen und speichern oder verwerfen?</translation>
    </message>
    <message>
        <source>IDS_RECOVER_EXPORT</source>
        <extracomment>Recover: name and save; a button caption: at most 12 characters</extracomment>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>IDS_RECOVER_DISCARD</source>
        <extracomment>Recover: throw away; a button caption: at most 12 characters</extracomment>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>IDS_FOLDER_BUSY</source>
        <extracomment>%1 = who holds the export folder; an alert text, Qt rich text</extracomment>
        <translation>Gerade nimmt ein anderes Waxline-Programm auf oder speichert (%1). Warten Sie, bis es fertig ist, oder beenden Sie es, und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>IDS_INTERNAL_ERROR</source>
        <extracomment>Title of an alert that should never show; a title: at most about 40 characters</extracomment>
        <translation>Interner Fehler</translation>
    </message>
    <message>
        <source>IDS_INVALID_PANEL</source>
        <extracomment>Text of that alert; an alert text, Qt rich text</extracomment>
        <translation>Wechsel zu einer ungültigen Seite</translation>
    </message>
    <message>
        <source>IDS_BUTTON_NEXT</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Weiter</translation>
    </message>
    <message>
        <source>IDS_BUTTON_BACK</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Zurück</translation>
    </message>
    <message>
        <source>IDS_BUTTON_RECORD</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Aufnehmen</translation>
    </message>
    <message>
        <source>IDS_BUTTON_STOP</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Stopp</translation>
    </message>
    <message>
        <source>IDS_BUTTON_NEWTRACK</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Neuer Titel</translation>
    </message>
    <message>
        <source>IDS_BUTTON_YES</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Ja</translation>
    </message>
    <message>
        <source>IDS_BUTTON_NO</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Nein</translation>
    </message>
    <message>
        <source>IDS_BUTTON_HELP</source>
        <extracomment>Accessible name of the round Help button; a button caption: at most 12 characters</extracomment>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>IDS_BUTTON_CLOSE</source>
        <extracomment>Accessible name of the round Close button; a button caption: at most 12 characters</extracomment>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>IDS_BUTTON_EXPORT</source>
        <extracomment>Starts saving the named tracks; a button caption: at most 12 characters</extracomment>
        <translation>&amp;Speichern</translation>
    </message>
    <message>
        <source>IDS_BUTTON_DONE</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Fertig</translation>
    </message>
    <message>
        <source>IDS_PANEL1_TITLE</source>
        <extracomment>Panel 1: connect the deck; a title: at most about 40 characters</extracomment>
        <translation>Plattenspieler oder Tapedeck anschließen</translation>
    </message>
    <message>
        <source>IDS_PANEL1_TEXT</source>
        <extracomment>What to connect and how; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Stecken Sie das USB-Kabel des Geräts in diesen Computer und schalten Sie das Gerät ein. Legen Sie eine Platte auf oder eine Kassette ein, aber spielen Sie sie noch nicht ab. Mit &lt;b&gt;Weiter&lt;/b&gt; sucht Waxline dann nach dem Gerät.</translation>
    </message>
    <message>
        <source>IDS_SELECTDEVICE_TITLE</source>
        <extracomment>Panel 11: the deck plays both; a title: at most about 40 characters</extracomment>
        <translation>Was möchten Sie aufnehmen?</translation>
    </message>
    <message>
        <source>IDS_SELECTDEVICE_TEXT</source>
        <extracomment>a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Ihr Gerät spielt Schallplatten und Kassetten. Wählen Sie, was Sie jetzt aufnehmen, damit Waxline den passenden Klang einstellt.</translation>
    </message>
    <message>
        <source>IDS_DEVICE_TURNTABLE</source>
        <extracomment>Card caption; a label: at most 24 characters</extracomment>
        <translation>Schallplatte</translation>
    </message>
    <message>
        <source>IDS_DEVICE_CASSETTE</source>
        <extracomment>Card caption; a label: at most 24 characters</extracomment>
        <translation>Kassette</translation>
    </message>
    <message>
        <source>IDS_SELECTTAPE_TITLE</source>
        <extracomment>Panel 12; a title: at most about 40 characters</extracomment>
        <translation>Welche Bandsorte ist es?</translation>
    </message>
    <message>
        <source>IDS_SELECTTAPE_TEXT</source>
        <extracomment>a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Sehen Sie auf die Kassette oder ihre Hülle. Auf Chromkassetten steht &lt;b&gt;Chrome&lt;/b&gt;, &lt;b&gt;CrO2&lt;/b&gt; oder &lt;b&gt;Type II&lt;/b&gt;, fast alle anderen sind normale Bänder. Im Zweifel wählen Sie „Normal“.</translation>
    </message>
    <message>
        <source>IDS_TAPE_NORMAL</source>
        <extracomment>Card caption; a label: at most 24 characters</extracomment>
        <translation>Normales Band</translation>
    </message>
    <message>
        <source>IDS_TAPE_NORMAL_HINT</source>
        <extracomment>Under the card; a label: at most 24 characters</extracomment>
        <translation>Typ I, fast alle Bänder</translation>
    </message>
    <message>
        <source>IDS_TAPE_CHROME</source>
        <extracomment>Card caption; a label: at most 24 characters</extracomment>
        <translation>Chromband</translation>
    </message>
    <message>
        <source>IDS_TAPE_CHROME_HINT</source>
        <extracomment>Under the card; a label: at most 24 characters</extracomment>
        <translation>Typ II, Aufschrift CrO2</translation>
    </message>
    <message>
        <source>IDS_PANEL2_TITLE</source>
        <extracomment>Panel 2: set the level; a title: at most about 40 characters</extracomment>
        <translation>Aufnahmepegel einstellen</translation>
    </message>
    <message>
        <source>IDS_PANEL2_TEXT</source>
        <extracomment>How loud is right; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Spielen Sie die lauteste Stelle der Seite ab. Stellen Sie den Regler so, dass die Balken weit ausschlagen, die roten Lampen darüber aber dunkel bleiben: Leuchtet eine, ist es zu laut. Dann zurück zum Anfang und &lt;b&gt;Aufnehmen&lt;/b&gt; drücken.</translation>
    </message>
    <message>
        <source>IDS_GAIN_LABEL</source>
        <extracomment>Beside the gain slider; a label: at most 24 characters</extracomment>
        <translation>&amp;Pegel</translation>
    </message>
    <message>
        <source>IDS_GAIN_UNIT</source>
        <extracomment>After the gain read-out; a label: at most 24 characters</extracomment>
        <translation>dB</translation>
    </message>
    <message>
        <source>IDS_AUTOSPLIT_LABEL</source>
        <extracomment>Check box: a new track starts at each quiet gap; a label: at most 24 characters</extracomment>
        <translation>Bei &amp;Stille neuer Titel</translation>
    </message>
    <message>
        <source>IDS_METER_LEFT</source>
        <extracomment>Under the left meter; a label: at most 24 characters</extracomment>
        <translation>L</translation>
    </message>
    <message>
        <source>IDS_METER_RIGHT</source>
        <extracomment>Under the right meter; a label: at most 24 characters</extracomment>
        <translation>R</translation>
    </message>
    <message>
        <source>IDS_PANEL3_TITLE</source>
        <extracomment>Panel 3: recording; a title: at most about 40 characters</extracomment>
        <translation>Aufnahme läuft</translation>
    </message>
    <message>
        <source>IDS_PANEL3_TEXT</source>
        <extracomment>a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Spielen Sie die Seite jetzt ab. Beim automatischen Trennen beginnt an jeder stillen Stelle ein neuer Titel, sonst drücken Sie bei jedem Stück &lt;b&gt;Neuer Titel&lt;/b&gt;. Am Ende drücken Sie &lt;b&gt;Stopp&lt;/b&gt;; nach einer Minute Stille endet die Aufnahme auch von selbst.</translation>
    </message>
    <message>
        <source>IDS_ELAPSED_LABEL</source>
        <extracomment>Above the running time of the current track; a label: at most 24 characters</extracomment>
        <translation>Dieser Titel</translation>
    </message>
    <message>
        <source>IDS_TRACK_LABEL</source>
        <extracomment>Above the number of the current track; a label: at most 24 characters</extracomment>
        <translation>Titel Nr.</translation>
    </message>
    <message>
        <source>IDS_PANEL4_TITLE</source>
        <extracomment>Panel 4: one track; a title: at most about 40 characters</extracomment>
        <translation>Titel benennen</translation>
    </message>
    <message>
        <source>IDS_PANEL4_TEXT</source>
        <extracomment>a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Geben Sie Interpret, Album und Titelnamen ein. Daraus werden die Tags der MP3-Datei und die Namen der Ordner, in denen sie landet. Was Sie leer lassen, bekommt einen Platzhalter wie „Unbekannter Interpret“.</translation>
    </message>
    <message>
        <source>IDS_ARTIST_LABEL</source>
        <extracomment>a label: at most 24 characters</extracomment>
        <translation>&amp;Interpret</translation>
    </message>
    <message>
        <source>IDS_ALBUM_LABEL</source>
        <extracomment>a label: at most 24 characters</extracomment>
        <translation>Al&amp;bum</translation>
    </message>
    <message>
        <source>IDS_TRACKNAME_LABEL</source>
        <extracomment>a label: at most 24 characters</extracomment>
        <translation>&amp;Titelname</translation>
    </message>
    <message>
        <source>IDS_PANEL5_TITLE</source>
        <extracomment>Panel 5: export running; a title: at most about 40 characters</extracomment>
        <translation>Titel werden gespeichert</translation>
    </message>
    <message>
        <source>IDS_PANEL5_TEXT</source>
        <extracomment>Where the tracks go; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Jeder Titel wird zu einer MP3-Datei mit Ihren Angaben als Tags. Sie kommt in Ihren Musikordner, dort in einen Ordner für den Interpreten und darin einen für das Album. Das dauert einige Sekunden pro Titel; danach geht es von selbst weiter.</translation>
    </message>
    <message>
        <source>IDS_EXPORT_READY_ALL</source>
        <extracomment>Panel 5, under the progress: every track's MP3 was made while recording; a note: at most about 110 characters, Qt rich text</extracomment>
        <translation>Alle Titel wurden schon während der Aufnahme codiert: nur Tags und Musikordner fehlen noch.</translation>
    </message>
    <message>
        <source>IDS_EXPORT_READY_SOME</source>
        <extracomment>Panel 5, under the progress: %1 the track numbers made while recording, such as 1–3, 5; %2 the count of tracks; a note: at most about 110 characters, Qt rich text</extracomment>
        <translation>Schon während der Aufnahme codiert: Titel %1 von %2. Die übrigen werden jetzt codiert.</translation>
    </message>
    <message>
        <source>IDS_EXPORT_READY_NONE</source>
        <extracomment>Panel 5, under the progress: no track's MP3 was made while recording; a note: at most about 110 characters, Qt rich text</extracomment>
        <translation>Während der Aufnahme wurde kein Titel codiert, daher wird jetzt jeder codiert.</translation>
    </message>
    <message>
        <source>IDS_PANEL6_TITLE</source>
        <extracomment>Panel 6: export done; a title: at most about 40 characters</extracomment>
        <translation>Fertig! Noch eine Seite aufnehmen?</translation>
    </message>
    <message>
        <source>IDS_PANEL6_TEXT</source>
        <extracomment>Record another side records more; Finish closes Waxline; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Ihre Titel liegen jetzt im Musikordner. Wählen Sie &lt;b&gt;Weitere Seite aufnehmen&lt;/b&gt; für die andere Seite oder eine weitere Platte (bei gleichem Interpreten und Album wird weitergezählt), oder &lt;b&gt;Beenden&lt;/b&gt;, um Waxline zu beenden.</translation>
    </message>
    <message>
        <source>IDS_PANEL7_TITLE</source>
        <extracomment>Panel 7: artist, album, tracks 1-10; a title: at most about 40 characters</extracomment>
        <translation>Titel benennen</translation>
    </message>
    <message>
        <source>IDS_PANEL7_TEXT</source>
        <extracomment>Above ten fields; keep it short; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Geben Sie Interpret und Album einmal ein, dann für jeden Titel einen Namen, in der gespielten Reihenfolge.</translation>
    </message>
    <message>
        <source>IDS_PANEL8_TITLE</source>
        <extracomment>a title: at most about 40 characters</extracomment>
        <translation>Titel 11 bis 20</translation>
    </message>
    <message>
        <source>IDS_PANEL9_TITLE</source>
        <extracomment>a title: at most about 40 characters</extracomment>
        <translation>Titel 21 bis 30</translation>
    </message>
    <message>
        <source>IDS_PANEL10_TITLE</source>
        <extracomment>a title: at most about 40 characters</extracomment>
        <translation>Titel 31 bis 40</translation>
    </message>
    <message>
        <source>IDS_MORETRACKS_TEXT</source>
        <extracomment>Panels 8 to 10; keep it short; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Benennen Sie die nächsten Titel, in der gespielten Reihenfolge.</translation>
    </message>
    <message>
        <source>IDS_MONITOR_REASON_DEVICE</source>
        <extracomment>The reason in IDS_MONITOR_FAILED; %1 = the deck's name; plain text</extracomment>
        <translation>das Gerät „%1“ ist nicht mehr da</translation>
    </message>
    <message>
        <source>IDS_MONITOR_REASON_OPEN</source>
        <extracomment>The reason in IDS_MONITOR_FAILED; %1 = the deck's name; plain text</extracomment>
        <translation>das Gerät „%1“ ließ sich nicht öffnen; vielleicht verwendet es gerade ein anderes Programm</translation>
    </message>
    <message>
        <source>IDS_MONITOR_REASON_SERVER</source>
        <extracomment>The reason in IDS_MONITOR_FAILED; plain text</extracomment>
        <translation>das Audiosystem antwortet nicht mehr</translation>
    </message>
    <message>
        <source>IDS_MONITOR_REASON_OTHER</source>
        <extracomment>The reason in IDS_MONITOR_FAILED; %1 = the deck's name, %2 = error number; plain text</extracomment>
        <translation>das Gerät „%1“ meldete Fehler %2</translation>
    </message>
    <message>
        <source>IDS_FOLDER_LOCK_FAILED</source>
        <extracomment>Record or save could not lock the export folder; %1 = folder, %2 = the system's reason; an alert text, Qt rich text</extracomment>
        <translation>Waxline kann seinen Arbeitsordner %1 nicht verwenden (%2). Prüfen Sie, ob es den Ordner gibt und Sie darin schreiben dürfen, und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>IDS_BUTTON_REVIEW</source>
        <extracomment>Panels 4 and 7: opens the review of the splits; a button caption, at most 15 characters</extracomment>
        <translation>Trennstellen &amp;prüfen…</translation>
    </message>
    <message>
        <source>IDS_REVIEW_NOTICE</source>
        <extracomment>Panels 4 and 7, one line under the fields when the analysis proposes other splits; at most 80 characters</extracomment>
        <translation>Andere Trennstellen werden vorgeschlagen: bitte vor dem Benennen prüfen.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_TITLE</source>
        <extracomment>The review dialog's title; a title: at most about 40 characters</extracomment>
        <translation>Trennstellen prüfen</translation>
    </message>
    <message>
        <source>IDS_REVIEW_TEXT</source>
        <extracomment>Under the review dialog's title; at most about 260 characters, Qt rich text</extracomment>
        <translation>Ziehen Sie eine Markierung, um eine Trennstelle zu verschieben; sie rastet am leisesten Punkt in 3 Sekunden Umkreis ein (Umschalt: genau dort). Doppelklick fügt eine hinzu, Entf löscht die gewählte, Pfeiltasten schieben sie, die Leertaste spielt 4 Sekunden.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_READING</source>
        <extracomment>While the side is read for the overview and the proposal</extracomment>
        <translation>Die Seite wird gelesen …</translation>
    </message>
    <message>
        <source>IDS_REVIEW_SELECTED</source>
        <extracomment>The selected marker: %1 the number it shows (the track it starts), %2 its time m:ss.s</extracomment>
        <translation>Trennstelle %1 bei %2</translation>
    </message>
    <message>
        <source>IDS_REVIEW_NONE_SELECTED</source>
        <extracomment>No marker selected: %1 the number of tracks the markers make</extracomment>
        <translation>Titel: %1 – klicken Sie eine Markierung an, um sie zu wählen</translation>
    </message>
    <message>
        <source>IDS_REVIEW_DOUBTFUL</source>
        <extracomment>Doubtful splits, drawn dashed: %1 their times, comma-separated</extracomment>
        <translation>Unsichere Trennstellen (gestrichelt): %1 – hören Sie sie vor dem Übernehmen an.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_SUGGESTED</source>
        <extracomment>Boundaries the analysis found but is not sure of, drawn dotted and not applied: %1 their times, comma-separated</extracomment>
        <translation>Von der Analyse vorgeschlagen, aber nicht übernommen (gepunktet): %1 – die Trennstellen der Aufnahme bleiben, weil die Analyse nicht sicher ist. Hören Sie dort hinein und fügen Sie eine Trennstelle hinzu, wenn Sie eine Pause hören.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_ADD</source>
        <extracomment>A button in the review; at most about 16 characters</extracomment>
        <translation>&amp;Hinzufügen</translation>
    </message>
    <message>
        <source>IDS_REVIEW_REMOVE</source>
        <extracomment>A button in the review; at most about 16 characters</extracomment>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>IDS_REVIEW_PLAY</source>
        <extracomment>A button in the review: plays 4 seconds around the selected split; at most about 16 characters</extracomment>
        <translation>&amp;Anhören</translation>
    </message>
    <message>
        <source>IDS_REVIEW_TRACKS_LABEL</source>
        <extracomment>Beside the track count box; a label: at most 24 characters</extracomment>
        <translation>&amp;Titel laut Hülle:</translation>
    </message>
    <message>
        <source>IDS_REVIEW_APPLY</source>
        <extracomment>The review's button that cuts the tracks anew; at most about 16 characters</extracomment>
        <translation>Ü&amp;bernehmen</translation>
    </message>
    <message>
        <source>IDS_REVIEW_CANCEL</source>
        <extracomment>The review's button that changes nothing; at most about 16 characters</extracomment>
        <translation>Abbre&amp;chen</translation>
    </message>
    <message>
        <source>IDS_REVIEW_NO_SIDE</source>
        <extracomment>Alert: the review cannot open; %1 the file concerned</extracomment>
        <translation>Die aufgenommenen Titel lassen sich nicht als eine Seite lesen und daher nicht prüfen. Betroffene Datei: %1</translation>
    </message>
    <message>
        <source>IDS_REVIEW_DISK_FULL</source>
        <extracomment>Alert: the re-cut found no room; %1 the folder</extracomment>
        <translation>Der Datenträger mit %1 ist voll, daher wurden die Titel nicht neu geschnitten. Es wurde nichts verändert: schaffen Sie Platz und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_READ_FAILED</source>
        <extracomment>Alert: %1 the file, %2 what the system said</extracomment>
        <translation>Die Titel wurden nicht neu geschnitten: %1 ließ sich nicht lesen (%2). Es wurde nichts verändert.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_WRITE_FAILED</source>
        <extracomment>Alert: %1 the file, %2 what the system said</extracomment>
        <translation>Die Titel wurden nicht neu geschnitten: %1 ließ sich nicht schreiben (%2). Die Titel sind unverändert.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_BAD_SPLITS</source>
        <extracomment>Alert: the markers cannot be applied</extracomment>
        <translation>Diese Trennstellen lassen sich nicht übernehmen: jede muss innerhalb der Seite und nach der vorigen liegen.</translation>
    </message>
    <message>
        <source>IDS_RECORDING_CONTINUES</source>
        <extracomment>Panel 2 while a recording goes on: the banner that leads back to it; a button caption, one line</extracomment>
        <translation>Die Aufnahme läuft &amp;weiter — zurück zu ihr</translation>
    </message>
    <message>
        <source>IDS_LIBRARY_UNWRITABLE</source>
        <extracomment>%1 = the music folder; it cannot be written before the export; an alert text, Qt rich text</extracomment>
        <translation>Ihre Titel lassen sich nicht speichern: In den Musikordner %1 kann nicht geschrieben werden (er ist vielleicht schreibgeschützt, voll oder kein Ordner). Wählen Sie einen anderen Ordner, machen Sie diesen beschreibbar und versuchen Sie es erneut, oder heben Sie die Titel für später auf: Sie bleiben in Waxline, bis Sie sie speichern.</translation>
    </message>
    <message>
        <source>IDS_LIBRARY_GONE</source>
        <extracomment>%1 = the music folder; it stopped being writable during the export; an alert text, Qt rich text</extracomment>
        <translation>In den Musikordner %1 kann nicht mehr geschrieben werden, daher ist der Export angehalten. Machen Sie ihn beschreibbar und versuchen Sie es erneut, oder heben Sie die übrigen Titel für später auf.</translation>
    </message>
    <message>
        <source>IDS_CHOOSE_FOLDER</source>
        <extracomment>Alert button: pick another music folder; a button caption</extracomment>
        <translation>Anderen Ordner wählen…</translation>
    </message>
    <message>
        <source>IDS_CHOOSE_FOLDER_TITLE</source>
        <extracomment>Title of the folder dialog for the music folder; plain text</extracomment>
        <translation>Musikordner wählen</translation>
    </message>
    <message>
        <source>IDS_TRY_AGAIN</source>
        <extracomment>Alert button: do it again; a button caption</extracomment>
        <translation>Erneut versuchen</translation>
    </message>
    <message>
        <source>IDS_KEEP_LATER</source>
        <extracomment>Alert button: keep the unsaved tracks in Waxline and close; a button caption</extracomment>
        <translation>Titel für später aufheben</translation>
    </message>
    <message>
        <source>IDS_TRACKS_NOT_SAVED</source>
        <extracomment>Panel 5: %1 = the track numbers that failed so far, e.g. 1–3, 5; followed by the reason; Qt rich text</extracomment>
        <translation>&lt;b&gt;Nicht gespeicherte Titel: %1.&lt;/b&gt;</translation>
    </message>
    <message>
        <source>IDS_REASON_NO_ENCODER</source>
        <extracomment>Why a track was not saved: no MP3 encoder; what to do; Qt rich text</extracomment>
        <translation>Es wurde kein MP3-Encoder gefunden: Waxline braucht das Programm ffmpeg. Installieren Sie es (das Paket heißt ffmpeg) und wählen Sie dann &lt;b&gt;Nochmal&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_REASON_DISK_FULL</source>
        <extracomment>Why a track was not saved: the disk is full; what to do; Qt rich text</extracomment>
        <translation>Der Datenträger ist voll. Schaffen Sie Platz und wählen Sie dann &lt;b&gt;Nochmal&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_REASON_LIBRARY</source>
        <extracomment>Why a track was not saved: the music folder cannot be written; what to do; Qt rich text</extracomment>
        <translation>In den Musikordner kann nicht geschrieben werden. Machen Sie ihn beschreibbar und wählen Sie dann &lt;b&gt;Nochmal&lt;/b&gt;; dort lässt sich auch ein anderer Ordner wählen.</translation>
    </message>
    <message>
        <source>IDS_REASON_TRACK_FILE</source>
        <extracomment>Why a track was not saved: %1 = its recorded file, missing or damaged; what to do; Qt rich text</extracomment>
        <translation>Seine Aufnahmedatei %1 fehlt oder ist nicht lesbar. Wählen Sie &lt;b&gt;Nochmal&lt;/b&gt; für die übrigen Titel; die Aufnahme bleibt in Waxline, bis alle Titel gespeichert sind.</translation>
    </message>
    <message>
        <source>IDS_REASON_ENCODER_FAILED</source>
        <extracomment>Why a track was not saved: the MP3 could not be made; what to do; Qt rich text</extracomment>
        <translation>Die MP3-Datei ließ sich nicht erstellen. Wählen Sie &lt;b&gt;Nochmal&lt;/b&gt;; klappt es wieder nicht, heben Sie die Titel für später auf.</translation>
    </message>
    <message>
        <source>IDS_MISSING_TRACKS</source>
        <extracomment>Panel 6: %1 = tracks missing, %2 = tracks of the side, %3 = their numbers; Qt rich text</extracomment>
        <translation>&lt;b&gt;Noch nicht in Ihrem Musikordner: %1 von %2 Titeln (%3).&lt;/b&gt; Sie bleiben in Waxline, bis sie gespeichert sind.</translation>
    </message>
    <message>
        <source>IDS_PANEL6_MISSING_TITLE</source>
        <extracomment>Panel 6 when tracks are missing; a title: at most about 40 characters</extracomment>
        <translation>Nicht alle Titel wurden gespeichert</translation>
    </message>
    <message>
        <source>IDS_BUTTON_TRY_AGAIN</source>
        <extracomment>Panel 6: export the missing tracks again; a button caption: at most 12 characters</extracomment>
        <translation>Noch&amp;mal</translation>
    </message>
    <message>
        <source>IDS_BUTTON_KEEP_LATER</source>
        <extracomment>Panel 6: keep the side and close; a button caption: at most 15 characters</extracomment>
        <translation>&amp;Für später</translation>
    </message>
    <message>
        <source>IDS_RECORD_RESTART</source>
        <extracomment>Record pressed on panel 2 while recording; %1 = tracks so far; an alert text, Qt rich text</extracomment>
        <translation>Es läuft noch eine Aufnahme (bisher %1 Titel). Eine neue Aufnahme beginnt von vorn und verwirft diese Titel.</translation>
    </message>
    <message>
        <source>IDS_BACK_TO_RECORDING</source>
        <extracomment>Alert button: go back to the recording; a button caption</extracomment>
        <translation>Zurück zur Aufnahme</translation>
    </message>
    <message>
        <source>IDS_RECORD_DISCARD</source>
        <extracomment>Alert button: record anew, throwing the old tracks away; a button caption</extracomment>
        <translation>Verwerfen und aufnehmen</translation>
    </message>
    <message>
        <source>IDS_RECORD_OVER</source>
        <extracomment>Record pressed while the export folder holds tracks not saved; %1 = tracks, %2 = length h:mm:ss; an alert text, Qt rich text</extracomment>
        <translation>Waxline enthält noch %1 Titel (%2), die nicht in Ihrem Musikordner sind. Eine neue Aufnahme würde sie verwerfen. Zuerst speichern?</translation>
    </message>
    <message>
        <source>IDS_SAVE_FIRST</source>
        <extracomment>Alert button: name and save the old tracks first; a button caption</extracomment>
        <translation>Zuerst speichern</translation>
    </message>
    <message>
        <source>IDS_QUIT_QUESTION</source>
        <extracomment>Close with nothing unsaved; an alert text, Qt rich text</extracomment>
        <translation>Waxline beenden?</translation>
    </message>
    <message>
        <source>IDS_QUIT</source>
        <extracomment>Alert button: quit; a button caption</extracomment>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>IDS_CANCEL</source>
        <extracomment>Alert button: do not quit; a button caption</extracomment>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>IDS_CLOSE_RECORDING</source>
        <extracomment>Close while recording; %1 = tracks so far, %2 = their length h:mm:ss; an alert text, Qt rich text</extracomment>
        <translation>Waxline nimmt gerade auf (bisher %1 Titel, %2). Beenden und die Titel für später aufheben, um sie beim nächsten Start zu speichern, oder beenden und verwerfen?</translation>
    </message>
    <message>
        <source>IDS_CLOSE_UNSAVED</source>
        <extracomment>Close with tracks not in the library; %1 = tracks, %2 = length h:mm:ss; an alert text, Qt rich text</extracomment>
        <translation>%1 Titel (%2) sind noch nicht in Ihrem Musikordner. Beenden und die Titel für später aufheben, um sie beim nächsten Start zu speichern, oder beenden und verwerfen?</translation>
    </message>
    <message>
        <source>IDS_KEEP_RECORDING</source>
        <extracomment>Alert button: do not quit, go on recording; a button caption</extracomment>
        <translation>Weiter aufnehmen</translation>
    </message>
    <message>
        <source>IDS_DONT_QUIT</source>
        <extracomment>Alert button: do not quit; a button caption</extracomment>
        <translation>Nicht beenden</translation>
    </message>
    <message>
        <source>IDS_QUIT_KEEP</source>
        <extracomment>Alert button: quit, keeping the tracks for the next start; a button caption</extracomment>
        <translation>Beenden, aufheben</translation>
    </message>
    <message>
        <source>IDS_QUIT_DISCARD</source>
        <extracomment>Alert button: quit and throw the tracks away; a button caption</extracomment>
        <translation>Beenden und verwerfen</translation>
    </message>
    <message>
        <source>IDS_FOLDER_BUSY_START</source>
        <extracomment>Start-up: another run holds the export folder; %1 = who; an alert text, Qt rich text</extracomment>
        <translation>Eine andere Waxline arbeitet gerade mit ihrer Aufnahme (%1). Dieses Fenster lässt diese Aufnahme in Ruhe: Es kann erst aufnehmen oder speichern, wenn die andere fertig oder geschlossen ist.</translation>
    </message>
    <message>
        <source>IDS_RECOVER_UNSAVED_TEXT</source>
        <extracomment>%1 = number of tracks, %2 = length h:mm:ss; a recording that stopped but was never saved; an alert text, Qt rich text</extracomment>
        <translation>Waxline wurde beendet, bevor eine Aufnahme gespeichert war. Erhaltene Titel: %1, Länge %2. Möchten Sie sie jetzt benennen und speichern?</translation>
    </message>
    <message>
        <source>IDS_RECOVER_HALF_TEXT</source>
        <extracomment>%1 = number of tracks, %2 = length h:mm:ss, %3 = tracks not yet saved; an alert text, Qt rich text</extracomment>
        <translation>Eine Aufnahme wurde nur zum Teil gespeichert. Titel: %1, Länge %2; %3 davon sind noch nicht in Ihrem Musikordner. Möchten Sie diese jetzt speichern?</translation>
    </message>
    <message>
        <source>IDS_RECOVER_LATER</source>
        <extracomment>Recover: leave it for now; a button caption</extracomment>
        <translation>Später</translation>
    </message>
    <message>
        <source>IDS_PANEL3_STOPPED_TITLE</source>
        <extracomment>Panel 3 reached back from a naming panel, nothing records; a title: at most about 40 characters</extracomment>
        <translation>Aufnahme beendet</translation>
    </message>
    <message>
        <source>IDS_PANEL3_STOPPED_TEXT</source>
        <extracomment>Panel 3 when nothing records; %1 = tracks recorded; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Die Aufnahme ist mit %1 Titeln beendet. Wählen Sie &lt;b&gt;Weiter&lt;/b&gt;, um sie zu benennen und zu speichern.</translation>
    </message>
    <message>
        <source>IDS_PANEL6_SAVING_TITLE</source>
        <extracomment>Panel 6 reached while the export still runs; a title: at most about 40 characters</extracomment>
        <translation>Titel werden noch gespeichert…</translation>
    </message>
    <message>
        <source>IDS_PANEL6_SAVING_TEXT</source>
        <extracomment>Panel 6 while the export still runs; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Waxline legt Ihre Titel noch in Ihren Musikordner. Diese Seite zeigt an, wenn alle Titel dort sind.</translation>
    </message>
    <message>
        <source>IDS_STOP_SERVER_GONE</source>
        <extracomment>The sound server stopped while recording; an alert text, Qt rich text</extracomment>
        <translation>Das Audiosystem dieses Computers antwortet nicht mehr, deshalb endete die Aufnahme. Die bis dahin aufgenommenen Titel bleiben erhalten. Prüfen Sie, ob der Ton funktioniert, und nehmen Sie dann erneut auf.</translation>
    </message>
    <message>
        <source>IDS_BUTTON_FIND_ALBUM</source>
        <extracomment>Panels 4 and 7: looks the record up in the music database; a button caption, at most 15 characters</extracomment>
        <translation>Album s&amp;uchen…</translation>
    </message>
    <message>
        <source>IDS_FIND_TITLE</source>
        <extracomment>The lookup dialog's title; a title: at most about 40 characters</extracomment>
        <translation>Album suchen</translation>
    </message>
    <message>
        <source>IDS_FIND_ARTIST</source>
        <extracomment>Lookup dialog: the artist field's label</extracomment>
        <translation>&amp;Interpret</translation>
    </message>
    <message>
        <source>IDS_FIND_ALBUM</source>
        <extracomment>Lookup dialog: the album field's label</extracomment>
        <translation>Al&amp;bum</translation>
    </message>
    <message>
        <source>IDS_FIND_BARCODE</source>
        <extracomment>Lookup dialog: the barcode field's label (the number under the bars on the sleeve)</extracomment>
        <translation>&amp;Strichcode</translation>
    </message>
    <message>
        <source>IDS_FIND_SEARCH</source>
        <extracomment>Lookup dialog: starts the search; a button caption</extracomment>
        <translation>S&amp;uchen</translation>
    </message>
    <message>
        <source>IDS_FIND_USE</source>
        <extracomment>Lookup dialog: fills the names from the chosen release; a button caption</extracomment>
        <translation>&amp;Namen übernehmen</translation>
    </message>
    <message>
        <source>IDS_FIND_CLOSE</source>
        <extracomment>Lookup dialog: closes it; a button caption</extracomment>
        <translation>Sch&amp;ließen</translation>
    </message>
    <message>
        <source>IDS_FIND_NOTHING_TYPED</source>
        <extracomment>Lookup dialog: nothing to search for; a status line</extracomment>
        <translation>Geben Sie Interpret und Album oder den Strichcode ein.</translation>
    </message>
    <message>
        <source>IDS_FIND_SEARCHING</source>
        <extracomment>Lookup dialog while it asks the database; a status line</extracomment>
        <translation>Die MusicBrainz-Datenbank wird durchsucht…</translation>
    </message>
    <message>
        <source>IDS_FIND_FOUND</source>
        <extracomment>Lookup dialog; %1 = releases found; a status line</extracomment>
        <translation>%1 Veröffentlichungen gefunden. Wählen Sie die aufgenommene und dann „Namen übernehmen“.</translation>
    </message>
    <message>
        <source>IDS_FIND_DETAILS</source>
        <extracomment>Lookup dialog, one release: %1 = format (12" Vinyl), %2 = country, %3 = year, %4 = number of sides</extracomment>
        <translation>%1 · %2 · %3 · Seiten: %4</translation>
    </message>
    <message>
        <source>IDS_FIND_FIT</source>
        <extracomment>Lookup dialog, one release: %1 = side letter, %2 = how well its listing fits the recording in percent</extracomment>
        <translation>Passt zu Seite %1 der Aufnahme: %2 %</translation>
    </message>
    <message>
        <source>IDS_FIND_FIT_WHOLE</source>
        <extracomment>Lookup dialog, one release recorded in one go (a cassette); %1 = fit in percent</extracomment>
        <translation>Passt zur ganzen Kassette: %1 %</translation>
    </message>
    <message>
        <source>IDS_FIND_FIT_NONE</source>
        <extracomment>Lookup dialog, one release whose listing does not match the recording</extracomment>
        <translation>Passt nicht zur aufgenommenen Seite</translation>
    </message>
    <message>
        <source>IDS_FIND_FILLED</source>
        <extracomment>Lookup dialog after choosing; %1 = tracks named; a status line</extracomment>
        <translation>Die Namen von %1 Titeln sind eingetragen.</translation>
    </message>
    <message>
        <source>IDS_FIND_FILLED_RECUT</source>
        <extracomment>Lookup dialog after choosing and re-cutting; %1 = tracks now; a status line</extracomment>
        <translation>Die Seite wurde wie im Verzeichnis in %1 Titel geteilt, und ihre Namen sind eingetragen.</translation>
    </message>
    <message>
        <source>IDS_FIND_FILLED_UNSURE</source>
        <extracomment>Lookup dialog after choosing a release that does not fit closely; a status line</extracomment>
        <translation>Die Namen sind eingetragen. Das Verzeichnis passt nicht genau zur Aufnahme, deshalb bleiben die Titel wie geteilt: Prüfen Sie die Namen vor dem Speichern.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_NONETWORK</source>
        <extracomment>Lookup dialog: no connection; a status line</extracomment>
        <translation>Die MusicBrainz-Datenbank ist nicht erreichbar. Prüfen Sie die Internetverbindung, oder geben Sie die Namen ein.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_TIMEOUT</source>
        <extracomment>Lookup dialog: no answer within 10 seconds; a status line</extracomment>
        <translation>Die MusicBrainz-Datenbank hat nicht rechtzeitig geantwortet. Versuchen Sie es später, oder geben Sie die Namen ein.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_BUSY</source>
        <extracomment>Lookup dialog: the service is overloaded; a status line</extracomment>
        <translation>Die MusicBrainz-Datenbank ist ausgelastet. Versuchen Sie es in einer Minute, oder geben Sie die Namen ein.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_SERVICE</source>
        <extracomment>Lookup dialog: the service answered an error; %1 = its HTTP status; a status line</extracomment>
        <translation>Die MusicBrainz-Datenbank hat mit einem Fehler (%1) geantwortet. Versuchen Sie es später, oder geben Sie die Namen ein.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_NOMATCH</source>
        <extracomment>Lookup dialog: nothing found; a status line</extracomment>
        <translation>Nichts gefunden. Prüfen Sie die Schreibweise, oder geben Sie die Namen ein.</translation>
    </message>
    <message>
        <source>IDS_CLEAN_CHOICE</source>
        <extracomment>Check box on the naming panels: the MP3s of this run are cleaned of clicks, crackle and mains hum (the recording itself is kept as it is); a label: at most 30 characters</extracomment>
        <translation>&amp;Knackser und Brummen entfernen</translation>
    </message>
    <message>
        <source>IDS_LOSSLESS_CHOICE</source>
        <extracomment>Check box on the naming panels: each track is also saved as an untouched FLAC file beside its MP3; a label: at most 34 characters</extracomment>
        <translation>&amp;Verlustfreie Kopie (FLAC) behalten</translation>
    </message>
    <message>
        <source>IDS_METER_LEFT_NAME</source>
        <extracomment>Accessible name of the left level meter</extracomment>
        <translation>Pegel linker Kanal</translation>
    </message>
    <message>
        <source>IDS_METER_RIGHT_NAME</source>
        <extracomment>Accessible name of the right level meter</extracomment>
        <translation>Pegel rechter Kanal</translation>
    </message>
    <message>
        <source>IDS_BUTTON_ANOTHER_SIDE</source>
        <extracomment>Panel 6: go on with the next side (the default button); a button caption, at most 24 characters</extracomment>
        <translation>&amp;Weitere Seite aufnehmen</translation>
    </message>
    <message>
        <source>IDS_BUTTON_FINISH</source>
        <extracomment>Panel 6: the side is saved, end the application; a button caption, at most 12 characters</extracomment>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>IDS_SAVING_TRACK</source>
        <extracomment>Panel 5 progress bar while a track without a title is saved; %1 = its number, %2 = the number of tracks</extracomment>
        <translation>Titel %1 von %2 wird gespeichert</translation>
    </message>
    <message>
        <source>IDS_SAVING_TRACK_TITLE</source>
        <extracomment>Panel 5 progress bar while a track is saved; %1 = its number, %2 = the number of tracks, %3 = its title</extracomment>
        <translation>Titel %1 von %2 wird gespeichert — %3</translation>
    </message>
    <message>
        <source>IDS_SAVED_TRACKS</source>
        <extracomment>Panel 5 progress bar once every track is saved; %1 = saved, %2 = all</extracomment>
        <translation>%1 von %2 Titeln gespeichert</translation>
    </message>
    <message>
        <source>IDS_HELP_TITLE</source>
        <extracomment>The help window's title, shown when no web browser can open the help page; a title: at most about 40 characters</extracomment>
        <translation>Waxline-Hilfe</translation>
    </message>
    <message>
        <source>IDS_HELP_NO_BROWSER</source>
        <extracomment>Help window: a line above the page saying why it is shown here; a sentence</extracomment>
        <translation>Kein Webbrowser konnte die Hilfe öffnen, daher wird sie hier angezeigt.</translation>
    </message>
    <message>
        <source>IDS_HELP_CLOSE</source>
        <extracomment>Help window: the button that closes it; a button: at most 12 characters</extracomment>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_TITLE</source>
        <extracomment>Panel 1's Next found no supported deck: the title of the window offering other inputs; a title: at most about 40 characters</extracomment>
        <translation>Von einem anderen Eingang aufnehmen</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_TEXT</source>
        <extracomment>Other-input window: what happened and what the list is for; Qt rich text</extracomment>
        <translation>Kein unterstütztes Gerät gefunden. Nehmen Sie von einem anderen Eingang auf, etwa einem Plattenspieler mit Phono-Vorverstärker am Line-Eingang oder einem anderen USB-Interface. Oder schließen Sie Ihr Gerät an und klicken Sie erneut auf &lt;b&gt;Weiter&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_LIST</source>
        <extracomment>Other-input window: the label above the list of inputs, with its mnemonic; a label: at most 30 characters</extracomment>
        <translation>&amp;Eingänge:</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_CANCEL</source>
        <extracomment>Other-input window: closes it and stays on panel 1; a button: at most 12 characters</extracomment>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_USE</source>
        <extracomment>Other-input window: records from the input selected; a button: at most 24 characters</extracomment>
        <translation>Diesen Eingang &amp;verwenden</translation>
    </message>
    <message>
        <source>IDS_INPUT_GONE</source>
        <extracomment>The input chosen in the other-input window is not there any more; %1 = its name; an alert text, Qt rich text</extracomment>
        <translation>Der Eingang „%1“ ist nicht mehr vorhanden. Prüfen Sie das Kabel und klicken Sie dann erneut auf &lt;b&gt;Weiter&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_ZOOM_HINT</source>
        <extracomment>Tooltip of the review's waveform: how to zoom and scroll; at most about 100 characters</extracomment>
        <translation>Mausrad oder + und − zoomen hinein und hinaus; Umschalt mit dem Mausrad blättert.</translation>
    </message>
</context>
</TS>
