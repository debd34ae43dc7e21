#include "exporting/EscapedForm.h"

#include <gtest/gtest.h>

namespace waxline::exporting {
namespace {

TEST(EscapedFormOf, EdgeCases) {
    struct Case {
        std::string in;
        std::string out;
    };
    const Case cases[] = {
        {"", ""},
        {"plain", "plain"},
        {"a\"b\\c", "a\\\"b\\\\c"}, // five characters in, seven out
        {"\"", "\\\""},
        {"\\", "\\\\"},
        {"\\\"", "\\\\\\\""}, // a backslash before a quote: both escaped, none doubled twice
        {"\"\"", "\\\"\\\""},
        {"end\\", "end\\\\"},
        {"Caf\xC3\xA9 'single'", "Caf\xC3\xA9 'single'"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(escapedFormOf(c.in), c.out) << c.in;
}

} // namespace
} // namespace waxline::exporting
