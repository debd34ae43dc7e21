#include "exporting/ExportPipeline.h"

#include "exporting/ExportFolders.h"
#include "exporting/Mp3Encoder.h"
#include "exporting/SideSheets.h"
#include "exporting/TrackLoudness.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"
#include "tagging/FlacCover.h"

#include <gtest/gtest.h>
#include <libcue.h>
#include <taglib/flacfile.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace waxline::exporting {
namespace {

namespace fs = std::filesystem;

// The hex MD5 of the samples as ffmpeg decodes them from `path` to 16-bit little-endian PCM.
std::string pcmMd5(const std::string& path) {
    std::string out;
    test::runCommand("ffmpeg -v error -i " + test::shellQuote(path) +
                         " -map 0:a -c:a pcm_s16le -f md5 -",
                     out, false);
    return out.substr(out.find('=') + 1, 32);
}

std::string headerMd5(const std::string& flacPath) {
    TagLib::FLAC::File file(flacPath.c_str());
    std::string hex;
    const TagLib::ByteVector md5 = file.audioProperties()->signature();
    for (unsigned i = 0; i < md5.size(); ++i) {
        char two[3];
        std::snprintf(two, sizeof two, "%02x", static_cast<unsigned char>(md5[i]));
        hex += two;
    }
    return hex;
}

TEST(ArchiveExport, EachFormatReachesTheLibraryTaggedAndTheFlacHoldsTheRecording) {
    const struct {
        const char* name;
        ExportFormat format;
        bool clean;
        bool cleanFlac;
        std::vector<std::string> files; // in the album folder, sheets included
        bool flacIsRecording;
    } rows[] = {
        {"MP3 alone",
         ExportFormat::Mp3,
         false,
         false,
         {"01 One.mp3", "01-02 Album.cue", "01-02 Album.txt", "02 Two.mp3"},
         false},
        {"FLAC alone",
         ExportFormat::Flac,
         false,
         false,
         {"01 One.flac", "01-02 Album.cue", "01-02 Album.txt", "02 Two.flac"},
         true},
        {"both, MP3 cleaned",
         ExportFormat::Both,
         true,
         false,
         {"01 One.flac", "01 One.mp3", "01-02 Album.cue", "01-02 Album.txt", "02 Two.flac",
          "02 Two.mp3"},
         true},
        {"both, FLAC cleaned too",
         ExportFormat::Both,
         true,
         true,
         {"01 One.flac", "01 One.mp3", "01-02 Album.cue", "01-02 Album.txt", "02 Two.flac",
          "02 Two.mp3"},
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        test::TempDir dir;
        const std::string exports = dir.file("Exports"), music = dir.file("Music");
        fs::create_directories(exports);
        // A tone with clicks on it, so that cleaning changes the samples.
        for (int t = 1; t <= 2; ++t) {
            std::vector<float> tone = test::sine(330.0 * t, 0.3, 44100, 44100 * 2);
            for (size_t at = 5000; at < tone.size(); at += 9000)
                tone[at] += 0.5f;
            ASSERT_TRUE(test::writeStereoWav(trackFileName(exports, t), tone, tone));
        }
        ExportRequest request;
        request.exportFolder = exports;
        request.artist = "Artist";
        request.album = "Album";
        request.titles = {"One", "Two"};
        request.numRecordedTracks = [] { return 2; };
        request.choices.format = row.format;
        request.choices.clean.clicks = row.clean;
        request.choices.cleanFlac = row.cleanFlac;
        request.choices.loudness = true;
        request.choices.sheets = true;
        const LibraryImporter importer(music);
        ExportPipeline pipeline(importer);
        ExportNumbering numbering;
        const auto outcomes = pipeline.run(request, numbering);
        ASSERT_EQ(outcomes.size(), 2u);
        for (const auto& o : outcomes)
            ASSERT_TRUE(o.ok) << static_cast<int>(o.problem.kind) << " " << o.problem.path << " "
                              << o.problem.detail;
        EXPECT_EQ(test::filesBelow(music + "/Artist/Album"), row.files);

        for (const auto& o : outcomes) {
            for (const std::string& made : {o.libraryPath, o.flacLibraryPath}) {
                if (made.empty())
                    continue;
                auto tags = test::probeTags(made);
                EXPECT_EQ(tags["title"], o.title);
                EXPECT_EQ(tags["artist"], "Artist");
                EXPECT_EQ(tags["album"], "Album");
                EXPECT_EQ(tags["track"], o.number);
                EXPECT_FALSE(tags["replaygain_track_gain"].empty()) << made;
                EXPECT_FALSE(tags["replaygain_album_gain"].empty()) << made;
            }
            if (o.flacLibraryPath.empty())
                continue;
            const std::string recording = pcmMd5(o.wavPath);
            EXPECT_EQ(pcmMd5(o.flacLibraryPath) == recording, row.flacIsRecording);
            EXPECT_EQ(headerMd5(o.flacLibraryPath), pcmMd5(o.flacLibraryPath));
            EXPECT_EQ(test::decodedPcm(o.flacLibraryPath) == test::decodedPcm(o.wavPath),
                      row.flacIsRecording);
        }
        // The track files stay as recorded, and no cleaned copy is left behind.
        EXPECT_EQ(test::filesBelow(exports).size(), 2u + 2u * encodingsOf(row.format).size() +
                                                        1u /* the saved-tracks note */ +
                                                        1u /* the exported mark */);
    }
}

TEST(ArchiveExport, LoudnessOfTheEbuTestSignals) {
    // EBU Tech 3341's first signals: a 1 kHz sine in both channels reads as its level in dBFS,
    // and quiet stretches either side fall below the relative gate.
    const struct {
        const char* name;
        std::vector<std::pair<double, double>> parts; // (dBFS, seconds)
        double lufs;
    } rows[] = {
        {"-23 dBFS for 20 s", {{-23, 20}}, -23},
        {"-33 dBFS for 20 s", {{-33, 20}}, -33},
        {"-36, -23, -36 dBFS for 10, 60, 10 s", {{-36, 10}, {-23, 60}, {-36, 10}}, -23},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<float> stereo;
        for (auto [level, seconds] : row.parts) {
            const auto tone = test::sine(1000, std::pow(10, level / 20), 48000,
                                         static_cast<size_t>(seconds * 48000));
            for (float v : tone)
                stereo.insert(stereo.end(), {v, v});
        }
        const TrackLoudness measured = measureLoudness(stereo, 2, 48000);
        ASSERT_TRUE(measured.measured());
        EXPECT_NEAR(measured.integrated, row.lufs, 0.1);
        char gain[32];
        std::snprintf(gain, sizeof gain, "%.2f dB", -18 - measured.integrated);
        EXPECT_EQ(replayGainText(measured.integrated), gain);
    }
}

TEST(ArchiveExport, SheetsReadBackWithTheirTitlesFilesAndTimes) {
    const struct {
        const char* name;
        std::vector<SheetTrack> tracks;
    } rows[] = {
        {"two tracks",
         {{"/m/A/B/01 One.flac", "1", "One", 61.5}, {"/m/A/B/02 Two.flac", "2", "Two", 3}}},
        {"a quote in a title", {{"/m/A/B/05 Say.mp3", "5", "Say \"Hi\"", 10.25}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string cue = cueSheet(row.tracks, "The Artist", "The Album");
        Cd* cd = cue_parse_string(cue.c_str());
        ASSERT_NE(cd, nullptr) << cue;
        ASSERT_EQ(cd_get_ntrack(cd), static_cast<int>(row.tracks.size()));
        std::istringstream labels(labelSheet(row.tracks));
        double side = 0;
        for (size_t i = 0; i < row.tracks.size(); ++i) {
            Track* track = cd_get_track(cd, static_cast<int>(i) + 1);
            EXPECT_EQ(std::string(track_get_filename(track)),
                      fs::path(row.tracks[i].file).filename().string());
            std::string title = row.tracks[i].title;
            std::replace(title.begin(), title.end(), '"', '\'');
            EXPECT_EQ(std::string(cdtext_get(PTI_TITLE, track_get_cdtext(track))), title);
            std::string line;
            ASSERT_TRUE(std::getline(labels, line));
            double start = 0, end = 0;
            char text[64] = {};
            ASSERT_EQ(std::sscanf(line.c_str(), "%lf\t%lf\t%63[^\n]", &start, &end, text), 3);
            EXPECT_DOUBLE_EQ(start, side);
            EXPECT_DOUBLE_EQ(end, side + row.tracks[i].seconds);
            EXPECT_EQ(std::string(text), row.tracks[i].title);
            side += row.tracks[i].seconds;
        }
        cd_delete(cd);
    }
}

TEST(ArchiveExport, AFlacCarriesItsFrontCover) {
    const struct {
        const char* name;
        std::string image;
        std::string type;
        bool stored;
    } rows[] = {
        {"a PNG", std::string("\x89PNG\r\n\x1a\n", 8) + std::string(100, 'x'), "image/png", true},
        {"a JPEG", std::string("\xff\xd8\xff\xe0", 4) + std::string(3000, 'y'), "image/jpeg", true},
        {"nothing", "", "image/png", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        test::TempDir dir;
        const std::string wav = dir.file("t.wav"), flac = dir.file("t.flac");
        ASSERT_TRUE(test::writeToneWav(wav, 0.5, 0.3));
        ASSERT_TRUE(encodeFile(wav, flac, flacEncoding()).ok());
        EXPECT_EQ(setFlacFrontCover(flac, row.image, row.type), row.stored);
        const auto [bytes, type] = flacFrontCover(flac);
        EXPECT_EQ(bytes, row.stored ? row.image : "");
        EXPECT_EQ(type, row.stored ? row.type : "");
        EXPECT_EQ(test::decodedPcm(flac), test::decodedPcm(wav));
    }
}

} // namespace
} // namespace waxline::exporting
