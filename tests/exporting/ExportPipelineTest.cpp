#include "exporting/ExportPipeline.h"

#include "exporting/ExportFolders.h"
#include "exporting/Mp3Encoder.h"
#include "exporting/Normaliser.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace waxline::exporting {
namespace {

namespace fs = std::filesystem;

// A fresh export folder and music library inside a temporary folder.
struct Folders {
    test::TempDir dir;
    std::string exports;
    std::string music;
    explicit Folders(const std::string& exportName = "Exports")
        : exports(dir.file(exportName))
        , music(dir.file("Music")) {
        fs::create_directories(exports);
    }
    std::string track(int n) const { return trackFileName(exports, n); }
    void writeTones(int tracks, double seconds) const {
        for (int i = 1; i <= tracks; ++i)
            ASSERT_TRUE(test::writeToneWav(track(i), seconds, 0.5));
    }
};

ExportRequest requestFor(const Folders& s, const std::string& artist, const std::string& album,
                         std::vector<std::string> titles, int tracks, unsigned jobs = 0) {
    ExportRequest request;
    request.exportFolder = s.exports;
    request.artist = artist;
    request.album = album;
    request.titles = std::move(titles);
    request.numRecordedTracks = [tracks] { return tracks; };
    request.jobs = jobs;
    return request;
}

// One export into `s.music` with a pipeline of its own and no hooks.
std::vector<TrackOutcome> exportOnce(const Folders& s, const ExportRequest& request) {
    const LibraryImporter importer(s.music);
    ExportPipeline pipeline(importer);
    ExportNumbering numbering;
    return pipeline.run(request, numbering);
}

// For failure messages of the tests: the kind and the path of a problem.
std::string shown(const ExportProblem& problem) {
    return std::to_string(static_cast<int>(problem.kind)) + " " + problem.path + " " +
           problem.detail;
}

class ExportEndToEnd : public testing::TestWithParam<unsigned> {};

TEST_P(ExportEndToEnd, TracksReachTheLibraryTaggedAndNumberedAcrossSides) {
    Folders s;
    const double lengths[] = {2.0, 3.1, 1.4};
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(test::writeToneWav(s.track(i + 1), lengths[i], 0.5, 300 + 100 * i));
    const LibraryImporter importer(s.music);
    ExportPipeline pipeline(importer);
    std::vector<std::pair<int, int>> progress;
    pipeline.onTrackDone = [&](const TrackOutcome& o, int total) {
        progress.emplace_back(o.index, total);
    };
    ExportNumbering numbering;

    auto outcomes = pipeline.run(
        requestFor(s, "The Band", "First LP", {"Intro", "Middle", "Outro"}, 3, GetParam()),
        numbering);
    ASSERT_EQ(outcomes.size(), 3u);
    EXPECT_EQ(progress, (std::vector<std::pair<int, int>>{{1, 3}, {2, 3}, {3, 3}}));
    const char* titles[] = {"Intro", "Middle", "Outro"};
    for (int i = 0; i < 3; ++i) {
        const TrackOutcome& o = outcomes[static_cast<size_t>(i)];
        ASSERT_TRUE(o.ok) << shown(o.problem);
        EXPECT_EQ(o.mp3Path, s.exports + "/WXRTTmpFile." + std::to_string(i + 1) + ".mp3");
        const std::string expected =
            s.music + "/The Band/First LP/0" + std::to_string(i + 1) + " " + titles[i] + ".mp3";
        EXPECT_EQ(o.libraryPath, expected);
        EXPECT_NEAR(test::probeDuration(expected), lengths[i], 0.1) << expected;
        const auto tags = test::probeTags(expected);
        EXPECT_EQ(tags.at("title"), titles[i]);
        EXPECT_EQ(tags.at("artist"), "The Band");
        EXPECT_EQ(tags.at("album"), "First LP");
        EXPECT_EQ(tags.at("track"), std::to_string(i + 1));
    }

    // The second side of the same album numbers on.
    fs::remove(s.track(3));
    s.writeTones(2, 1.0);
    outcomes =
        pipeline.run(requestFor(s, "The Band", "First LP", {"Four"}, 2, GetParam()), numbering);
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_EQ(outcomes[0].libraryPath, s.music + "/The Band/First LP/04 Four.mp3");
    EXPECT_EQ(outcomes[1].libraryPath, s.music + "/The Band/First LP/05 Unknown.mp3");
    EXPECT_EQ(test::probeTags(outcomes[1].libraryPath).at("track"), "5");
    EXPECT_EQ(test::probeTags(outcomes[1].libraryPath).at("title"), "Unknown");

    // A new album starts again at 1.
    outcomes =
        pipeline.run(requestFor(s, "The Band", "Second LP", {"New"}, 1, GetParam()), numbering);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].libraryPath, s.music + "/The Band/Second LP/01 New.mp3");
    EXPECT_EQ(test::probeTags(outcomes[0].libraryPath).at("track"), "1");
    EXPECT_EQ(test::filesBelow(s.music).size(), 6u);
}

