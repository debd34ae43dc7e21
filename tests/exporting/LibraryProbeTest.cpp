#include "exporting/LibraryProbe.h"

#include "exporting/LibraryImporter.h"

#include <gtest/gtest.h>

#include <vector>

namespace waxline::exporting {
namespace {

TEST(LibraryProbe, AsksUntilTheLibraryAnswersAndAlertsOnlyWhenItIsUnavailable) {
    constexpr int kUnavailable = LibraryImporter::kLibraryUnavailable;
    struct Case {
        const char* name;
        std::vector<int> answers;
        bool userRetries;
        int expectedResult;
        int expectedProbes;
        int expectedAlerts;
    };
    const Case cases[] = {
        {"available at once", {0}, true, 0, 1, 0},
        {"unavailable, then the user confirms", {kUnavailable, 0}, true, 0, 2, 1},
        {"other errors retried at once", {-1, -2, -1, 0}, true, 0, 4, 0},
        {"mixed", {kUnavailable, -5, kUnavailable, 0}, true, 0, 4, 2},
        {"the user gives up", {kUnavailable, 0}, false, kUnavailable, 1, 1},
        {"other errors never ask the user", {-1, kUnavailable, 0}, false, kUnavailable, 2, 1},
    };
    for (const auto& c : cases) {
        size_t probes = 0;
        std::vector<int> errors;
        std::vector<size_t> alertsAfterProbe;
        const int result = probeUntilAvailable([&] { return c.answers.at(probes++); },
                                               [&](int error) { errors.push_back(error); },
                                               [&] {
                                                   alertsAfterProbe.push_back(probes);
                                                   return c.userRetries;
                                               });
        EXPECT_EQ(result, c.expectedResult) << c.name;
        EXPECT_EQ(static_cast<int>(probes), c.expectedProbes) << c.name;
        EXPECT_EQ(static_cast<int>(alertsAfterProbe.size()), c.expectedAlerts) << c.name;
        // Every failure is seen; the alert follows exactly the unavailable answers.
        const std::vector<int> failures(c.answers.begin(),
                                        c.answers.begin() + static_cast<long>(errors.size()));
        EXPECT_EQ(errors, failures) << c.name;
        for (size_t after : alertsAfterProbe)
            EXPECT_EQ(c.answers.at(after - 1), kUnavailable) << c.name;
    }
    // With nobody to ask (no callbacks at all) an unavailable library ends the wait.
    int probes = 0;
    EXPECT_EQ(probeUntilAvailable([&] { return ++probes, kUnavailable; }, {}, {}), kUnavailable);
    EXPECT_EQ(probes, 1);
}

} // namespace
} // namespace waxline::exporting
