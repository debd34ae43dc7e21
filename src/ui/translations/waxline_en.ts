<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
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
        <translation>Turn records and cassettes into tagged MP3 tracks</translation>
    </message>
    <message>
        <source>IDS_WARNING</source>
        <extracomment>Title of every warning box; a title: at most about 40 characters</extracomment>
        <translation>Please note</translation>
    </message>
    <message>
        <source>IDS_NODEVICE</source>
        <extracomment>Panel 1's Next found no deck; an alert text, Qt rich text</extracomment>
        <translation>Waxline cannot find a turntable or cassette deck. Check that the USB cable is plugged in at both ends and that the deck is switched on, or try another USB port. Then press &lt;b&gt;Next&lt;/b&gt; again.</translation>
    </message>
    <message>
        <source>IDS_TOOMANYDEVICES</source>
        <extracomment>Panel 1's Next found several decks; an alert text, Qt rich text</extracomment>
        <translation>More than one deck is connected. Unplug the ones you do not want to record from, so that only one is left, and press &lt;b&gt;Next&lt;/b&gt; again.</translation>
    </message>
    <message>
        <source>IDS_LIMIT</source>
        <extracomment>New Track pressed with 40 tracks: the recording stops; an alert text, Qt rich text</extracomment>
        <translation>That makes 40 tracks, as many as &lt;b&gt;New Track&lt;/b&gt; can start in one recording (automatic splitting has no such limit). Waxline stops here so that you can name and save them. Record the rest afterwards as another side.</translation>
    </message>
    <message>
        <source>IDS_LASTTRACK</source>
        <extracomment>New Track pressed with 39 tracks: track 40 starts; an alert text, Qt rich text</extracomment>
        <translation>Track 40 has started. It is the last one &lt;b&gt;New Track&lt;/b&gt; can start in this recording: the next &lt;b&gt;New Track&lt;/b&gt; stops the recording.</translation>
    </message>
    <message>
        <source>IDS_ITUNES_ERROR</source>
        <extracomment>The music folder is missing or cannot be written; OK tries again; an alert text, Qt rich text</extracomment>
        <translation>Waxline cannot save into your music folder. Check that the folder exists and that you may write to it (and that the disk is not full), then press &lt;b&gt;OK&lt;/b&gt; to try again.</translation>
    </message>
    <message>
        <source>IDS_CANCEL_RECORDING</source>
        <extracomment>Close button: asks before quitting; an alert text, Qt rich text</extracomment>
        <translation>Close Waxline? Tracks that are not saved yet will be lost.</translation>
    </message>
    <message>
        <source>IDS_YES</source>
        <extracomment>Alert button; a button caption: at most 12 characters</extracomment>
        <translation>Yes</translation>
    </message>
    <message>
        <source>IDS_NO</source>
        <extracomment>Alert button; a button caption: at most 12 characters</extracomment>
        <translation>No</translation>
    </message>
    <message>
        <source>IDS_CONTINUE</source>
        <extracomment>Alert button; a button caption: at most 12 characters</extracomment>
        <translation>Continue</translation>
    </message>
    <message>
        <source>IDS_OK</source>
        <extracomment>Alert button; a button caption: at most 12 characters</extracomment>
        <translation>OK</translation>
    </message>
    <message>
        <source>IDS_UNKNOWN_TRACK</source>
        <extracomment>Plain text for a tag and file name; %1 = track number; plain text, no markup</extracomment>
        <translation>Track %1</translation>
    </message>
    <message>
        <source>IDS_UNKNOWN_ARTIST</source>
        <extracomment>Plain text for a tag and folder name; plain text, no markup</extracomment>
        <translation>Unknown Artist</translation>
    </message>
    <message>
        <source>IDS_UNKNOWN_ALBUM</source>
        <extracomment>Plain text for a tag and folder name; plain text, no markup</extracomment>
        <translation>Unknown Album</translation>
    </message>
    <message>
        <source>IDS_STOP_DEVICE_GONE</source>
        <extracomment>The deck vanished while recording; an alert text, Qt rich text</extracomment>
        <translation>The deck was disconnected, so the recording stopped. The tracks recorded up to then are kept.</translation>
    </message>
    <message>
        <source>IDS_STOP_DISK_FULL</source>
        <extracomment>%1 = folder; an alert text, Qt rich text</extracomment>
        <translation>The disk is full, so the recording stopped. The tracks recorded up to then are kept in %1. Free some space before you record again.</translation>
    </message>
    <message>
        <source>IDS_STOP_FOLDER_GONE</source>
        <extracomment>%1 = folder; an alert text, Qt rich text</extracomment>
        <translation>The folder %1 was removed, so the recording stopped. Start Waxline again to record.</translation>
    </message>
    <message>
        <source>IDS_STOP_WRITE_FAILED</source>
        <extracomment>%1 = file, %2 = reason from the system; an alert text, Qt rich text</extracomment>
        <translation>Waxline could not write %1 (%2), so the recording stopped. What was recorded up to then is kept.</translation>
    </message>
    <message>
        <source>IDS_NO_AUDIO_SERVER</source>
        <extracomment>At start-up; %1 = reason; an alert text, Qt rich text</extracomment>
        <translation>Waxline cannot reach the sound system of this computer (%1). Check that sound works, for instance in the sound settings, and start Waxline again.</translation>
    </message>
    <message>
        <source>IDS_NO_USB_REGISTRY</source>
        <extracomment>At start-up; %1 = reason from the system; an alert text, Qt rich text</extracomment>
        <translation>Waxline cannot list the USB devices of this computer (%1), so it cannot find the turntable or cassette deck. Start Waxline again; if this stays, the system&apos;s device manager (udev) needs looking at.</translation>
    </message>
    <message>
        <source>IDS_MONITOR_FAILED</source>
        <extracomment>Listening to the deck failed; Waxline ends after this; %1 = reason; an alert text, Qt rich text</extracomment>
        <translation>Waxline cannot play the deck through your speakers (%1) and has to close. Check the sound settings, then start Waxline again.</translation>
    </message>
    <message>
        <source>IDS_RECOVER_TITLE</source>
        <extracomment>Start-up found a recording that did not stop cleanly; a title: at most about 40 characters</extracomment>
        <translation>An unfinished recording was found</translation>
    </message>
    <message>
        <source>IDS_RECOVER_TEXT</source>
        <extracomment>%1 = number of tracks, %2 = length h:mm:ss; an alert text, Qt rich text</extracomment>
        <translation>Waxline was closed while it was recording. Tracks kept: %1, length %2. Would you like to name and save them, or throw them away?</translation>
    </message>
    <message>
        <source>IDS_RECOVER_EXPORT</source>
        <extracomment>Recover: name and save; a button caption: at most 12 characters</extracomment>
        <translation>Save them</translation>
    </message>
    <message>
        <source>IDS_RECOVER_DISCARD</source>
        <extracomment>Recover: throw away; a button caption: at most 12 characters</extracomment>
        <translation>Discard</translation>
    </message>
    <message>
        <source>IDS_FOLDER_BUSY</source>
        <extracomment>%1 = who holds the export folder; an alert text, Qt rich text</extracomment>
        <translation>Another run of Waxline is recording or saving right now (%1). Wait until it has finished, or close it, then try again.</translation>
    </message>
    <message>
        <source>IDS_INTERNAL_ERROR</source>
        <extracomment>Title of an alert that should never show; a title: at most about 40 characters</extracomment>
        <translation>Internal error</translation>
    </message>
    <message>
        <source>IDS_INVALID_PANEL</source>
        <extracomment>Text of that alert; an alert text, Qt rich text</extracomment>
        <translation>Switch to invalid panel</translation>
    </message>
    <message>
        <source>IDS_BUTTON_NEXT</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Next</translation>
    </message>
    <message>
        <source>IDS_BUTTON_BACK</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Back</translation>
    </message>
    <message>
        <source>IDS_BUTTON_RECORD</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Record</translation>
    </message>
    <message>
        <source>IDS_BUTTON_STOP</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Stop</translation>
    </message>
    <message>
        <source>IDS_BUTTON_NEWTRACK</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>New &amp;Track</translation>
    </message>
    <message>
        <source>IDS_BUTTON_YES</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Yes</translation>
    </message>
    <message>
        <source>IDS_BUTTON_NO</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>N&amp;o</translation>
    </message>
    <message>
        <source>IDS_BUTTON_HELP</source>
        <extracomment>Accessible name of the round Help button; a button caption: at most 12 characters</extracomment>
        <translation>Help</translation>
    </message>
    <message>
        <source>IDS_BUTTON_CLOSE</source>
        <extracomment>Accessible name of the round Close button; a button caption: at most 12 characters</extracomment>
        <translation>Close</translation>
    </message>
    <message>
        <source>IDS_BUTTON_EXPORT</source>
        <extracomment>Starts saving the named tracks; a button caption: at most 12 characters</extracomment>
        <translation>&amp;Save</translation>
    </message>
    <message>
        <source>IDS_BUTTON_DONE</source>
        <extracomment>a button caption: at most 12 characters</extracomment>
        <translation>&amp;Done</translation>
    </message>
    <message>
        <source>IDS_PANEL1_TITLE</source>
        <extracomment>Panel 1: connect the deck; a title: at most about 40 characters</extracomment>
        <translation>Connect your turntable or cassette deck</translation>
    </message>
    <message>
        <source>IDS_PANEL1_TEXT</source>
        <extracomment>What to connect and how; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Plug the deck's USB cable into this computer and switch the deck on. Put on a record or insert a cassette, but do not play it yet. Then press &lt;b&gt;Next&lt;/b&gt; and Waxline will look for the deck.</translation>
    </message>
    <message>
        <source>IDS_SELECTDEVICE_TITLE</source>
        <extracomment>Panel 11: the deck plays both; a title: at most about 40 characters</extracomment>
        <translation>What would you like to record?</translation>
    </message>
    <message>
        <source>IDS_SELECTDEVICE_TEXT</source>
        <extracomment>a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Your deck plays both records and cassettes. Choose the one you are about to record, so that Waxline can give it the right sound.</translation>
    </message>
    <message>
        <source>IDS_DEVICE_TURNTABLE</source>
        <extracomment>Card caption; a label: at most 24 characters</extracomment>
        <translation>Vinyl record</translation>
    </message>
    <message>
        <source>IDS_DEVICE_CASSETTE</source>
        <extracomment>Card caption; a label: at most 24 characters</extracomment>
        <translation>Cassette</translation>
    </message>
    <message>
        <source>IDS_SELECTTAPE_TITLE</source>
        <extracomment>Panel 12; a title: at most about 40 characters</extracomment>
        <translation>Which kind of tape is it?</translation>
    </message>
    <message>
        <source>IDS_SELECTTAPE_TEXT</source>
        <extracomment>a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Look at the cassette or its case. Chrome tapes say &lt;b&gt;Chrome&lt;/b&gt;, &lt;b&gt;CrO2&lt;/b&gt; or &lt;b&gt;Type II&lt;/b&gt;; nearly all others are normal tapes. If you are not sure, choose normal.</translation>
    </message>
    <message>
        <source>IDS_TAPE_NORMAL</source>
        <extracomment>Card caption; a label: at most 24 characters</extracomment>
        <translation>Normal tape</translation>
    </message>
    <message>
        <source>IDS_TAPE_NORMAL_HINT</source>
        <extracomment>Under the card; a label: at most 24 characters</extracomment>
        <translation>Type I, most cassettes</translation>
    </message>
    <message>
        <source>IDS_TAPE_CHROME</source>
        <extracomment>Card caption; a label: at most 24 characters</extracomment>
        <translation>Chrome tape</translation>
    </message>
    <message>
        <source>IDS_TAPE_CHROME_HINT</source>
        <extracomment>Under the card; a label: at most 24 characters</extracomment>
        <translation>Type II, marked CrO2</translation>
    </message>
    <message>
        <source>IDS_PANEL2_TITLE</source>
        <extracomment>Panel 2: set the level; a title: at most about 40 characters</extracomment>
        <translation>Set the recording level</translation>
    </message>
    <message>
        <source>IDS_PANEL2_TEXT</source>
        <extracomment>How loud is right; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Play the loudest part of the side. Move the slider so that the bars climb high while the red lamps above them stay dark; a lit lamp means too loud. Then go back to the start and press &lt;b&gt;Record&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_GAIN_LABEL</source>
        <extracomment>Beside the gain slider; a label: at most 24 characters</extracomment>
        <translation>&amp;Level</translation>
    </message>
    <message>
        <source>IDS_GAIN_UNIT</source>
        <extracomment>After the gain read-out; a label: at most 24 characters</extracomment>
        <translation>dB</translation>
    </message>
    <message>
        <source>IDS_AUTOSPLIT_LABEL</source>
        <extracomment>Check box: a new track starts at each quiet gap; a label: at most 24 characters</extracomment>
        <translation>New track at each &amp;gap</translation>
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
        <translation>Recording</translation>
    </message>
    <message>
        <source>IDS_PANEL3_TEXT</source>
        <extracomment>a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Play the side now. With automatic splitting, each quiet gap starts a new track by itself; otherwise press &lt;b&gt;New Track&lt;/b&gt; as each song begins. Press &lt;b&gt;Stop&lt;/b&gt; at the end; a minute of silence stops the recording too.</translation>
    </message>
    <message>
        <source>IDS_ELAPSED_LABEL</source>
        <extracomment>Above the running time of the current track; a label: at most 24 characters</extracomment>
        <translation>This track</translation>
    </message>
    <message>
        <source>IDS_TRACK_LABEL</source>
        <extracomment>Above the number of the current track; a label: at most 24 characters</extracomment>
        <translation>Track</translation>
    </message>
    <message>
        <source>IDS_PANEL4_TITLE</source>
        <extracomment>Panel 4: one track; a title: at most about 40 characters</extracomment>
        <translation>Name your track</translation>
    </message>
    <message>
        <source>IDS_PANEL4_TEXT</source>
        <extracomment>a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Type the artist, the album and the title of the track. They become the MP3's tags and name the folders it is filed in. Anything you leave empty gets a stand-in such as “Unknown Artist”.</translation>
    </message>
    <message>
        <source>IDS_ARTIST_LABEL</source>
        <extracomment>a label: at most 24 characters</extracomment>
        <translation>&amp;Artist</translation>
    </message>
    <message>
        <source>IDS_ALBUM_LABEL</source>
        <extracomment>a label: at most 24 characters</extracomment>
        <translation>Alb&amp;um</translation>
    </message>
    <message>
        <source>IDS_TRACKNAME_LABEL</source>
        <extracomment>a label: at most 24 characters</extracomment>
        <translation>&amp;Title</translation>
    </message>
    <message>
        <source>IDS_PANEL5_TITLE</source>
        <extracomment>Panel 5: export running; a title: at most about 40 characters</extracomment>
        <translation>Saving your tracks</translation>
    </message>
    <message>
        <source>IDS_PANEL5_TEXT</source>
        <extracomment>Where the tracks go; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Each track becomes an MP3 with your names as tags. It goes into your music folder, in a folder for the artist and inside that one for the album. This takes a few seconds a track; Waxline moves on by itself.</translation>
    </message>
    <message>
        <source>IDS_EXPORT_READY_ALL</source>
        <extracomment>Panel 5, under the progress: every track's MP3 was made while recording; a note: at most about 110 characters, Qt rich text</extracomment>
        <translation>Every track was encoded while recording: only the tags and the music folder remain.</translation>
    </message>
    <message>
        <source>IDS_EXPORT_READY_SOME</source>
        <extracomment>Panel 5, under the progress: %1 the track numbers made while recording, such as 1–3, 5; %2 the count of tracks; a note: at most about 110 characters, Qt rich text</extracomment>
        <translation>Encoded while recording: tracks %1 of %2. The others are encoded now.</translation>
    </message>
    <message>
        <source>IDS_EXPORT_READY_NONE</source>
        <extracomment>Panel 5, under the progress: no track's MP3 was made while recording; a note: at most about 110 characters, Qt rich text</extracomment>
        <translation>No track was encoded while recording, so each one is encoded now.</translation>
    </message>
    <message>
        <source>IDS_PANEL6_TITLE</source>
        <extracomment>Panel 6: export done; a title: at most about 40 characters</extracomment>
        <translation>Done! Record another side?</translation>
    </message>
    <message>
        <source>IDS_PANEL6_TEXT</source>
        <extracomment>Record another side records more; Finish closes Waxline; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Your tracks are in your music folder. Choose &lt;b&gt;Record another side&lt;/b&gt; for the other side or another record (with the same artist and album, the track numbers carry on), or &lt;b&gt;Finish&lt;/b&gt; to close Waxline.</translation>
    </message>
    <message>
        <source>IDS_PANEL7_TITLE</source>
        <extracomment>Panel 7: artist, album, tracks 1-10; a title: at most about 40 characters</extracomment>
        <translation>Name your tracks</translation>
    </message>
    <message>
        <source>IDS_PANEL7_TEXT</source>
        <extracomment>Above ten fields; keep it short; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Type the artist and the album once, then a title for each track in the order you played them.</translation>
    </message>
    <message>
        <source>IDS_PANEL8_TITLE</source>
        <extracomment>a title: at most about 40 characters</extracomment>
        <translation>Tracks 11 to 20</translation>
    </message>
    <message>
        <source>IDS_PANEL9_TITLE</source>
        <extracomment>a title: at most about 40 characters</extracomment>
        <translation>Tracks 21 to 30</translation>
    </message>
    <message>
        <source>IDS_PANEL10_TITLE</source>
        <extracomment>a title: at most about 40 characters</extracomment>
        <translation>Tracks 31 to 40</translation>
    </message>
    <message>
        <source>IDS_MORETRACKS_TEXT</source>
        <extracomment>Panels 8 to 10; keep it short; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Name the next tracks, in the order you played them.</translation>
    </message>
    <message>
        <source>IDS_MONITOR_REASON_DEVICE</source>
        <extracomment>The reason in IDS_MONITOR_FAILED; %1 = the deck's name; plain text</extracomment>
        <translation>the device “%1” is not there any more</translation>
    </message>
    <message>
        <source>IDS_MONITOR_REASON_OPEN</source>
        <extracomment>The reason in IDS_MONITOR_FAILED; %1 = the deck's name; plain text</extracomment>
        <translation>the device “%1” could not be opened; another program may be using it</translation>
    </message>
    <message>
        <source>IDS_MONITOR_REASON_SERVER</source>
        <extracomment>The reason in IDS_MONITOR_FAILED; plain text</extracomment>
        <translation>the sound system stopped answering</translation>
    </message>
    <message>
        <source>IDS_MONITOR_REASON_OTHER</source>
        <extracomment>The reason in IDS_MONITOR_FAILED; %1 = the deck's name, %2 = error number; plain text</extracomment>
        <translation>the device “%1” reported error %2</translation>
    </message>
    <message>
        <source>IDS_FOLDER_LOCK_FAILED</source>
        <extracomment>Record or save could not lock the export folder; %1 = folder, %2 = the system's reason; an alert text, Qt rich text</extracomment>
        <translation>Waxline cannot use its working folder %1 (%2). Check that the folder exists and that you may write to it, then try again.</translation>
    </message>
    <message>
        <source>IDS_BUTTON_REVIEW</source>
        <extracomment>Panels 4 and 7: opens the review of the splits; a button caption, at most 15 characters</extracomment>
        <translation>Re&amp;view splits…</translation>
    </message>
    <message>
        <source>IDS_REVIEW_NOTICE</source>
        <extracomment>Panels 4 and 7, one line under the fields when the analysis proposes other splits; at most 80 characters</extracomment>
        <translation>Other splits are proposed: please review them before naming.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_TITLE</source>
        <extracomment>The review dialog's title; a title: at most about 40 characters</extracomment>
        <translation>Review the splits</translation>
    </message>
    <message>
        <source>IDS_REVIEW_TEXT</source>
        <extracomment>Under the review dialog's title; at most about 260 characters, Qt rich text</extracomment>
        <translation>Drag a marker to move a split: it snaps to the quietest moment within 3 seconds (hold Shift to place it exactly). Double-click adds a split, Delete removes the selected one, the arrow keys nudge it and Space plays 4 seconds around it.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_READING</source>
        <extracomment>While the side is read for the overview and the proposal</extracomment>
        <translation>Reading the side…</translation>
    </message>
    <message>
        <source>IDS_REVIEW_SELECTED</source>
        <extracomment>The selected marker: %1 the number it shows (the track it starts), %2 its time m:ss.s</extracomment>
        <translation>Split %1 at %2</translation>
    </message>
    <message>
        <source>IDS_REVIEW_NONE_SELECTED</source>
        <extracomment>No marker selected: %1 the number of tracks the markers make</extracomment>
        <translation>Tracks: %1 – click a marker to select it</translation>
    </message>
    <message>
        <source>IDS_REVIEW_DOUBTFUL</source>
        <extracomment>Doubtful splits, drawn dashed: %1 their times, comma-separated</extracomment>
        <translation>Doubtful splits (dashed): %1 – listen to them before you apply.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_SUGGESTED</source>
        <extracomment>Boundaries the analysis found but is not sure of, drawn dotted and not applied: %1 their times, comma-separated</extracomment>
        <translation>Suggested by the analysis but not applied (dotted): %1 – the recording’s own splits are kept because the analysis is not sure. Listen there and add a split if you hear a gap.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_ADD</source>
        <extracomment>A button in the review; at most about 16 characters</extracomment>
        <translation>A&amp;dd split</translation>
    </message>
    <message>
        <source>IDS_REVIEW_REMOVE</source>
        <extracomment>A button in the review; at most about 16 characters</extracomment>
        <translation>&amp;Remove split</translation>
    </message>
    <message>
        <source>IDS_REVIEW_PLAY</source>
        <extracomment>A button in the review: plays 4 seconds around the selected split; at most about 16 characters</extracomment>
        <translation>&amp;Play</translation>
    </message>
    <message>
        <source>IDS_REVIEW_TRACKS_LABEL</source>
        <extracomment>Beside the track count box; a label: at most 24 characters</extracomment>
        <translation>&amp;Tracks on the sleeve:</translation>
    </message>
    <message>
        <source>IDS_REVIEW_APPLY</source>
        <extracomment>The review's button that cuts the tracks anew; at most about 16 characters</extracomment>
        <translation>&amp;Apply</translation>
    </message>
    <message>
        <source>IDS_REVIEW_CANCEL</source>
        <extracomment>The review's button that changes nothing; at most about 16 characters</extracomment>
        <translation>&amp;Cancel</translation>
    </message>
    <message>
        <source>IDS_REVIEW_NO_SIDE</source>
        <extracomment>Alert: the review cannot open; %1 the file concerned</extracomment>
        <translation>The recorded tracks cannot be read as one side, so they cannot be reviewed. The file concerned: %1</translation>
    </message>
    <message>
        <source>IDS_REVIEW_DISK_FULL</source>
        <extracomment>Alert: the re-cut found no room; %1 the folder</extracomment>
        <translation>The disk holding %1 is full, so the tracks were not cut anew. Nothing was changed: free some space and try again.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_READ_FAILED</source>
        <extracomment>Alert: %1 the file, %2 what the system said</extracomment>
        <translation>The tracks were not cut anew: %1 could not be read (%2). Nothing was changed.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_WRITE_FAILED</source>
        <extracomment>Alert: %1 the file, %2 what the system said</extracomment>
        <translation>The tracks were not cut anew: %1 could not be written (%2). The tracks are as they were.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_BAD_SPLITS</source>
        <extracomment>Alert: the markers cannot be applied</extracomment>
        <translation>These splits cannot be applied: each must lie inside the side, after the one before it.</translation>
    </message>
    <message>
        <source>IDS_RECORDING_CONTINUES</source>
        <extracomment>Panel 2 while a recording goes on: the banner that leads back to it; a button caption, one line</extracomment>
        <translation>Recording &amp;continues — back to it</translation>
    </message>
    <message>
        <source>IDS_LIBRARY_UNWRITABLE</source>
        <extracomment>%1 = the music folder; it cannot be written before the export; an alert text, Qt rich text</extracomment>
        <translation>Your tracks cannot be saved: the music folder %1 cannot be written (it may be read-only, full, or not a folder). Choose another folder, make this one writable and try again, or keep the tracks for later: they stay in Waxline until you save them.</translation>
    </message>
    <message>
        <source>IDS_LIBRARY_GONE</source>
        <extracomment>%1 = the music folder; it stopped being writable during the export; an alert text, Qt rich text</extracomment>
        <translation>The music folder %1 can no longer be written, so the export has paused. Make it writable and try again, or keep the remaining tracks for later.</translation>
    </message>
    <message>
        <source>IDS_CHOOSE_FOLDER</source>
        <extracomment>Alert button: pick another music folder; a button caption</extracomment>
        <translation>Choose another folder…</translation>
    </message>
    <message>
        <source>IDS_CHOOSE_FOLDER_TITLE</source>
        <extracomment>Title of the folder dialog for the music folder; plain text</extracomment>
        <translation>Choose a music folder</translation>
    </message>
    <message>
        <source>IDS_TRY_AGAIN</source>
        <extracomment>Alert button: do it again; a button caption</extracomment>
        <translation>Try again</translation>
    </message>
    <message>
        <source>IDS_KEEP_LATER</source>
        <extracomment>Alert button: keep the unsaved tracks in Waxline and close; a button caption</extracomment>
        <translation>Keep the tracks for later</translation>
    </message>
    <message>
        <source>IDS_TRACKS_NOT_SAVED</source>
        <extracomment>Panel 5: %1 = the track numbers that failed so far, e.g. 1–3, 5; followed by the reason; Qt rich text</extracomment>
        <translation>&lt;b&gt;Tracks not saved: %1.&lt;/b&gt;</translation>
    </message>
    <message>
        <source>IDS_REASON_NO_ENCODER</source>
        <extracomment>Why a track was not saved: no MP3 encoder; what to do; Qt rich text</extracomment>
        <translation>No MP3 encoder was found: Waxline needs the program ffmpeg. Install it (the package is called ffmpeg), then press &lt;b&gt;Try again&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_REASON_DISK_FULL</source>
        <extracomment>Why a track was not saved: the disk is full; what to do; Qt rich text</extracomment>
        <translation>The disk is full. Make room on it, then press &lt;b&gt;Try again&lt;/b&gt;.</translation>
    </message>
    <message>
        <source>IDS_REASON_LIBRARY</source>
        <extracomment>Why a track was not saved: the music folder cannot be written; what to do; Qt rich text</extracomment>
        <translation>The music folder cannot be written. Make it writable, then press &lt;b&gt;Try again&lt;/b&gt;; another folder can be chosen there.</translation>
    </message>
    <message>
        <source>IDS_REASON_TRACK_FILE</source>
        <extracomment>Why a track was not saved: %1 = its recorded file, missing or damaged; what to do; Qt rich text</extracomment>
        <translation>Its recorded file %1 is missing or cannot be read. Press &lt;b&gt;Try again&lt;/b&gt; for the other tracks; the recording stays in Waxline until every track is saved.</translation>
    </message>
    <message>
        <source>IDS_REASON_ENCODER_FAILED</source>
        <extracomment>Why a track was not saved: the MP3 could not be made; what to do; Qt rich text</extracomment>
        <translation>The MP3 could not be made. Press &lt;b&gt;Try again&lt;/b&gt;; if it fails again, keep the tracks for later.</translation>
    </message>
    <message>
        <source>IDS_MISSING_TRACKS</source>
        <extracomment>Panel 6: %1 = tracks missing, %2 = tracks of the side, %3 = their numbers; Qt rich text</extracomment>
        <translation>&lt;b&gt;Not in your music folder yet: %1 of %2 tracks (%3).&lt;/b&gt; They stay in Waxline until they are saved.</translation>
    </message>
    <message>
        <source>IDS_PANEL6_MISSING_TITLE</source>
        <extracomment>Panel 6 when tracks are missing; a title: at most about 40 characters</extracomment>
        <translation>Not every track was saved</translation>
    </message>
    <message>
        <source>IDS_BUTTON_TRY_AGAIN</source>
        <extracomment>Panel 6: export the missing tracks again; a button caption: at most 12 characters</extracomment>
        <translation>&amp;Try again</translation>
    </message>
    <message>
        <source>IDS_BUTTON_KEEP_LATER</source>
        <extracomment>Panel 6: keep the side and close; a button caption: at most 15 characters</extracomment>
        <translation>&amp;Keep for later</translation>
    </message>
    <message>
        <source>IDS_RECORD_RESTART</source>
        <extracomment>Record pressed on panel 2 while recording; %1 = tracks so far; an alert text, Qt rich text</extracomment>
        <translation>A recording is still going on (%1 tracks so far). Recording again starts from nothing and throws these tracks away.</translation>
    </message>
    <message>
        <source>IDS_BACK_TO_RECORDING</source>
        <extracomment>Alert button: go back to the recording; a button caption</extracomment>
        <translation>Back to the recording</translation>
    </message>
    <message>
        <source>IDS_RECORD_DISCARD</source>
        <extracomment>Alert button: record anew, throwing the old tracks away; a button caption</extracomment>
        <translation>Discard and record</translation>
    </message>
    <message>
        <source>IDS_RECORD_OVER</source>
        <extracomment>Record pressed while the export folder holds tracks not saved; %1 = tracks, %2 = length h:mm:ss; an alert text, Qt rich text</extracomment>
        <translation>Waxline still holds %1 tracks (%2) that are not in your music folder. A new recording would throw them away. Save them first?</translation>
    </message>
    <message>
        <source>IDS_SAVE_FIRST</source>
        <extracomment>Alert button: name and save the old tracks first; a button caption</extracomment>
        <translation>Save them first</translation>
    </message>
    <message>
        <source>IDS_QUIT_QUESTION</source>
        <extracomment>Close with nothing unsaved; an alert text, Qt rich text</extracomment>
        <translation>Quit Waxline?</translation>
    </message>
    <message>
        <source>IDS_QUIT</source>
        <extracomment>Alert button: quit; a button caption</extracomment>
        <translation>Quit</translation>
    </message>
    <message>
        <source>IDS_CANCEL</source>
        <extracomment>Alert button: do not quit; a button caption</extracomment>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>IDS_CLOSE_RECORDING</source>
        <extracomment>Close while recording; %1 = tracks so far, %2 = their length h:mm:ss; an alert text, Qt rich text</extracomment>
        <translation>Waxline is recording (%1 tracks, %2 so far). Quit and keep them for later, to save them at the next start, or quit and throw them away?</translation>
    </message>
    <message>
        <source>IDS_CLOSE_UNSAVED</source>
        <extracomment>Close with tracks not in the library; %1 = tracks, %2 = length h:mm:ss; an alert text, Qt rich text</extracomment>
        <translation>%1 tracks (%2) are not in your music folder yet. Quit and keep them for later, to save them at the next start, or quit and throw them away?</translation>
    </message>
    <message>
        <source>IDS_KEEP_RECORDING</source>
        <extracomment>Alert button: do not quit, go on recording; a button caption</extracomment>
        <translation>Keep recording</translation>
    </message>
    <message>
        <source>IDS_DONT_QUIT</source>
        <extracomment>Alert button: do not quit; a button caption</extracomment>
        <translation>Don't quit</translation>
    </message>
    <message>
        <source>IDS_QUIT_KEEP</source>
        <extracomment>Alert button: quit, keeping the tracks for the next start; a button caption</extracomment>
        <translation>Quit, keep for later</translation>
    </message>
    <message>
        <source>IDS_QUIT_DISCARD</source>
        <extracomment>Alert button: quit and throw the tracks away; a button caption</extracomment>
        <translation>Quit and discard</translation>
    </message>
    <message>
        <source>IDS_FOLDER_BUSY_START</source>
        <extracomment>Start-up: another run holds the export folder; %1 = who; an alert text, Qt rich text</extracomment>
        <translation>Another run of Waxline is working with its recording right now (%1). This window leaves that recording alone: it cannot record or save until the other one has finished or is closed.</translation>
    </message>
    <message>
        <source>IDS_RECOVER_UNSAVED_TEXT</source>
        <extracomment>%1 = number of tracks, %2 = length h:mm:ss; a recording that stopped but was never saved; an alert text, Qt rich text</extracomment>
        <translation>Waxline was closed before a recording was saved. Tracks kept: %1, length %2. Would you like to name and save them now?</translation>
    </message>
    <message>
        <source>IDS_RECOVER_HALF_TEXT</source>
        <extracomment>%1 = number of tracks, %2 = length h:mm:ss, %3 = tracks not yet saved; an alert text, Qt rich text</extracomment>
        <translation>A recording was only partly saved. Tracks: %1, length %2; %3 of them are not in your music folder yet. Would you like to save those now?</translation>
    </message>
    <message>
        <source>IDS_RECOVER_LATER</source>
        <extracomment>Recover: leave it for now; a button caption</extracomment>
        <translation>Later</translation>
    </message>
    <message>
        <source>IDS_PANEL3_STOPPED_TITLE</source>
        <extracomment>Panel 3 reached back from a naming panel, nothing records; a title: at most about 40 characters</extracomment>
        <translation>Recording stopped</translation>
    </message>
    <message>
        <source>IDS_PANEL3_STOPPED_TEXT</source>
        <extracomment>Panel 3 when nothing records; %1 = tracks recorded; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>The recording has stopped with %1 tracks. Press &lt;b&gt;Next&lt;/b&gt; to name and save them.</translation>
    </message>
    <message>
        <source>IDS_PANEL6_SAVING_TITLE</source>
        <extracomment>Panel 6 reached while the export still runs; a title: at most about 40 characters</extracomment>
        <translation>Still saving your tracks…</translation>
    </message>
    <message>
        <source>IDS_PANEL6_SAVING_TEXT</source>
        <extracomment>Panel 6 while the export still runs; a panel text: at most about 260 characters, Qt rich text</extracomment>
        <translation>Waxline is still putting your tracks into your music folder. This panel says when every track is there.</translation>
    </message>
    <message>
        <source>IDS_STOP_SERVER_GONE</source>
        <extracomment>The sound server stopped while recording; an alert text, Qt rich text</extracomment>
        <translation>The sound system of this computer stopped answering, so the recording stopped. The tracks recorded up to then are kept. Check that the sound works, then record again.</translation>
    </message>
    <message>
        <source>IDS_BUTTON_FIND_ALBUM</source>
        <extracomment>Panels 4 and 7: looks the record up in the music database; a button caption, at most 15 characters</extracomment>
        <translation>&amp;Find the album…</translation>
    </message>
    <message>
        <source>IDS_FIND_TITLE</source>
        <extracomment>The lookup dialog's title; a title: at most about 40 characters</extracomment>
        <translation>Find the album</translation>
    </message>
    <message>
        <source>IDS_FIND_ARTIST</source>
        <extracomment>Lookup dialog: the artist field's label</extracomment>
        <translation>&amp;Artist</translation>
    </message>
    <message>
        <source>IDS_FIND_ALBUM</source>
        <extracomment>Lookup dialog: the album field's label</extracomment>
        <translation>Al&amp;bum</translation>
    </message>
    <message>
        <source>IDS_FIND_BARCODE</source>
        <extracomment>Lookup dialog: the barcode field's label (the number under the bars on the sleeve)</extracomment>
        <translation>Bar&amp;code</translation>
    </message>
    <message>
        <source>IDS_FIND_SEARCH</source>
        <extracomment>Lookup dialog: starts the search; a button caption</extracomment>
        <translation>&amp;Search</translation>
    </message>
    <message>
        <source>IDS_FIND_USE</source>
        <extracomment>Lookup dialog: fills the names from the chosen release; a button caption</extracomment>
        <translation>&amp;Use these names</translation>
    </message>
    <message>
        <source>IDS_FIND_CLOSE</source>
        <extracomment>Lookup dialog: closes it; a button caption</extracomment>
        <translation>C&amp;lose</translation>
    </message>
    <message>
        <source>IDS_FIND_NOTHING_TYPED</source>
        <extracomment>Lookup dialog: nothing to search for; a status line</extracomment>
        <translation>Type the artist and the album, or the barcode.</translation>
    </message>
    <message>
        <source>IDS_FIND_SEARCHING</source>
        <extracomment>Lookup dialog while it asks the database; a status line</extracomment>
        <translation>Searching the MusicBrainz database…</translation>
    </message>
    <message>
        <source>IDS_FIND_FOUND</source>
        <extracomment>Lookup dialog; %1 = releases found; a status line</extracomment>
        <translation>%1 releases found. Choose the one you recorded and select Use these names.</translation>
    </message>
    <message>
        <source>IDS_FIND_DETAILS</source>
        <extracomment>Lookup dialog, one release: %1 = format (12" Vinyl), %2 = country, %3 = year, %4 = number of sides</extracomment>
        <translation>%1 · %2 · %3 · sides: %4</translation>
    </message>
    <message>
        <source>IDS_FIND_FIT</source>
        <extracomment>Lookup dialog, one release: %1 = side letter, %2 = how well its listing fits the recording in percent</extracomment>
        <translation>Fits side %1 of the recording: %2 %</translation>
    </message>
    <message>
        <source>IDS_FIND_FIT_WHOLE</source>
        <extracomment>Lookup dialog, one release recorded in one go (a cassette); %1 = fit in percent</extracomment>
        <translation>Fits the whole tape: %1 %</translation>
    </message>
    <message>
        <source>IDS_FIND_FIT_NONE</source>
        <extracomment>Lookup dialog, one release whose listing does not match the recording</extracomment>
        <translation>Does not fit the recorded side</translation>
    </message>
    <message>
        <source>IDS_FIND_FILLED</source>
        <extracomment>Lookup dialog after choosing; %1 = tracks named; a status line</extracomment>
        <translation>The names of %1 tracks are filled in.</translation>
    </message>
    <message>
        <source>IDS_FIND_FILLED_RECUT</source>
        <extracomment>Lookup dialog after choosing and re-cutting; %1 = tracks now; a status line</extracomment>
        <translation>The side was cut into %1 tracks as the listing has them, and their names are filled in.</translation>
    </message>
    <message>
        <source>IDS_FIND_FILLED_UNSURE</source>
        <extracomment>Lookup dialog after choosing a release that does not fit closely; a status line</extracomment>
        <translation>The names are filled in. The listing does not fit the recording closely, so the tracks stay as they were split: check the names before saving.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_NONETWORK</source>
        <extracomment>Lookup dialog: no connection; a status line</extracomment>
        <translation>The MusicBrainz database cannot be reached. Check the internet connection, or type the names.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_TIMEOUT</source>
        <extracomment>Lookup dialog: no answer within 10 seconds; a status line</extracomment>
        <translation>The MusicBrainz database did not answer in time. Try again later, or type the names.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_BUSY</source>
        <extracomment>Lookup dialog: the service is overloaded; a status line</extracomment>
        <translation>The MusicBrainz database is busy. Try again in a minute, or type the names.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_SERVICE</source>
        <extracomment>Lookup dialog: the service answered an error; %1 = its HTTP status; a status line</extracomment>
        <translation>The MusicBrainz database answered with an error (%1). Try again later, or type the names.</translation>
    </message>
    <message>
        <source>IDS_FIND_FAIL_NOMATCH</source>
        <extracomment>Lookup dialog: nothing found; a status line</extracomment>
        <translation>Nothing was found. Check the spelling, or type the names.</translation>
    </message>
    <message>
        <source>IDS_CLEAN_CHOICE</source>
        <extracomment>Check box on the naming panels: the MP3s of this run are cleaned of clicks, crackle and mains hum (the recording itself is kept as it is); a label: at most 30 characters</extracomment>
        <translation>Remove &amp;clicks and hum</translation>
    </message>
    <message>
        <source>IDS_LOSSLESS_CHOICE</source>
        <extracomment>Check box on the naming panels: each track is also saved as an untouched FLAC file beside its MP3; a label: at most 34 characters</extracomment>
        <translation>Also keep a &amp;lossless copy (FLAC)</translation>
    </message>
    <message>
        <source>IDS_METER_LEFT_NAME</source>
        <extracomment>Accessible name of the left level meter</extracomment>
        <translation>Left channel level</translation>
    </message>
    <message>
        <source>IDS_METER_RIGHT_NAME</source>
        <extracomment>Accessible name of the right level meter</extracomment>
        <translation>Right channel level</translation>
    </message>
    <message>
        <source>IDS_BUTTON_ANOTHER_SIDE</source>
        <extracomment>Panel 6: go on with the next side (the default button); a button caption, at most 24 characters</extracomment>
        <translation>&amp;Record another side</translation>
    </message>
    <message>
        <source>IDS_BUTTON_FINISH</source>
        <extracomment>Panel 6: the side is saved, end the application; a button caption, at most 12 characters</extracomment>
        <translation>&amp;Finish</translation>
    </message>
    <message>
        <source>IDS_SAVING_TRACK</source>
        <extracomment>Panel 5 progress bar while a track without a title is saved; %1 = its number, %2 = the number of tracks</extracomment>
        <translation>Saving track %1 of %2</translation>
    </message>
    <message>
        <source>IDS_SAVING_TRACK_TITLE</source>
        <extracomment>Panel 5 progress bar while a track is saved; %1 = its number, %2 = the number of tracks, %3 = its title</extracomment>
        <translation>Saving track %1 of %2 — %3</translation>
    </message>
    <message>
        <source>IDS_SAVED_TRACKS</source>
        <extracomment>Panel 5 progress bar once every track is saved; %1 = saved, %2 = all</extracomment>
        <translation>%1 of %2 tracks saved</translation>
    </message>
    <message>
        <source>IDS_HELP_TITLE</source>
        <extracomment>The help window's title, shown when no web browser can open the help page; a title: at most about 40 characters</extracomment>
        <translation>Waxline Help</translation>
    </message>
    <message>
        <source>IDS_HELP_NO_BROWSER</source>
        <extracomment>Help window: a line above the page saying why it is shown here; a sentence</extracomment>
        <translation>No web browser could open the help, so it is shown here.</translation>
    </message>
    <message>
        <source>IDS_HELP_CLOSE</source>
        <extracomment>Help window: the button that closes it; a button: at most 12 characters</extracomment>
        <translation>&amp;Close</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_TITLE</source>
        <extracomment>Panel 1's Next found no supported deck: the title of the window offering other inputs; a title: at most about 40 characters</extracomment>
        <translation>Record from another input</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_TEXT</source>
        <extracomment>Other-input window: what happened and what the list is for; Qt rich text</extracomment>
        <translation>No supported turntable or cassette deck was found. Record from another input instead, such as a turntable on a phono preamplifier plugged into line‑in, or another USB audio interface. Or connect your deck and press &lt;b&gt;Next&lt;/b&gt; again.</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_LIST</source>
        <extracomment>Other-input window: the label above the list of inputs, with its mnemonic; a label: at most 30 characters</extracomment>
        <translation>&amp;Inputs:</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_CANCEL</source>
        <extracomment>Other-input window: closes it and stays on panel 1; a button: at most 12 characters</extracomment>
        <translation>&amp;Cancel</translation>
    </message>
    <message>
        <source>IDS_OTHER_INPUT_USE</source>
        <extracomment>Other-input window: records from the input selected; a button: at most 24 characters</extracomment>
        <translation>&amp;Use this input</translation>
    </message>
    <message>
        <source>IDS_INPUT_GONE</source>
        <extracomment>The input chosen in the other-input window is not there any more; %1 = its name; an alert text, Qt rich text</extracomment>
        <translation>The input “%1” is not there any more. Check its cable, then press &lt;b&gt;Next&lt;/b&gt; again.</translation>
    </message>
    <message>
        <source>IDS_REVIEW_ZOOM_HINT</source>
        <extracomment>Tooltip of the review's waveform: how to zoom and scroll; at most about 100 characters</extracomment>
        <translation>The wheel or + and − zoom in and out; Shift with the wheel scrolls.</translation>
    </message>
</context>
</TS>
