#include "exporting/ExportPipeline.h"

#include "exporting/ExportFolders.h"
#include "exporting/Mp3Encoder.h"
#include "exporting/Normaliser.h"
#include "exporting/TrackFileCheck.h"
#include "tagging/TaglibTagger.h"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace waxline::exporting {

namespace fs = std::filesystem;

// The result of the encoding half of a track, made on a worker thread.
struct ExportPipeline::Encoded {
    bool ok = false;
    std::string mp3Path;
    std::string message;
    std::vector<std::string> warnings;
};

bool tagFiles(const std::string& path, const std::string& artist, const std::string& album,
              const std::string& name, const std::string& number) {
    TaglibTagger tagger(path.c_str());
    if (!tagger.isValid())
        return false;
    tagger.setSongTitle(name.c_str());
    tagger.setArtist(artist.c_str());
    tagger.setAlbumName(album.c_str());
    tagger.setTrackNumber(number.c_str());
    return true;
}

ExportPipeline::ExportPipeline(const LibraryImporter& importer)
    : importer(importer) {}

void ExportPipeline::say(const std::string& line) const {
    if (log)
        log(line);
    else
        std::fprintf(stderr, "%s\n", line.c_str());
}

// Worker thread: touches only its own track's files, so several can run at once. Does not
// log: the export thread reports each track in order.
ExportPipeline::Encoded ExportPipeline::encodeTrack(const std::string& wavPath) const {
    Encoded encoded;
    encoded.mp3Path = mp3PathFor(wavPath);
    const TrackFileCheck check = inspectTrackFile(wavPath);
    if (!check.usable) {
        encoded.message = check.problem;
        return encoded;
    }
    if (!check.warning.empty())
        encoded.warnings.push_back(check.warning);
    const EncodeResult result = encodeFileToMp3(wavPath);
    if (!result.ok()) {
        encoded.message = "encoder failed with exit status " + std::to_string(result.exitStatus) +
                          ": " + result.command +
                          (result.errorOutput.empty() ? "" : "\n  " + result.errorOutput);
        return encoded;
    }
    std::error_code ec;
    if (!fs::is_regular_file(encoded.mp3Path, ec) || fs::file_size(encoded.mp3Path, ec) == 0) {
        encoded.message = "encoder made no MP3: " + result.command;
        return encoded;
    }
    encoded.ok = true;
    return encoded;
}

// Export thread: tags the encoded file and puts it into the library.
void ExportPipeline::finishTrack(const Encoded& encoded, const std::string& artist,
                                 const std::string& album, TrackOutcome& outcome) {
    outcome.mp3Path = encoded.mp3Path;
    outcome.warnings.insert(outcome.warnings.end(), encoded.warnings.begin(),
                            encoded.warnings.end());
    if (!encoded.ok) {
        outcome.message = encoded.message;
        return;
    }
    if (!tagFiles(encoded.mp3Path, artist, album, outcome.title, outcome.number)) {
        outcome.message = "cannot open " + encoded.mp3Path + " to tag it";
        return;
    }
    const LibraryImporter::Result imported = importer.importTrack(
        encoded.mp3Path, artist, album, outcome.title, std::atoi(outcome.number.c_str()));
    if (!imported.ok) {
        outcome.message = "import into the music library failed: " + imported.message;
        return;
    }
    outcome.libraryPath = imported.path;
    outcome.ok = true;
}

TrackOutcome ExportPipeline::convertAndTagAudioFile4(
    const std::string& path, const std::string& artist, const std::string& album,
    const std::string& name, const std::string& number, bool normalise, float recordingPeak) {
    TrackOutcome outcome;
    outcome.wavPath = path;
    outcome.title = name;
    outcome.number = number;
    if (!isCatalinaOrGreater()) {
        legacyConvertAndTagAudioFile4(path, artist, album, name, number, normalise, recordingPeak,
                                      outcome);
        return outcome;
    }
    finishTrack(encodeTrack(path), artist, album, outcome);
    return outcome;
}

int ExportPipeline::legacyConvertAndTagAudioFile4(const std::string& path,
                                                  const std::string& artist,
                                                  const std::string& album, const std::string& name,
                                                  const std::string& number, bool normalise,
                                                  float recordingPeak, TrackOutcome& outcome) {
    outcome.wavPath = path;
    outcome.number = number;
    outcome.title = name.empty() ? "Track " + number : name;
    const std::string trackArtist = artist.empty() ? "Unknown Artist" : artist;
    const std::string trackAlbum = album.empty() ? "Unknown Album" : album;
    // The names go to the library as they are: the importer takes them as values, where the
    // script literal they once went into needed escapedFormOf.

    std::string source = path;
    std::error_code ec;
    if (normalise && fs::exists(path, ec) && fs::is_directory(fs::path(path).parent_path(), ec)) {
        const NormaliseResult normalised = normaliseTrack(path, normalisationGain(recordingPeak));
        if (!normalised.ok) {
            outcome.message = normalised.message;
            return 1;
        }
        source = normalised.path;
    }

    Encoded encoded;
    encoded.mp3Path = mp3PathFor(path);
    const TrackFileCheck check = inspectTrackFile(path);
    if (!check.usable) {
        outcome.message = check.problem;
        return 1;
    }
    if (!check.warning.empty())
        encoded.warnings.push_back(check.warning);
    const EncodeResult result = encodeToMp3(source, encoded.mp3Path);
    if (!result.ok())
        encoded.message = "encoder failed with exit status " + std::to_string(result.exitStatus) +
                          ": " + result.command +
                          (result.errorOutput.empty() ? "" : "\n  " + result.errorOutput);
    encoded.ok = result.ok();
    finishTrack(encoded, trackArtist, trackAlbum, outcome);
    return outcome.ok ? 0 : 1;
}