INSTANTIATE_TEST_SUITE_P(Jobs, ExportEndToEnd, testing::Values(1u, 2u, 3u));

TEST(ExportNumbering, ContinuesOnlyUnderTheSameArtistAndAlbum) {
    ExportNumbering numbering;
    struct Step {
        const char* artist;
        const char* album;
        uint32_t tracks;
        uint32_t expectedOffset;
    };
    const Step steps[] = {
        {"A", "B", 3, 0}, {"A", "B", 4, 3}, // second side numbers on
        {"A", "B", 2, 4},                   // third side: from the second side's own count
        {"A", "C", 5, 0},                   // album changed
        {"X", "C", 1, 0},                   // artist changed
        {"X", "C", 1, 1},
    };
    for (const auto& step : steps) {
        EXPECT_EQ(numbering.begin(step.artist, step.album), step.expectedOffset)
            << step.artist << "/" << step.album;
        numbering.finish(step.tracks);
    }
}

TEST(ExportHostileNames, NothingRunsAndNothingLeavesTheMusicFolder) {
    Folders s("it's \"exports\" $(touch x)");
    const std::string canary = s.dir.file("PWNED");
    s.writeTones(2, 1.0);
    const std::string evil =
        "Don't \"stop\" $(touch " + canary + ") `touch " + canary + "` \\back\\ a/b Ünïcödé";
    const auto outcomes =
        exportOnce(s, requestFor(s, "../../x", "..", {evil, "../../../escape"}, 2));
    ASSERT_EQ(outcomes.size(), 2u);
    for (const auto& o : outcomes) {
        ASSERT_TRUE(o.ok) << shown(o.problem);
        const std::string normal = fs::path(o.libraryPath).lexically_normal().string();
        EXPECT_EQ(normal.rfind(s.music + "/", 0), 0u) << normal;
    }
    EXPECT_FALSE(fs::exists(canary));
    const auto files = test::filesBelow(s.music);
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(fs::path(files[0]).parent_path().string(), "__-..-x/__");
    // The title lands intact in the tag, byte by byte as Latin-1.
    EXPECT_EQ(test::probeTags(outcomes[0].libraryPath).at("title"), test::latin1BytesAsUtf8(evil));
    // Only the two exports, the two music files, the note of the tracks saved and the note that
    // the recording was exported exist; nothing else was made anywhere.
    EXPECT_EQ(test::filesBelow(s.dir.path()).size(), 2u + 2u + 2u + 1u + 1u);
}

