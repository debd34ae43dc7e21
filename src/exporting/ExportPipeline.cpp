#include "exporting/ExportPipeline.h"

#include "exporting/EarlyEncoder.h"
#include "exporting/ExportFolders.h"
#include "exporting/Mp3Encoder.h"
#include "exporting/Normaliser.h"
#include "exporting/TrackFileCheck.h"
#include "tagging/TaglibTagger.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <thread>

namespace waxline::exporting {

namespace fs = std::filesystem;

namespace {

// What a track costs a worker beyond its audio, in bytes of track file: the encoder's start
// and the tagging take about as long as encoding a sixth of a second of audio does.
constexpr uint64_t kCostPerTrack = 2'500'000;

} // namespace

bool tagFiles(const std::string& path, const std::string& artist, const std::string& album,
              const std::string& name, const std::string& number, TagText text) {
    TaglibTagger tagger(path.c_str(), text);
    if (!tagger.isValid())
        return false;
    tagger.setSongTitle(name.c_str());
    tagger.setArtist(artist.c_str());
    tagger.setAlbumName(album.c_str());
    tagger.setTrackNumber(number.c_str());
    return true;
}

// Worker thread: touches only its own track's files, so several can run at once.
EncodedTrack encodeAndTag(const std::string& wavPath, const TrackNames& names,
                          const std::string& number, const std::string& source) {
    EncodedTrack encoded;
    encoded.mp3Path = mp3PathFor(wavPath);
    const TrackFileCheck check = inspectTrackFile(wavPath);
    if (!check.usable) {
        encoded.problem = check.problem;
        return encoded;
    }
    if (check.warning)
        encoded.warnings.push_back(*check.warning);
    EncodeResult result;
    if (source.empty() && takeEarlyMp3(wavPath, encoded.mp3Path)) {
        encoded.early = true;
        result.exitStatus = 0;
    } else {
        result = encodeToMp3(source.empty() ? wavPath : source, encoded.mp3Path);
    }
    if (!result.ok()) {
        encoded.problem = encoderProblem(result);
        return encoded;
    }
    std::error_code ec;
    if (!fs::is_regular_file(encoded.mp3Path, ec) || fs::file_size(encoded.mp3Path, ec) == 0) {
        encoded.problem = {
            ExportProblem::Kind::EncoderMadeNoMp3, encoded.mp3Path, {}, result.command};
        return encoded;
    }
    if (!tagFiles(encoded.mp3Path, names.artist, names.album, names.title, number, names.text))
        encoded.problem = {ExportProblem::Kind::CannotTag, encoded.mp3Path};
    return encoded;
}

ExportPipeline::ExportPipeline(const LibraryImporter& importer)
    : importer(importer) {}

// Export thread: puts the tagged MP3 into the library.
void ExportPipeline::importEncoded(const EncodedTrack& encoded, const TrackNames& names,
                                   TrackOutcome& outcome) const {
    outcome.mp3Path = encoded.mp3Path;
    outcome.encodedEarly = encoded.early;
    outcome.warnings.insert(outcome.warnings.end(), encoded.warnings.begin(),
                            encoded.warnings.end());
    if (!encoded.ok()) {
        outcome.problem = encoded.problem;
        return;
    }
    const LibraryImporter::Result imported = importer.importTrack(
        encoded.mp3Path, names.artist, names.album, names.title, std::atoi(outcome.number.c_str()));
    if (!imported.ok) {
        outcome.problem = imported.problem;
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
    const TrackNames names{artist, album, name};
    importEncoded(encodeAndTag(path, names, number), names, outcome);
    return outcome;
}

namespace {

// The older way's encoding half: names filled in, the track normalised first when asked.
EncodedTrack legacyEncode(const std::string& path, const TrackNames& names,
                          const std::string& number, bool normalise, float recordingPeak) {
    std::string source = path;
    std::error_code ec;
    if (normalise && fs::exists(path, ec) && fs::is_directory(fs::path(path).parent_path(), ec)) {
        const NormaliseResult normalised = normaliseTrack(path, normalisationGain(recordingPeak));
        if (!normalised.ok) {
            EncodedTrack failed;
            failed.mp3Path = mp3PathFor(path);
            failed.problem = normalised.problem;
            return failed;
        }
        source = normalised.path;
    }
    return encodeAndTag(path, names, number, source);
}

} // namespace

int ExportPipeline::legacyConvertAndTagAudioFile4(const std::string& path,
                                                  const std::string& artist,
                                                  const std::string& album, const std::string& name,
                                                  const std::string& number, bool normalise,
                                                  float recordingPeak, TrackOutcome& outcome,
                                                  const TextLookup& text) {
    // The names go to the library as they are: the importer takes them as values, where the
    // script literal they once went into needed escapedFormOf.
    const TrackNames names = namesOrUnknown(text, artist, album, name, number);
    outcome.wavPath = path;
    outcome.number = number;
    outcome.title = names.title;
    importEncoded(legacyEncode(path, names, number, normalise, recordingPeak), names, outcome);
    return outcome.ok ? 0 : 1;
}

std::vector<TrackOutcome> ExportPipeline::run(const ExportRequest& request,
                                              ExportNumbering& numbering) {
    const uint32_t offset = request.numberOffset ? *request.numberOffset
                                                 : numbering.begin(request.artist, request.album);
    // Read once here; the workers only look into it.
    const std::map<int, std::string> saved =
        request.skipSaved ? savedTracks(request.exportFolder) : std::map<int, std::string>{};
    auto count = [&] { return request.numRecordedTracks ? request.numRecordedTracks() : 0; };
    auto numberOf = [&](int i) {
        const auto at = static_cast<size_t>(i) - 1;
        if (at < request.trackNumbers.size() && !request.trackNumbers[at].empty())
            return request.trackNumbers[at];
        return std::to_string(offset + static_cast<uint32_t>(i));
    };
    auto namesOf = [&](int i) {
        const std::string title = static_cast<size_t>(i) <= request.titles.size()
                                      ? request.titles[static_cast<size_t>(i) - 1]
                                      : std::string();
        return TrackNames{request.artist, request.album, title};
    };
    // Normalising writes the one "normalized.wav" per track, so that path goes track by track
    // on one worker, with the missing names filled in.
    const bool legacy = !isCatalinaOrGreater() || request.normalise;
    const unsigned jobs =
        legacy ? 1u
               : (request.jobs ? request.jobs : std::max(1u, std::thread::hardware_concurrency()));
    float peak = 0;
    if (legacy && request.normalise)
        peak = request.recordingPeak ? request.recordingPeak()
                                     : peakOfFiles(request.exportFolder, count());
    auto trackNames = [&](int i) {
        TrackNames names = namesOf(i);
        if (legacy)
            names =
                namesOrUnknown(request.text, names.artist, names.album, names.title, numberOf(i));
        names.text = request.tagText;
        return names;
    };

    EncoderPool::Cost cost;
    if (!legacy) {
        cost = [&](int track) {
            if (saved.count(track))
                return uint64_t(0);
            std::error_code ec;
            const uint64_t size = fs::file_size(trackFileName(request.exportFolder, track), ec);
            return (ec ? 0 : size) + kCostPerTrack;
        };
    }
    EncoderPool pool(
        jobs,
        [&](int track) {
            if (saved.count(track))
                return EncodedTrack{};
            const std::string wav = trackFileName(request.exportFolder, track);
            if (request.beforeEncoding)
                request.beforeEncoding(track);
            EncodedTrack encoded = legacy ? legacyEncode(wav, trackNames(track), numberOf(track),
                                                         request.normalise, peak)
                                          : encodeAndTag(wav, trackNames(track), numberOf(track));
            const auto at = static_cast<size_t>(track) - 1;
            if (!encoded.problem.failed() && at < request.releaseTags.size() &&
                !request.releaseTags[at].empty() &&
                !writeReleaseTags(encoded.mp3Path, request.releaseTags[at], request.tagText))
                encoded.problem = {ExportProblem::Kind::CannotTag, encoded.mp3Path};
            return encoded;
        },
        cost);

    // Which tracks the background encoder had finished: the normalised path encodes the
    // normalised copy, so it takes none.
    std::vector<int> ready;
    if (!legacy)
        for (int i = 1; i <= count(); ++i)
            if (earlyMp3Ready(trackFileName(request.exportFolder, i)))
                ready.push_back(i);
    if (onStarted)
        onStarted(ready, count());

    std::vector<TrackOutcome> outcomes;
    for (int i = 1; i <= count(); ++i) {
        pool.offer(count());
        TrackOutcome outcome;
        outcome.index = i;
        outcome.number = numberOf(i);
        outcome.wavPath = trackFileName(request.exportFolder, i);
        const TrackNames names = trackNames(i);
        outcome.title = names.title;
        if (const auto before = saved.find(i); before != saved.end()) {
            outcome.ok = outcome.savedBefore = true;
            outcome.libraryPath = before->second;
            outcomes.push_back(outcome);
            if (onTrackDone)
                onTrackDone(outcome, count());
            continue;
        }
        outcome.readyBeforeExport = std::binary_search(ready.begin(), ready.end(), i);
        importEncoded(pool.take(i), names, outcome);
        if (outcome.ok)
            noteTrackSaved(request.exportFolder, i, outcome.libraryPath);
        if (onTrackConverted)
            onTrackConverted(outcome);

        if (const int error = importer.probe(); error != 0) {
            if (onProbeFailed && onProbeFailed(error)) {
                pool.encodeAgain(i);
                --i;
                continue;
            }
            outcome.ok = false;
            if (!outcome.problem.failed())
                outcome.problem = {ExportProblem::Kind::LibraryUnavailable, importer.folder()};
            outcomes.push_back(outcome);
            if (onTrackDone)
                onTrackDone(outcome, count());
            for (int rest = i + 1; rest <= count(); ++rest) {
                TrackOutcome skipped;
                skipped.index = rest;
                skipped.wavPath = trackFileName(request.exportFolder, rest);
                skipped.number = numberOf(rest);
                skipped.problem.kind = ExportProblem::Kind::NotExported;
                outcomes.push_back(skipped);
            }
            break;
        }
        outcomes.push_back(outcome);
        if (onTrackDone)
            onTrackDone(outcome, count());
    }
    pool.stop();
    if (!outcomes.empty() &&
        std::all_of(outcomes.begin(), outcomes.end(), [](const TrackOutcome& o) { return o.ok; }))
        markExported(request.exportFolder);
    if (!request.numberOffset)
        numbering.finish(static_cast<uint32_t>(std::max(0, count())));
    if (onFinished)
        onFinished(outcomes);
    return outcomes;
}

} // namespace waxline::exporting
