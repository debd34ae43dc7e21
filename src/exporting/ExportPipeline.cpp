#include "exporting/ExportPipeline.h"

#include "exporting/EarlyEncoder.h"
#include "exporting/ExportFolders.h"
#include "exporting/HumOfSide.h"
#include "exporting/Mp3Encoder.h"
#include "exporting/Normaliser.h"
#include "exporting/SideSheets.h"
#include "exporting/TrackAudio.h"
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

namespace {

std::string cleanedCopyPath(const std::string& wavPath) {
    return fs::path(wavPath).replace_extension("cleaned.wav").string();
}

// The encoded file is there and not empty, or the problem that says it is not.
ExportProblem madeFile(const std::string& path, const EncodeResult& result) {
    if (!result.ok())
        return encoderProblem(result);
    std::error_code ec;
    if (!fs::is_regular_file(path, ec) || fs::file_size(path, ec) == 0)
        return {ExportProblem::Kind::EncoderMadeNoMp3, path, {}, result.command};
    return {};
}

} // namespace

// Worker thread: touches only its own track's files, so several can run at once.
EncodedTrack encodeAndTag(const std::string& wavPath, const TrackNames& names,
                          const std::string& number, const std::string& source,
                          const ExportChoices& choices) {
    EncodedTrack encoded;
    const std::vector<const EncoderDescription*> encodings = encodingsOf(choices.format);
    encoded.mp3Path = encodedPathFor(wavPath, *encodings.front());
    if (encodings.back()->lossless)
        encoded.flacPath = encodedPathFor(wavPath, *encodings.back());
    const TrackFileCheck check = inspectTrackFile(wavPath);
    if (!check.usable) {
        encoded.problem = check.problem;
        return encoded;
    }
    if (check.warning)
        encoded.warnings.push_back(*check.warning);
    const std::string input = source.empty() ? wavPath : source;

    // The track as recorded, and the cleaned copy the MP3 is made from when cleaning is asked.
    TrackAudio recorded, cleaned;
    const std::string cleanedPath = cleanedCopyPath(wavPath);
    if (choices.clean.any() || choices.loudness) {
        recorded = readTrackAudio(input);
        if (!recorded.error.empty()) {
            encoded.problem = {ExportProblem::Kind::CleaningFailed, input, recorded.error};
            return encoded;
        }
    }
    if (choices.clean.any()) {
        cleaned = recorded;
        encoded.cleaning =
            restoration::cleanAudio(cleaned.samples, cleaned.channels, cleaned.rate, choices.clean,
                                    choices.sideHum ? &*choices.sideHum : nullptr);
        if (!writeTrackAudio(cleanedPath, cleaned)) {
            encoded.problem = {ExportProblem::Kind::CleaningFailed, cleanedPath, cleaned.error};
            std::error_code ec;
            fs::remove(cleanedPath, ec);
            return encoded;
        }
    }

    for (const EncoderDescription* encoding : encodings) {
        const std::string output = encodedPathFor(wavPath, *encoding);
        const bool fromCleaned = choices.clean.any() && (!encoding->lossless || choices.cleanFlac);
        EncodeResult result;
        if (!encoding->lossless && !fromCleaned && source.empty() &&
            takeEarlyMp3(wavPath, output)) {
            encoded.early = true;
            result.exitStatus = 0;
        } else {
            result = encodeFile(fromCleaned ? cleanedPath : input, output, *encoding);
        }
        encoded.problem = madeFile(output, result);
        if (!encoded.ok())
            break;
        if (!tagFiles(output, names.artist, names.album, names.title, number, names.text)) {
            encoded.problem = {ExportProblem::Kind::CannotTag, output};
            break;
        }
        if (choices.loudness) {
            const TrackAudio& heard = fromCleaned ? cleaned : recorded;
            encoded.loudness.push_back(measureLoudness(heard.samples, heard.channels, heard.rate));
            if (!writeReplayGain(output, encoded.loudness.back())) {
                encoded.problem = {ExportProblem::Kind::CannotTag, output};
                break;
            }
        }
    }
    std::error_code ec;
    fs::remove(cleanedPath, ec);
    return encoded;
}

ExportPipeline::ExportPipeline(const LibraryImporter& importer)
    : importer(importer) {}

// Export thread: puts the tagged MP3 into the library.
void ExportPipeline::importEncoded(const EncodedTrack& encoded, const TrackNames& names,
                                   TrackOutcome& outcome) const {
    outcome.mp3Path = encoded.mp3Path;
    outcome.flacPath = encoded.flacPath;
    outcome.loudness = encoded.loudness;
    outcome.cleaning = encoded.cleaning;
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
    if (!encoded.flacPath.empty() && encoded.flacPath != encoded.mp3Path) {
        const LibraryImporter::Result archived =
            importer.importTrack(encoded.flacPath, names.artist, names.album, names.title,
                                 std::atoi(outcome.number.c_str()));
        if (!archived.ok) {
            outcome.problem = archived.problem;
            return;
        }
        outcome.flacLibraryPath = archived.path;
    } else if (!encoded.flacPath.empty()) {
        outcome.flacLibraryPath = imported.path;
    }
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
                          const std::string& number, bool normalise, float recordingPeak,
                          const ExportChoices& choices = {}) {
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
    return encodeAndTag(path, names, number, source, choices);
}

// The side's loudness over every track that got into the library, written beside each
// track's own into the library files (per kind of file: the MP3s may be cleaned, the FLACs not).
void tagSideLoudness(const std::vector<TrackOutcome>& outcomes) {
    for (size_t file = 0; file < 2; ++file) {
        std::vector<const TrackLoudness*> side;
        double peak = 0;
        for (const TrackOutcome& o : outcomes)
            if (o.ok && !o.savedBefore && file < o.loudness.size()) {
                side.push_back(&o.loudness[file]);
                peak = std::max(peak, o.loudness[file].peak);
            }
        const std::optional<double> loudness = combinedLoudness(side);
        if (!loudness)
            continue;
        for (const TrackOutcome& o : outcomes)
            if (o.ok && !o.savedBefore && file < o.loudness.size())
                writeReplayGain(file == 0 ? o.libraryPath : o.flacLibraryPath, o.loudness[file],
                                loudness, peak);
    }
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

    ExportChoices choices = request.choices;
    if (choices.clean.hum != restoration::HumChoice::Off && !choices.sideHum)
        choices.sideHum = humOfSide(request.exportFolder, count(), choices.clean.hum);

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
            EncodedTrack encoded =
                legacy ? legacyEncode(wav, trackNames(track), numberOf(track), request.normalise,
                                      peak, choices)
                       : encodeAndTag(wav, trackNames(track), numberOf(track), {}, choices);
            const auto at = static_cast<size_t>(track) - 1;
            if (!encoded.problem.failed() && at < request.releaseTags.size() &&
                !request.releaseTags[at].empty()) {
                for (const std::string& path : {encoded.mp3Path, encoded.flacPath})
                    if (!path.empty() &&
                        !writeReleaseTags(path, request.releaseTags[at], request.tagText))
                        encoded.problem = {ExportProblem::Kind::CannotTag, path};
            }
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
    if (request.choices.loudness)
        tagSideLoudness(outcomes);
    if (request.choices.sheets)
        writeSideSheets(outcomes, request.artist, request.album);
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