TEST(ExportFaults, EncoderMissingFromPathIsReportedForEveryTrack) {
    Folders s;
    s.writeTones(2, 0.5);
    const std::string oldPath = std::getenv("PATH") ? std::getenv("PATH") : "";
    setenv("PATH", s.dir.path().c_str(), 1);
    ASSERT_TRUE(ffmpegProgram().empty());
    const LibraryImporter importer(s.music);
    ExportPipeline pipeline(importer);
    std::vector<int> failures;
    pipeline.onTrackConverted = [&](const TrackOutcome& o) {
        if (!o.ok)
            failures.push_back(o.index);
    };
    ExportNumbering numbering;
    const auto outcomes = pipeline.run(requestFor(s, "A", "B", {"x", "y"}, 2), numbering);
    setenv("PATH", oldPath.c_str(), 1);
    ASSERT_EQ(outcomes.size(), 2u);
    for (const auto& o : outcomes) {
        EXPECT_FALSE(o.ok);
        EXPECT_EQ(o.problem.kind, ExportProblem::Kind::EncoderNotFound) << shown(o.problem);
        EXPECT_EQ(o.problem.status, 127);
        EXPECT_NE(o.problem.command.find("ffmpeg"), std::string::npos) << o.problem.command;
    }
    EXPECT_EQ(failures, (std::vector<int>{1, 2}));
    EXPECT_TRUE(test::filesBelow(s.music).empty());
}

TEST(ExportFaults, EncoderExitStatusIsReported) {
    test::TempDir dir;
    const EncodeResult result = runProgram({"/bin/sh", "-c", "echo broken >&2; exit 3"});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_EQ(result.errorOutput, "broken");
    EXPECT_EQ(runProgram({dir.file("no-such-program")}).exitStatus, 127);
    // Standard input is closed: a program reading it ends at once.
    EXPECT_EQ(runProgram({"/bin/sh", "-c", "cat; exit 0"}).exitStatus, 0);
}

TEST(ExportFaults, EmptyAndTruncatedTracksLoseNoOtherTrack) {
    Folders s;
    ASSERT_TRUE(test::writeToneWav(s.track(1), 1.0, 0.5));
    std::ofstream(s.track(2)).close(); // empty
    ASSERT_TRUE(test::writeToneWav(s.track(3), 2.0, 0.5));
    fs::resize_file(s.track(3), fs::file_size(s.track(3)) / 2); // cut off mid-recording
    std::ofstream(s.track(4)) << "RIFF garbage that is no wave";
    ASSERT_TRUE(test::writeToneWav(s.track(5), 1.0, 0.5));

    const auto outcomes = exportOnce(s, requestFor(s, "A", "B", {}, 5));
    ASSERT_EQ(outcomes.size(), 5u);
    EXPECT_TRUE(outcomes[0].ok);
    EXPECT_FALSE(outcomes[1].ok);
    EXPECT_EQ(outcomes[1].problem.kind, ExportProblem::Kind::TrackFileEmpty);
    EXPECT_EQ(fs::path(outcomes[1].problem.path).filename(), "WXRTTmpFile.2.wav");
    ASSERT_TRUE(outcomes[2].ok) << shown(outcomes[2].problem);
    ASSERT_EQ(outcomes[2].warnings.size(), 1u);
    EXPECT_EQ(outcomes[2].warnings[0].kind, TrackWarning::Kind::Truncated);
    EXPECT_LT(outcomes[2].warnings[0].bytesPresent, outcomes[2].warnings[0].bytesAnnounced);
    EXPECT_NEAR(test::probeDuration(outcomes[2].libraryPath), 1.0, 0.1);
    EXPECT_FALSE(outcomes[3].ok);
    EXPECT_EQ(outcomes[3].problem.kind, ExportProblem::Kind::TrackFileUnreadable);
    EXPECT_EQ(fs::path(outcomes[3].problem.path).filename(), "WXRTTmpFile.4.wav");
    EXPECT_TRUE(outcomes[4].ok);
    EXPECT_EQ(test::filesBelow(s.music),
              (std::vector<std::string>{"A/B/01 Unknown.mp3", "A/B/03 Unknown.mp3",
                                        "A/B/05 Unknown.mp3"}));
}

