// A re-cut killed after its journal was in place, as export and record then find the folder;
// the rest of `waxline-cli splits` is in cli/transcripts/splits.t.
#include "cli/CliRun.h"
#include "splitting/SideRecut.h"
#include "support/MediaFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace waxline {
namespace {

namespace fs = std::filesystem;

// The export completes the re-cut first and exports the new set, not a mix of the two; record
// settles it before it looks for a recording it would throw away, so what it names is the set
// the re-cut put in.
TEST(SplitsCommand, ExportAndRecordCompleteAKilledRecutFirst) {
    test::TempDir work;
    const std::string folder = work.file("exports");
    fs::create_directories(folder);
    fs::rename(test::makeDemoSideFile(work, 2, 5), folder + "/WXRTTmpFile.1.wav");
    std::ofstream(folder + "/WXRTTmpFile.count") << "1\nfinished\n";
    const long long frames = test::soundInfo(folder + "/WXRTTmpFile.1.wav").frames;

    const SideOpen open = openRecordedSide(folder, 1);
    ASSERT_EQ(open.problem, SideProblem::None);
    struct Kill {};
    RecutHooks hooks;
    hooks.beforeStep = [&](int) {
        if (fs::exists(folder + "/WXRTTmpFile.recut"))
            throw Kill{};
    };
    const std::vector<int64_t> at{44100 * 30, 44100 * 90};
    EXPECT_THROW(recutSide(open.side, at, hooks), Kill);
    ASSERT_TRUE(fs::exists(folder + "/WXRTTmpFile.new.3.wav"));
    fs::copy(folder, work.file("again"));

    std::string out;
    ASSERT_EQ(test::runCommand(test::exportCommand(folder, work.file("Music")), out), 0) << out;
    EXPECT_NE(out.find("finished cleanly: 3 tracks"), std::string::npos) << out;
    std::vector<long long> lengths;
    for (int t = 1; t <= 3; ++t)
        lengths.push_back(
            test::soundInfo(folder + "/WXRTTmpFile." + std::to_string(t) + ".wav").frames);
    EXPECT_EQ(lengths, (std::vector<long long>{at[0], at[1] - at[0], frames - at[1]}));

    EXPECT_EQ(test::runCommand(
                  test::cli("record --export-dir " + test::shellQuote(work.file("again"))), out),
              2)
        << out;
    EXPECT_NE(out.find("holds a recording (3 track files)"), std::string::npos) << out;
    EXPECT_FALSE(fs::exists(work.file("again/WXRTTmpFile.recut")));
}

} // namespace
} // namespace waxline
