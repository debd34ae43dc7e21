#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Sonra::Audio::Filters {

// What a sleeve says about a side: its tracks' durations ("3:12, 4:05" or "A1 3:12 A2 4:05")
// or only their numbering ("A1-A5", five tracks). Labels such as "A1", "B3." or "2" are
// accepted and ignored beside durations.
struct SleeveTimes {
    enum class Problem {
        None,
        Empty,    // nothing to read
        BadEntry, // `entry` is neither a duration, a label nor a range
        BadRange, // `entry` runs backwards or across sides, or disagrees with the durations
    };
    Problem problem = Problem::None;
    std::string entry;             // the offending text, for the front end's message
    std::vector<double> durations; // seconds, in order
    int count = 0;                 // tracks on the side (from the durations or the range)

    static SleeveTimes parse(std::string_view text);
    // "3:12" -> 192, "1:02:03" -> 3723, "3:12.5" -> 192.5; a negative value when it is not one.
    static double parseDuration(std::string_view text);
};

} // namespace Sonra::Audio::Filters