TEST(ExportFaults, UnwritableLibraryFailsTheProbeAndStopsWhenNotRetried) {
    Folders s;
    std::ofstream(s.dir.file("plain-file")) << "x";
    s.writeTones(2, 0.5);
    const LibraryImporter importer(s.dir.file("plain-file/Music"));
    EXPECT_EQ(importer.probe(), -1753);
    ExportPipeline pipeline(importer);
    std::vector<int> errors;
    pipeline.onProbeFailed = [&](int error) {
        errors.push_back(error);
        return errors.size() < 3; // the user retries twice, then gives up
    };
    ExportNumbering numbering;
    const auto outcomes = pipeline.run(requestFor(s, "A", "B", {}, 2), numbering);
    EXPECT_EQ(errors, (std::vector<int>{-1753, -1753, -1753}));
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_FALSE(outcomes[0].ok);
    EXPECT_TRUE(outcomes[0].problem.isImport()) << shown(outcomes[0].problem);
    EXPECT_FALSE(outcomes[1].ok);
    EXPECT_EQ(outcomes[1].problem.kind, ExportProblem::Kind::NotExported);
    // The tracks themselves are still there to export again.
    EXPECT_TRUE(fs::exists(s.track(1)));
    EXPECT_TRUE(fs::exists(s.track(2)));
}

TEST(ExportHooks, AFailedLibraryCheckDoesTheSameTrackAgainAndTheEndIsReported) {
    Folders s;
    s.writeTones(2, 0.5);
    // The library sits below a plain file until the "user" clears it at the alert.
    const std::string blocker = s.dir.file("Shelf");
    std::ofstream(blocker) << "x";
    const LibraryImporter importer(blocker + "/Music");
    ExportPipeline pipeline(importer);
    std::vector<std::string> events;
    pipeline.onTrackConverted = [&](const TrackOutcome& o) {
        events.push_back("converted " + std::to_string(o.index) + (o.ok ? " ok" : " failed"));
    };
    pipeline.onProbeFailed = [&](int error) {
        events.push_back("probe " + std::to_string(error));
        fs::remove(blocker);
        return true;
    };
    pipeline.onTrackDone = [&](const TrackOutcome& o, int total) {
        events.push_back("done " + std::to_string(o.index) + "/" + std::to_string(total));
    };
    ExportNumbering numbering;
    size_t finishedWith = 0;
    uint32_t offsetAtEnd = 99;
    pipeline.onFinished = [&](const std::vector<TrackOutcome>& outcomes) {
        events.push_back("finished");
        finishedWith = outcomes.size();
        // The numbering already holds this export's count: a next side numbers on from it.
        ExportNumbering copy = numbering;
        offsetAtEnd = copy.begin("A", "B");
    };
    const auto outcomes = pipeline.run(requestFor(s, "A", "B", {"x", "y"}, 2), numbering);
    EXPECT_EQ(events,
              (std::vector<std::string>{"converted 1 failed", "probe -1753", "converted 1 ok",
                                        "done 1/2", "converted 2 ok", "done 2/2", "finished"}));
    EXPECT_EQ(finishedWith, 2u);
    EXPECT_EQ(offsetAtEnd, 2u);
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_TRUE(outcomes[0].ok) << shown(outcomes[0].problem);
    EXPECT_TRUE(outcomes[1].ok) << shown(outcomes[1].problem);
    EXPECT_EQ(test::filesBelow(blocker + "/Music"),
              (std::vector<std::string>{"A/B/01 x.mp3", "A/B/02 y.mp3"}));
}