std::vector<TrackOutcome> ExportPipeline::run(const ExportRequest& request,
                                              ExportNumbering& numbering) {
    const uint32_t offset = numbering.begin(request.artist, request.album);
    auto count = [&] { return request.numRecordedTracks ? request.numRecordedTracks() : 0; };
    // Normalising writes the one "normalized.wav" per track, so that path goes track by track.
    const bool legacy = !isCatalinaOrGreater() || request.normalise;
    unsigned jobs = request.jobs ? request.jobs : std::max(1u, std::thread::hardware_concurrency());
    if (legacy)
        jobs = 1;
    float peak = 0;
    if (legacy && request.normalise)
        peak = request.recordingPeak ? request.recordingPeak()
                                     : peakOfFiles(request.exportFolder, count());

    // Encoders take another track as soon as they are free, however long the track before
    // them is still being finished in order; the export thread picks the results up in order.
    // The longest waiting track goes first, so that no core is left with a long one at the end.
    std::mutex mutex;
    std::condition_variable changed;
    std::map<int, Encoded> encodedTracks;
    std::set<int> started;
    int encodeLimit = 0;
    bool stopping = false;
    auto nextToEncode = [&] {
        int best = 0;
        std::uintmax_t bestSize = 0;
        for (int track = 1; track <= encodeLimit; ++track) {
            if (started.count(track))
                continue;
            std::error_code ec;
            const std::uintmax_t size =
                fs::file_size(trackFileName(request.exportFolder, track), ec);
            if (best == 0 || (!ec && size > bestSize)) {
                best = track;
                bestSize = ec ? 0 : size;
            }
        }
        return best;
    };
    auto worker = [&] {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(
                lock, [&] { return stopping || static_cast<int>(started.size()) < encodeLimit; });
            if (stopping)
                return;
            const int track = nextToEncode();
            started.insert(track);
            lock.unlock();
            Encoded encoded = encodeTrack(trackFileName(request.exportFolder, track));
            lock.lock();
            encodedTracks[track] = std::move(encoded);
            changed.notify_all();
        }
    };
    std::vector<std::thread> workers;
    // Stops and joins the encoders however run() is left, a throwing callback included.
    struct Joiner {
        std::function<void()> stop;
        ~Joiner() { stop(); }
    } joiner{[&] {
        {
            std::lock_guard lock(mutex);
            stopping = true;
        }
        changed.notify_all();
        for (auto& thread : workers) {
            if (thread.joinable())
                thread.join();
        }
    }};
    if (!legacy) {
        for (unsigned j = 0; j < jobs; ++j)
            workers.emplace_back(worker);
    }
    auto takeEncoded = [&](int track, bool again) {
        if (again) // the same track after a failed check: encode it anew, here
            return encodeTrack(trackFileName(request.exportFolder, track));
        std::unique_lock lock(mutex);
        encodeLimit = std::max(encodeLimit, count());
        changed.notify_all();
        changed.wait(lock, [&] { return encodedTracks.count(track) > 0; });
        Encoded encoded = std::move(encodedTracks[track]);
        encodedTracks.erase(track);
        return encoded;
    };

    std::vector<TrackOutcome> outcomes;
    bool again = false;
    for (int i = 1; i <= count(); ++i) {
        TrackOutcome outcome;
        outcome.index = i;
        outcome.number = std::to_string(offset + static_cast<uint32_t>(i));
        outcome.wavPath = trackFileName(request.exportFolder, i);
        outcome.title = static_cast<size_t>(i) <= request.titles.size()
                            ? request.titles[static_cast<size_t>(i) - 1]
                            : std::string();
        if (legacy) {
            legacyConvertAndTagAudioFile4(outcome.wavPath, request.artist, request.album,
                                          outcome.title, outcome.number, request.normalise, peak,
                                          outcome);
        } else {
            finishTrack(takeEncoded(i, again), request.artist, request.album, outcome);
        }
        if (!outcome.ok)
            say("export of track " + std::to_string(i) + " failed: " + outcome.message);

        const int error = importer.probe();
        if (error != 0) {
            say("music library check after conversion failed: err = " + std::to_string(error));
            if (onProbeFailed && onProbeFailed(error)) {
                --i; // the same track again, from its encoding
                again = true;
                continue;
            }
            outcome.ok = false;
            if (outcome.message.empty())
                outcome.message = "the music library " + importer.folder() + " is unavailable";
            outcomes.push_back(outcome);
            if (onTrackDone)
                onTrackDone(outcome, count());
            for (int rest = i + 1; rest <= count(); ++rest) {
                TrackOutcome skipped;
                skipped.index = rest;
                skipped.wavPath = trackFileName(request.exportFolder, rest);
                skipped.number = std::to_string(offset + static_cast<uint32_t>(rest));
                skipped.message = "not exported: the music library is unavailable";
                outcomes.push_back(skipped);
            }
            break;
        }
        again = false;
        outcomes.push_back(outcome);
        if (onTrackDone)
            onTrackDone(outcome, count());
    }
    joiner.stop();
    numbering.finish(static_cast<uint32_t>(std::max(0, count())));
    return outcomes;
}

} // namespace waxline::exporting
