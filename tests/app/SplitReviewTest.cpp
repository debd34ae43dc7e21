#include "app/SplitReview.h"

#include "app/CaptureCalls.h"
#include "app/ExportDriver.h"
#include "app/FakePanelViews.h"
#include "app/FolderClaim.h"
#include "app/PanelMachine.h"
#include "demoside/DemoSide.h"
#include "exportfolder/ExportFolderLock.h"
#include "support/FakeAlerts.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"
#include "ui/review/SplitReviewDialog.h"
#include "util/TrackFileNames.h"

#include <QPushButton>
#include <QSpinBox>
#include <QTest>

#include <sndfile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using waxline::app::PanelMachine;
using waxline::app::SplitReview;
using waxline::demoside::DemoSideGenerator;
using waxline::demoside::DemoSideLayout;
using waxline::demoside::DemoSideOptions;
using waxline::test::FakeAlerts;
using waxline::test::FakeCapture;
using waxline::test::FakePanelViews;
using waxline::test::TempDir;
using Span = DemoSideLayout::Span;

constexpr unsigned rate = 44100;

// A realistic side of four tracks with a pianissimo in each, fades in and out, recorded as the
// live detector might have done it: two track files, split in the first gap only (the others
// too short for it).
struct RecordedSideFiles {
    TempDir dir;
    DemoSideLayout layout;
    std::vector<int64_t> live;

    RecordedSideFiles() {
        DemoSideOptions o;
        o.realistic = true;
        o.tracks = 4;
        o.seed = 2;
        o.lengthSeconds = 420;
        o.realism.quietPassageChance = 1;
        o.realism.fadeOutChance = 1;
        DemoSideGenerator generator(o);
        layout = generator.layout();
        EXPECT_FALSE(layout.quietPassages.empty());
        live = {int64_t((layout.gaps.front().start + layout.gaps.front().end) / 2 * rate)};

        SF_INFO info{};
        info.samplerate = int(rate);
        info.channels = 2;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        int track = 0;
        int64_t frames = 0;
        auto openNext = [&] {
            return sf_open(waxline::trackFilePath(dir.path(), ++track).c_str(), SFM_WRITE, &info);
        };
        SNDFILE* file = openNext();
        std::vector<float> left(4096), right(4096), both;
        auto flush = [&] {
            sf_writef_float(file, both.data(), sf_count_t(both.size() / 2));
            both.clear();
        };
        while (size_t n = generator.render(left.data(), right.data(), left.size())) {
            for (size_t i = 0; i < n; ++i, ++frames) {
                if (size_t(track) <= live.size() && frames == live[size_t(track) - 1]) {
                    flush();
                    sf_close(file);
                    file = openNext();
                }
                both.insert(both.end(), {left[i], right[i]});
            }
            flush();
        }
        sf_close(file);
        std::ofstream(waxline::trackCountPath(dir.path())) << track << "\n"
                                                           << waxline::kTrackCountFinished << "\n";
    }
};

const RecordedSideFiles& pristineSide() {
    static const RecordedSideFiles side;
    return side;
}

// Every file of a folder with its contents.
std::map<std::string, std::string> folderContents(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        std::ostringstream bytes;
        bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
        files[entry.path().filename().string()] = bytes.str();
    }
    return files;
}

// The side the track files join to: its frames and a hash of its 16-bit samples, read with
// libsndfile itself so the reading under test plays no part.
struct Joined {
    int64_t frames = 0;
    uint64_t hash = 1469598103934665603ull;
    std::vector<int64_t> trackFrames;
};
Joined joinedSide(const std::string& folder, int tracks) {
    Joined j;
    std::vector<short> block(8192);
    for (int t = 1; t <= tracks; ++t) {
        SF_INFO info{};
        SNDFILE* file = sf_open(waxline::trackFilePath(folder, t).c_str(), SFM_READ, &info);
        EXPECT_NE(file, nullptr) << t;
        if (!file)
            return j;
        j.trackFrames.push_back(info.frames);
        while (sf_count_t n = sf_read_short(file, block.data(), sf_count_t(block.size()))) {
            for (sf_count_t i = 0; i < n; ++i) {
                j.hash ^= uint16_t(block[size_t(i)]);
                j.hash *= 1099511628211ull;
            }
        }
        j.frames += info.frames;
        sf_close(file);
    }
    return j;
}

bool inside(int64_t frame, const Span& s) {
    const double t = double(frame) / rate;
    return t >= s.start && t <= s.end;
}

// The review on a copy of the recorded side, wired as the window wires it, on fake panels.
struct Review {
    TempDir dir;
    FakeCapture capture = waxline::test::captureIn(dir.path());
    FakePanelViews views;
    FakeAlerts alerts;
    PanelMachine machine{capture, views, alerts};
    QWidget window;
    SplitReview review{capture, alerts, &window};
    waxline::app::FolderClaim claim{alerts};

