#pragma once

#include "exporting/ExportNumbering.h"
#include "exporting/LibraryImporter.h"

#include <functional>
#include <string>
#include <vector>

namespace waxline::exporting {

// Writes title, artist, album and track number into the file (saved when done).
// False when the file could not be opened for tagging.
bool tagFiles(const std::string& path, const std::string& artist, const std::string& album,
              const std::string& name, const std::string& number);

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
};

// What became of one track.
struct TrackOutcome {
    int index = 0;      // 1-based position in this recording
    std::string number; // the track number written into the tags
    std::string title;
    std::string wavPath;
    std::string mp3Path;
    std::string libraryPath; // where it sits in the music library, when it got there
    bool ok = false;
    std::string message; // why it failed
    std::vector<std::string> warnings;
};

// The export of finished tracks: encode each WAV to MP3 with ffmpeg, tag it, import it into
// the music library, check that the library still answers, report progress. Runs on the
// export thread that calls run(); encodings overlap on worker threads (one per core), while
// tagging, importing, probing and progress stay per track in track order.
class ExportPipeline {
public:
    explicit ExportPipeline(const LibraryImporter& importer);

    // Progress, on the export thread, once per track in order.
    std::function<void(const TrackOutcome&, int total)> onTrackDone;
    // The library probe after a track failed with `error`: true to do the track again (the
    // application alerts the user and retries), false to give up the rest of the export.
    std::function<bool(int error)> onProbeFailed;
    // One diagnostic line (failed encoder with its command and exit status, etc.).
    std::function<void(const std::string&)> log;

    // Exports every recorded track, numbering on from `numbering`; returns the outcomes in
    // track order. A failed track does not stop the others.
    std::vector<TrackOutcome> run(const ExportRequest& request, ExportNumbering& numbering);

    // One track the newer way: encode, tag, import. Blocking.
    TrackOutcome convertAndTagAudioFile4(const std::string& path, const std::string& artist,
                                         const std::string& album, const std::string& name,
                                         const std::string& number, bool normalise,
                                         float recordingPeak = 0);

    // One track the older way: unknown names filled in, the track normalised to
    // "normalized.wav" when asked (gain 0.97 / recordingPeak), that file encoded, tagged and
    // imported. Returns 0 on success, 1 on failure, with the details in `outcome`.
    int legacyConvertAndTagAudioFile4(const std::string& path, const std::string& artist,
                                      const std::string& album, const std::string& name,
                                      const std::string& number, bool normalise,
                                      float recordingPeak, TrackOutcome& outcome);

private:
    struct Encoded;
    Encoded encodeTrack(const std::string& wavPath) const;
    void finishTrack(const Encoded& encoded, const std::string& artist, const std::string& album,
                     TrackOutcome& outcome);
    void say(const std::string& line) const;

    const LibraryImporter& importer;
};

} // namespace waxline::exporting
