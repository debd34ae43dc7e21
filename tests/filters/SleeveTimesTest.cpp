#include "filters/SleeveTimes.h"

#include <gtest/gtest.h>

#include <vector>

using Sonra::Audio::Filters::SleeveTimes;
using Problem = Sonra::Audio::Filters::SleeveTimes::Problem;

namespace {

TEST(SleeveTimes, ReadsDurations) {
    EXPECT_EQ(SleeveTimes::parseDuration("3:12"), 192);
    EXPECT_EQ(SleeveTimes::parseDuration("0:59"), 59);
    EXPECT_EQ(SleeveTimes::parseDuration("12:05"), 725);
    EXPECT_EQ(SleeveTimes::parseDuration("1:02:03"), 3723);
    EXPECT_DOUBLE_EQ(SleeveTimes::parseDuration("3:12.5"), 192.5);
    for (const char* bad : {"", "3", "3:", ":12", "3:1", "3:60", "3:123", "1:2:3", "a:12", "3:12.",
                            "3:12.x", "1:02:03:04", "3.5:12"})
        EXPECT_LT(SleeveTimes::parseDuration(bad), 0) << bad;
}

TEST(SleeveTimes, ReadsWhatSleevesPrint) {
    struct Case {
        const char* text;
        std::vector<double> durations;
        int count;
    };
    const Case cases[] = {
        {"3:12,4:05", {192, 245}, 2},
        {"3:12, 4:05 ; 2:59", {192, 245, 179}, 3},
        {"A1 3:12 A2 4:05 A3 5:00", {192, 245, 300}, 3},
        {"A1. 3:12\nA2. 4:05\n", {192, 245}, 2},
        {"1 3:12 2 4:05", {192, 245}, 2},
        {"A1-A5", {}, 5},
        {"B1\xE2\x80\x93"
         "B4",
         {},
         4},
        {"1-12", {}, 12},
        {"A1-A2 3:12 4:05", {192, 245}, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const SleeveTimes s = SleeveTimes::parse(c.text);
        EXPECT_EQ(s.problem, Problem::None);
        EXPECT_EQ(s.durations, c.durations);
        EXPECT_EQ(s.count, c.count);
    }
}

TEST(SleeveTimes, NamesWhatItCannotRead) {
    struct Case {
        const char* text;
        Problem problem;
        const char* entry;
    };
    const Case cases[] = {
        {"", Problem::Empty, ""},
        {" , ;", Problem::Empty, ""},
        {"A1 A2", Problem::Empty, ""},
        {"3:12 soon", Problem::BadEntry, "soon"},
        {"3:12,4:75", Problem::BadEntry, "4:75"},
        {"A5-A1", Problem::BadRange, "A5-A1"},
        {"A1-B3", Problem::BadRange, "A1-B3"},
        {"A1-A3 3:12 4:05", Problem::BadRange, ""},
        {"A1-A2 B1-B2", Problem::BadRange, "B1-B2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const SleeveTimes s = SleeveTimes::parse(c.text);
        EXPECT_EQ(s.problem, c.problem);
        EXPECT_EQ(s.entry, c.entry);
        EXPECT_EQ(s.count, 0);
    }
}

} // namespace