    Review() {
        for (const auto& entry : fs::directory_iterator(pristineSide().dir.path()))
            fs::copy_file(entry.path(), dir.file(entry.path().filename().string()));
        capture.tracks = int(pristineSide().live.size()) + 1;
        views.shown = waxline::app::panel::nameFirstTen;
        review.showNamingPanel = [this](int n) { machine.showNamingPanelAfterRecut(n); };
        review.noticeChanged = [this](bool shown) { views.setSplitsNotice(shown); };
        review.mayRecut = [this] { return claim.claim(dir.path(), waxline::FolderUse::Recutting); };
        review.recutEnded = [this] { claim.release(); };
        window.resize(720, 480);
        window.show();
    }
    // The recording has ended and the review is opened at once.
    waxline::ui::SplitReviewDialog* openReview() {
        review.startAnalysis();
        EXPECT_TRUE(review.review());
        return review.dialog();
    }
    bool read() { return review.waitUntilRead(120000); }
    int tracksOnDisk() const {
        int wavs = 0;
        for (const auto& path : waxline::test::filesBelow(dir.path()))
            wavs += fs::path(path).extension() == ".wav";
        return wavs;
    }
};

} // namespace

TEST(SplitReview, ADragNearAGapSnapsIntoItAndShiftPlacesItExactly) {
    Review r;
    auto* dialog = r.openReview();
    ASSERT_TRUE(r.read());
    auto& view = dialog->overview();
    view.resize(1202, 200); // a pixel is about 0.35 s of the side
    const auto& gaps = pristineSide().layout.gaps;
    for (const bool shift : {false, true}) {
        SCOPED_TRACE(shift ? "Shift" : "plain");
        for (size_t g = 0; g < gaps.size(); ++g) {
            SCOPED_TRACE(g);
            const int64_t from = view.markers()[g].frame;
            // Dropped 2.5 s after the gap's middle: music or its fade, but the gap is in reach.
            const double dropSeconds = (gaps[g].start + gaps[g].end) / 2 + 2.5;
            const QPoint start(int(std::lround(view.xOf(from))), 100);
            const QPoint drop(int(std::lround(view.xOf(int64_t(dropSeconds * rate)))), 100);
            const Qt::KeyboardModifiers modifiers = shift ? Qt::ShiftModifier : Qt::NoModifier;
            QTest::mousePress(&view, Qt::LeftButton, modifiers, start);
            QTest::mouseMove(&view, drop);
            QTest::mouseRelease(&view, Qt::LeftButton, modifiers, drop);
            const int64_t placed = view.markers()[g].frame;
            if (shift) {
                EXPECT_NEAR(double(placed) / rate, dropSeconds, 0.5);
            } else {
                EXPECT_TRUE(inside(placed, gaps[g])) << double(placed) / rate << " s";
            }
            // Back where the proposal had it, for the next round.
            view.selectMarker(int(g));
            view.moveSelectedTo(from, false);
        }
    }
}

