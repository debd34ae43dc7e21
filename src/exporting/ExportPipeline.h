#pragma once

#include "exporting/EncoderPool.h"
#include "exporting/ExportChoices.h"
#include "exporting/ExportNumbering.h"
#include "exporting/ExportProblem.h"
#include "exporting/LibraryImporter.h"
#include "exporting/UnknownNames.h"
#include "tagging/ReleaseTags.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace waxline::exporting {

// Writes title, artist, album and track number into the file (saved when done).
// False when the file could not be opened for tagging.
bool tagFiles(const std::string& path, const std::string& artist, const std::string& album,
              const std::string& name, const std::string& number,
              TagText text = TagText::Latin1Bytes);

// What one export is asked to do.
struct ExportRequest {
    std::string exportFolder; // where WXRTTmpFile.<n>.wav lie
    std::string artist;
    std::string album;
    std::vector<std::string> titles; // the name of track i at i - 1; missing ones are empty
    bool normalise = false;
    // The count of recorded tracks, read again before each track as the recorder may still
    // be adding one.
    std::function<int()> numRecordedTracks;
    // The peak of the whole recording for normalising. The application passes GetVUMax (the
    // input chain measured it while recording); when empty, the peak is read from the track
    // files, as a command-line export has no live measurement.
    std::function<float()> recordingPeak;
    // Tracks encoded at once; 0 means one per processor core.
    unsigned jobs = 0;
    // How the tags take the names: Latin-1 bytes as the application always has, or as text.
    TagText tagText = TagText::Latin1Bytes;
    // Called on a worker before it encodes a track: lets the background encoder give the
    // track up, or finish it first (EarlyEncoder::settle). Unset, nothing waits.
    std::function<void(int track)> beforeEncoding;
    // The texts of "IDS_UNKNOWN_TRACK", "IDS_UNKNOWN_ARTIST" and "IDS_UNKNOWN_ALBUM", which
    // stand in for missing names on the older export path.
    TextLookup text;
    // Tracks the folder notes as in the library already (savedTracks) are not exported again:
    // their outcome is a success with savedBefore set.
    bool skipSaved = false;
    // The numbers' offset when the numbering was taken by an earlier run over the same side
    // (its missing tracks done again): the numbering is then left as it is.
    std::optional<uint32_t> numberOffset;
    // From a looked-up release, per track (track i at i - 1): the number to tag instead of the
    // running count (its position on its medium), and the further tags and cover. Empty or
    // short: the running count and the four tags.
    std::vector<std::string> trackNumbers;
    std::vector<ReleaseTags> releaseTags;
    // Formats, cleaning, loudness and sheets; the plain MP3 when left as it is.
    ExportChoices choices;
};

// What became of one track.
struct TrackOutcome {
    int index = 0;      // 1-based position in this recording
    std::string number; // the track number written into the tags
    std::string title;
    std::string wavPath;
    std::string mp3Path;         // the file made first: the MP3, or the FLAC when only that is made
    std::string flacPath;        // the lossless copy, when one is made beside an MP3 or alone
    std::string libraryPath;     // where it sits in the music library, when it got there
    std::string flacLibraryPath; // where its FLAC sits there, when one was made
    std::vector<TrackLoudness> loudness;  // of the files made, in the order above, when measured
    restoration::CleaningReport cleaning; // what cleaning repaired, when asked for
    bool ok = false;
    ExportProblem problem; // why it failed
    std::vector<TrackWarning> warnings;
    bool readyBeforeExport = false; // its MP3 was made behind the recording before the export
    bool encodedEarly = false;      // its MP3 was made behind the recording, ready then or not
    bool savedBefore = false;       // an earlier export got it into the library
};

// The export of finished tracks: encode each WAV to MP3 with ffmpeg, tag it, import it into
// the music library, check that the library still answers, report progress. Runs on the
// export thread that calls run(); encoding and tagging overlap on an EncoderPool (one worker
// per core), while importing, probing and progress stay per track in track order.
// The hooks run on the export thread.
class ExportPipeline {
public:
    explicit ExportPipeline(const LibraryImporter& importer);

    // At the start, before any track: the tracks (ascending) whose MP3 was made behind the
    // recording and fits its track file, and the count of tracks.
    std::function<void(const std::vector<int>& ready, int total)> onStarted;
    // After each track's conversion, before the library is checked; a track done again is
    // reported again.
    std::function<void(const TrackOutcome&)> onTrackConverted;
    // The library check after a track failed with `error`. It may block (the window shows its
    // alert); true does the same track again from its encoding, false gives up the rest of
    // the export. Unset, the export gives up.
    std::function<bool(int error)> onProbeFailed;
    // Progress, once per track in order.
    std::function<void(const TrackOutcome&, int total)> onTrackDone;
    // The end of the run, after the numbering has taken this export's count.
    std::function<void(const std::vector<TrackOutcome>&)> onFinished;

    // Exports every recorded track, numbering on from `numbering`; returns the outcomes in
    // track order. A failed track does not stop the others.
    std::vector<TrackOutcome> run(const ExportRequest& request, ExportNumbering& numbering);

    // One track the newer way: encode, tag, import. Blocking.
    TrackOutcome convertAndTagAudioFile4(const std::string& path, const std::string& artist,
                                         const std::string& album, const std::string& name,
                                         const std::string& number, bool normalise,
                                         float recordingPeak = 0);

    // One track the older way: unknown names filled in from `text`, the track normalised to
    // "normalized.wav" when asked (gain 0.97 / recordingPeak), that file encoded, tagged and
    // imported. Returns 0 on success, 1 on failure, with the details in `outcome`.
    int legacyConvertAndTagAudioFile4(const std::string& path, const std::string& artist,
                                      const std::string& album, const std::string& name,
                                      const std::string& number, bool normalise,
                                      float recordingPeak, TrackOutcome& outcome,
                                      const TextLookup& text = {});

private:
    void importEncoded(const EncodedTrack& encoded, const TrackNames& names,
                       TrackOutcome& outcome) const;

    const LibraryImporter& importer;
};

// The encoding half of a track, for a worker: the track file checked, encoded to the MP3 and
// or the FLAC beside it (from `source` when that is set: the normalised copy), cleaned and
// measured as `choices` say, and tagged. Without a `source` and without cleaning, an MP3 made
// behind the recording from the track file as it is now is taken instead of encoding again.
EncodedTrack encodeAndTag(const std::string& wavPath, const TrackNames& names,
                          const std::string& number, const std::string& source = {},
                          const ExportChoices& choices = {});

} // namespace waxline::exporting
