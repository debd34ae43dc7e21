#include "app/AlbumLookup.h"

#include "app/CaptureCalls.h"
#include "app/FakePanelViews.h"
#include "app/PanelMachine.h"
#include "demoside/DemoSide.h"
#include "lookup/KeptNames.h"
#include "support/FakeAlerts.h"
#include "support/FakeCapture.h"
#include "support/MediaFiles.h"
#include "support/ReplayServer.h"
#include "util/TrackFileNames.h"

#include <QListWidget>
#include <QTest>

#include <sndfile.h>

#include <gtest/gtest.h>

#include <fstream>

namespace {

using namespace waxline;

const char* const kRelease = "7e57ab1e-0000-4000-8000-00000000a1b2";

// A plain demo side of four tracks recorded as two files (the live split in the first gap
// only), and a release listing it as side B after a side A of three other tracks.
struct Side {
    test::TempDir dir;
    test::FakeCapture capture = test::captureIn(dir.path());
    Side() {
        demoside::DemoSideOptions o;
        o.tracks = 4;
        o.seed = 3;
        demoside::DemoSideGenerator generator(o);
        const auto layout = generator.layout();
        std::vector<test::FixtureTrack> listing = {
            {"A1", "One", 201000}, {"A2", "Two", 187000}, {"A3", "Three", 243000}};
        for (size_t i = 0; i < layout.tracks.size(); ++i) {
            const double end =
                i + 1 < layout.tracks.size() ? layout.tracks[i + 1].start : layout.tracks[i].end;
            listing.push_back({"B" + std::to_string(i + 1), "Song " + std::to_string(i + 1),
                               static_cast<int>((end - layout.tracks[i].start) * 1000)});
        }
        test::writeReleaseFixture(dir.file("fixtures"), kRelease, "Harbour Lights", "Night Ferry",
                                  "1", "HL 1", {{"12\" Vinyl", listing}});
        const auto split = static_cast<int64_t>(layout.gaps.front().end * 44100) - 100;
        SF_INFO info{};
        info.samplerate = 44100;
        info.channels = 2;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        SNDFILE* file = sf_open(trackFilePath(dir.path(), 1).c_str(), SFM_WRITE, &info);
        std::vector<float> left(1), right(1);
        for (int64_t frame = 0; generator.render(left.data(), right.data(), 1); ++frame) {
            if (frame == split) {
                sf_close(file);
                file = sf_open(trackFilePath(dir.path(), 2).c_str(), SFM_WRITE, &info);
            }
            const float both[2] = {left[0], right[0]};
            sf_writef_float(file, both, 1);
        }
        sf_close(file);
        std::ofstream(trackCountPath(dir.path())) << 2 << "\n" << kTrackCountFinished << "\n";
        capture.tracks = 2;
    }
};

TEST(AlbumLookup, fillsTheNamesFromTheChosenListingOrSaysWhyNot) {
    static Side side; // read once: its analysis takes a while
    struct Row {
        const char* what;
        QString artist; // typed on panel 7
        bool reachable;
        QString status; // what the dialog says after Use (or after the search)
        int tracks;     // on disk afterwards
    };
    const std::vector<Row> rows = {
        {"nothing typed", "", true, ui::catalogueText("IDS_FIND_NOTHING_TYPED"), 2},
        {"no network", "Harbour Lights", false, ui::catalogueText("IDS_FIND_FAIL_NONETWORK"), 2},
        {"found and fitted", "harbour lights", true,
         ui::catalogueText("IDS_FIND_FILLED_RECUT").arg(4), 4},
    };
    test::ReplayServer server(side.dir.file("fixtures"));
    ASSERT_TRUE(server.running());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        test::FakePanelViews views;
        test::FakeAlerts alerts;
        app::SplitReview review(side.capture, alerts, nullptr);
        review.startAnalysis();
        ASSERT_TRUE(review.waitUntilRead(120000));
        ASSERT_EQ(review.state(), app::SplitReview::State::Ready);
        lookup::ServiceConfig config;
        config.musicBrainzUrl = config.coverArtUrl =
            QString::fromStdString(row.reachable ? server.url() : "http://127.0.0.1:9");
        config.userAgent = lookup::userAgentText();
        app::AlbumLookup finder(side.capture, views, review, nullptr, config);
        views.texts[{7, 51}] = row.artist;
        finder.find();
        ASSERT_TRUE(QTest::qWaitFor([&] { return finder.pending() == 0; }, 30000));
        if (row.tracks == 4) {
            ASSERT_GE(finder.dialog()->list().count(), 1);
            finder.use(0);
            ASSERT_TRUE(QTest::qWaitFor([&] { return finder.pending() == 0; }, 30000));
        }
        EXPECT_EQ(finder.dialog()->status(), row.status);
        EXPECT_EQ(side.capture.numRecordedTracks(), row.tracks);
        if (row.tracks != 4)
            continue;
        EXPECT_EQ(views.text(7, 51), "Harbour Lights");
        EXPECT_EQ(views.text(7, 52), "Night Ferry");
        for (int track = 1; track <= 4; ++track)
            EXPECT_EQ(views.text(7, app::panel::trackNameTag(track)),
                      QStringLiteral("Song %1").arg(track));
        const auto kept = lookup::keptNames(side.dir.path());
        ASSERT_TRUE(kept.has_value());
        EXPECT_EQ(lookup::trackNumbersOf(*kept), (std::vector<std::string>{"4", "5", "6", "7"}));
    }
}

} // namespace