TEST(SplitReview, ApplyCutsTheSideAnewAndShowsTheNamingPanelForTheNewCount) {
    struct Case {
        const char* what;
        std::function<void(waxline::ui::SplitReviewDialog&)> edit;
        int tracks;
        unsigned panel;
        bool folderBusyFirst = false;
    };
    const int proposed = int(pristineSide().layout.tracks.size());
    const Case cases[] = {
        {"the proposal", [](waxline::ui::SplitReviewDialog&) {}, proposed, 7},
        {"every marker deleted",
         [](waxline::ui::SplitReviewDialog& d) {
             d.overview().selectMarker(0);
             while (!d.overview().markers().empty())
                 QTest::keyClick(&d.overview(), Qt::Key_Delete);
         },
         1, 4},
        {"the sleeve says two, another run in the folder at first",
         [](waxline::ui::SplitReviewDialog& d) { d.trackCountBox().setValue(2); }, 2, 7, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Review r;
        const Joined before = joinedSide(r.dir.path(), r.capture.tracks);
        auto* dialog = r.openReview();
        ASSERT_TRUE(r.read());
        c.edit(*dialog);
        const std::vector<int64_t> boundaries = dialog->boundaries();
        ASSERT_EQ(int(boundaries.size()), c.tracks - 1);
        if (c.folderBusyFirst) {
            // The command line works there: Apply says so, cuts nothing and stays open.
            waxline::ExportFolderLock other;
            ASSERT_EQ(other.tryLock(r.dir.path(), waxline::FolderUse::Exporting, "waxline-cli"),
                      waxline::ExportFolderLock::Outcome::Taken);
            const auto files = folderContents(r.dir.path());
            QTest::mouseClick(&dialog->applyButton(), Qt::LeftButton);
            ASSERT_EQ(r.alerts.shown.size(), 1u);
            EXPECT_EQ(r.alerts.shown[0].text, "IDS_FOLDER_BUSY");
            ASSERT_NE(r.review.dialog(), nullptr) << "the review stays open";
            EXPECT_TRUE(folderContents(r.dir.path()) == files) << "a file changed";
            EXPECT_EQ(r.capture.numRecordedTracks(), 2);
            EXPECT_EQ(count(r.capture, "adoptRecordedTracks(2)"), 0);
        }
        QTest::mouseClick(&dialog->applyButton(), Qt::LeftButton);

        EXPECT_EQ(r.alerts.shown.size(), c.folderBusyFirst ? 1u : 0u)
            << qPrintable(r.alerts.texts().join(", "));
        EXPECT_EQ(r.review.dialog(), nullptr) << "Apply closes the review";
        EXPECT_EQ(count(r.capture, "adoptRecordedTracks(" + std::to_string(c.tracks) + ")"), 1);
        EXPECT_EQ(r.capture.numRecordedTracks(), c.tracks);
        EXPECT_EQ(r.views.shown, c.panel);
        if (c.panel == 7) {
            EXPECT_TRUE((r.views.offered[{7u, 60 + c.tracks}]));
            EXPECT_FALSE((r.views.offered[{7u, 61 + c.tracks}]));
        }
        // The files join to the same side, cut where the markers were.
        EXPECT_EQ(r.tracksOnDisk(), c.tracks);
        const Joined after = joinedSide(r.dir.path(), c.tracks);
        EXPECT_EQ(after.frames, before.frames);
        EXPECT_EQ(after.hash, before.hash);
        int64_t start = 0;
        for (int t = 0; t + 1 < c.tracks; ++t) {
            start += after.trackFrames[size_t(t)];
            EXPECT_EQ(start, boundaries[size_t(t)]) << "track " << t + 2;
        }
        waxline::ExportFolderLock free;
        EXPECT_EQ(free.tryLock(r.dir.path(), waxline::FolderUse::Recording, "test"),
                  waxline::ExportFolderLock::Outcome::Taken)
            << "the re-cut lets the folder go";
    }
}

// Space plays four seconds around the selected marker; Cancel stops it and leaves every file
// as it was, whatever was edited.
TEST(SplitReview, SpacePlaysAroundAMarkerAndCancelLeavesTheFilesByteIdentical) {
    Review r;
    const auto before = folderContents(r.dir.path());
    auto* dialog = r.openReview();
    ASSERT_TRUE(r.read());
    dialog->overview().selectMarker(0);
    QTest::keyClick(&dialog->overview(), Qt::Key_Space);
    const int64_t marker = dialog->overview().markers()[0].frame;
    const std::string expected = "playExcerpt(" + std::to_string(marker - 2 * int64_t(rate)) +
                                 ", " + std::to_string(4 * int64_t(rate)) + ")";
    EXPECT_EQ(count(r.capture, expected), 1) << r.capture.calls.back();
    QTest::keyClick(&dialog->overview(), Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(&dialog->overview(), Qt::Key_Delete);
    dialog->trackCountBox().setValue(3);
    QTest::mouseClick(&dialog->cancelButton(), Qt::LeftButton);
    EXPECT_EQ(r.capture.calls.back(), "stopExcerpt") << "closing the review stops the excerpt";
    EXPECT_EQ(r.review.dialog(), nullptr);
    EXPECT_TRUE(folderContents(r.dir.path()) == before) << "a file changed";
    EXPECT_EQ(count(r.capture, "adoptRecordedTracks(3)"), 0);
    EXPECT_EQ(r.capture.numRecordedTracks(), 2);
    EXPECT_TRUE(r.alerts.shown.empty());
}

TEST(SplitReview, ASideThatCannotBeReadIsSaidAndNothingOpens) {
    Review r;
    fs::remove(r.dir.file("WXRTTmpFile.2.wav"));
    r.review.startAnalysis();
    EXPECT_EQ(r.review.state(), SplitReview::State::Failed);
    EXPECT_FALSE(r.review.review());
    EXPECT_EQ(r.review.dialog(), nullptr);
    ASSERT_EQ(r.alerts.shown.size(), 1u);
    EXPECT_EQ(r.alerts.shown[0].text, QStringLiteral("IDS_REVIEW_NO_SIDE"));
    EXPECT_EQ(r.alerts.shown[0].arguments,
              QStringList{QString::fromStdString(r.dir.file("WXRTTmpFile.2.wav"))});
}

TEST(SplitReview, ProposalsAreCalledDifferentOnlyBeyondTheirQuietStretch) {
    using Sonra::Audio::Filters::SplitBoundary;
    // Two boundaries, quiet from 9.5 s to 11 s and 29 s to 30 s (frames at 1000 a second).
    const std::vector<SplitBoundary> proposal = {{10000, 0.9f, 9500, 11000},
                                                 {29500, 0.8f, 29000, 30000}};
    const struct {
        const char* what;
        std::vector<int64_t> live;
        bool differs;
    } cases[] = {
        {"the same", {10000, 29500}, false},
        {"elsewhere in the same gaps", {9600, 30000}, false},
        {"within a second", {10900, 30400}, false},
        {"a split in the music", {10000, 33000}, true},
        {"a split too few", {10000}, true},
        {"a split too many", {5000, 10000, 29500}, true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(waxline::app::proposalDiffersFrom(proposal, c.live, 1000), c.differs) << c.what;
}

// The review opens before the side is read, with the live split as its marker; the proposal
// then replaces it. A side with a pianissimo, reviewed and applied, exports as many tracks as
// it has, none of them cut inside a fade or the quiet passage.
TEST(SplitReview, TheProposalBecomesTheMarkersAndExportsEveryTrackWithItsFadesWhole) {
    Review r;
    auto* dialog = r.openReview();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    // Opened before the side is read: the live split is there, the count waits for the proposal.
    EXPECT_EQ(dialog->boundaries(), pristineSide().live);
    EXPECT_TRUE(dialog->reading());
    EXPECT_FALSE(dialog->trackCountBox().isEnabled());
    EXPECT_FALSE(r.views.splitsNotice);

    ASSERT_TRUE(r.read());
    ASSERT_EQ(r.review.state(), SplitReview::State::Ready);
    EXPECT_FALSE(dialog->reading());
    EXPECT_EQ(dialog->overview().columnsFilled(), dialog->overview().columnCount());
    EXPECT_GT(dialog->overview().columnCount(), 1000);

    const auto& layout = pristineSide().layout;
    const auto markers = dialog->overview().markers();
    std::ostringstream where;
    for (const auto& m : markers)
        where << double(m.frame) / rate << " s (" << m.confidence << ") ";
    where << "in gaps";
    for (const Span& g : layout.gaps)
        where << " " << g.start << "-" << g.end;
    SCOPED_TRACE(where.str());
    ASSERT_EQ(markers.size(), layout.gaps.size());
    for (size_t i = 0; i < markers.size(); ++i) {
        EXPECT_TRUE(inside(markers[i].frame, layout.gaps[i]))
            << "marker " << i << " at " << double(markers[i].frame) / rate << " s";
        EXPECT_EQ(markers[i].doubtful(), r.review.proposal()[i].confidence < 0.5f);
    }
    EXPECT_EQ(dialog->trackCountBox().value(), int(layout.tracks.size()));
    EXPECT_TRUE(dialog->applyButton().isEnabled());
    EXPECT_TRUE(r.views.splitsNotice) << "a split inside a pianissimo differs from the proposal";

    const std::vector<int64_t> boundaries = dialog->boundaries();
    QTest::mouseClick(&dialog->applyButton(), Qt::LeftButton);
    const int tracks = int(layout.tracks.size());
    ASSERT_EQ(r.capture.numRecordedTracks(), tracks);
    for (int64_t b : boundaries) {
        for (const auto& spans : {layout.fadeIns, layout.fadeOuts, layout.quietPassages})
            for (const Span& s : spans)
                EXPECT_FALSE(inside(b, s)) << double(b) / rate << " s";
    }

    TempDir music;
    std::vector<unsigned> panels;
    waxline::app::ExportDriver driver(
        r.capture, r.views, r.alerts, [&](unsigned n) { panels.push_back(n); },
        [](const std::string& key) { return key; }, music.file("Music"));
    r.views.texts[{7, 51}] = QStringLiteral("Artist");
    r.views.texts[{7, 52}] = QStringLiteral("Album");
    for (int t = 1; t <= tracks; ++t)
        r.views.texts[{7, 60 + t}] = QStringLiteral("Track %1").arg(t);
    driver.processAudioFiles();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !panels.empty(); }, 240000));
    driver.finishOrCancel();
    // Each MP3 lasts as long as its track file (within the encoder's padding).
    const Joined cut = joinedSide(r.dir.path(), tracks);
    EXPECT_EQ(waxline::test::filesBelow(music.path()).size(), size_t(tracks));
    for (int t = 1; t <= tracks; ++t) {
        const std::string mp3 = music.file("Music/Artist/Album/0") + std::to_string(t) + " Track " +
                                std::to_string(t) + ".mp3";
        EXPECT_NEAR(waxline::test::probeDuration(mp3),
                    double(cut.trackFrames[size_t(t - 1)]) / rate, 0.1)
            << mp3;
    }
}