// On the older path missing names come from the caller's texts, into tags and library alike.
TEST(ExportUnknownNames, TheCallersTextsNameWhatIsMissing) {
    Folders s;
    s.writeTones(2, 0.5);
    ExportRequest request = requestFor(s, "", "", {"", "Zwei"}, 2);
    request.normalise = true;
    request.text = [](const std::string& key) -> std::string {
        if (key == "IDS_UNKNOWN_TRACK")
            return "Stück %1 von Seite A";
        if (key == "IDS_UNKNOWN_ARTIST")
            return "Unbekannt";
        return key == "IDS_UNKNOWN_ALBUM" ? "Ohne Titel" : "?";
    };
    const auto outcomes = exportOnce(s, request);
    ASSERT_EQ(outcomes.size(), 2u);
    ASSERT_TRUE(outcomes[0].ok) << shown(outcomes[0].problem);
    ASSERT_TRUE(outcomes[1].ok) << shown(outcomes[1].problem);
    EXPECT_EQ(outcomes[0].title, "Stück 1 von Seite A");
    EXPECT_EQ(test::filesBelow(s.music),
              (std::vector<std::string>{"Unbekannt/Ohne Titel/01 Stück 1 von Seite A.mp3",
                                        "Unbekannt/Ohne Titel/02 Zwei.mp3"}));
    const auto tags = test::probeTags(outcomes[0].libraryPath);
    EXPECT_EQ(tags.at("title"), test::latin1BytesAsUtf8("Stück 1 von Seite A"));
    EXPECT_EQ(tags.at("artist"), "Unbekannt");
    EXPECT_EQ(tags.at("album"), "Ohne Titel");
}

// A stereo file whose largest sample is exactly `peak` (a 16-bit value), at one spot.
void writePeakFile(const std::string& path, float peak) {
    std::vector<float> left = test::sine(440, peak * 0.6, 44100, 22050);
    std::vector<float> right = test::sine(660, peak * 0.3, 44100, 22050);
    left[1000] = peak;
    right[2000] = -peak;
    ASSERT_TRUE(test::writeStereoWav(path, left, right));
}

TEST(Normalisation, PeakOfTheRecordingLandsAtNinetySevenPercent) {
    struct Case {
        float peak;
        float gain;
        double expected;
    };
    const Case cases[] = {
        {0.5f, 0.97f / 0.5f, 0.97}, {0.25f, 0.97f / 0.5f, 0.485}, {0.125f, 1.0f, 0.125}};
    for (const auto& c : cases) {
        test::TempDir dir;
        writePeakFile(dir.file("t.wav"), c.peak);
        const NormaliseResult result = normaliseTrack(dir.file("t.wav"), c.gain);
        ASSERT_TRUE(result.ok) << shown(result.problem);
        EXPECT_EQ(result.path, dir.file("normalized.wav"));
        EXPECT_NEAR(test::filePeak(result.path), c.expected, 1e-6);
        EXPECT_EQ(test::soundInfo(result.path).frames, 22050);
    }
    EXPECT_FLOAT_EQ(normalisationGain(0.5f), 1.94f);
    EXPECT_FLOAT_EQ(normalisationGain(0.0f), 1.0f);
}

TEST(Normalisation, EveryTrackGetsTheGainOfTheWholeRecording) {
    Folders s;
    writePeakFile(s.track(1), 0.5f);
    writePeakFile(s.track(2), 0.25f);
    ExportRequest request = requestFor(s, "A", "B", {"loud", "soft"}, 2);
    request.normalise = true;
    const auto outcomes = exportOnce(s, request);
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_TRUE(outcomes[0].ok) << shown(outcomes[0].problem);
    EXPECT_TRUE(outcomes[1].ok) << shown(outcomes[1].problem);
    // "normalized.wav" is rewritten per track: it now holds the second, softer one.
    EXPECT_NEAR(test::filePeak(s.exports + "/normalized.wav"), 0.485, 1e-4);
    // The MP3 is made from the normalised audio: without the gain of 1.94 its peak would stay
    // near 0.5 (the lone full peak sample is softened by the encoder, the tone is not).
    const double mp3Peak = test::filePeak(s.exports + "/WXRTTmpFile.1.mp3");
    EXPECT_GT(mp3Peak, 0.75);
    EXPECT_LT(mp3Peak, 1.0);
}

} // namespace
} // namespace waxline::exporting
