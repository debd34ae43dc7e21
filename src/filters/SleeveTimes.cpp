#include "filters/SleeveTimes.h"

#include <cctype>

namespace Sonra::Audio::Filters {
namespace {

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// "A1", "b12", "3", optionally with a closing dot: the side letter (0 for none) and the number.
bool parseLabel(std::string_view text, char& side, int& number) {
    if (!text.empty() && text.back() == '.')
        text.remove_suffix(1);
    side = 0;
    if (!text.empty() && std::isalpha(static_cast<unsigned char>(text.front()))) {
        side = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
        text.remove_prefix(1);
    }
    if (text.empty() || text.size() > 3)
        return false;
    number = 0;
    for (char c : text) {
        if (!isDigit(c))
            return false;
        number = number * 10 + (c - '0');
    }
    return true;
}

} // namespace

double SleeveTimes::parseDuration(std::string_view text) {
    double fields[3] = {0, 0, 0};
    int count = 0;
    double fraction = 0;
    size_t i = 0;
    while (true) {
        size_t start = i;
        double value = 0;
        while (i < text.size() && isDigit(text[i]))
            value = value * 10 + (text[i++] - '0');
        if (i == start || count == 3)
            return -1;
        // Minutes and seconds after the first field have two digits.
        if (count > 0 && i - start != 2)
            return -1;
        fields[count++] = value;
        if (i == text.size())
            break;
        if (text[i] == ':') {
            ++i;
            continue;
        }
        if (text[i] == '.' && count > 1) {
            ++i;
            double scale = 0.1;
            const size_t digits = i;
            while (i < text.size() && isDigit(text[i])) {
                fraction += scale * (text[i++] - '0');
                scale /= 10;
            }
            if (i == digits || i != text.size())
                return -1;
            break;
        }
        return -1;
    }
    if (count < 2)
        return -1;
    for (int k = 1; k < count; ++k)
        if (fields[k] >= 60)
            return -1;
    double seconds = 0;
    for (int k = 0; k < count; ++k)
        seconds = seconds * 60 + fields[k];
    return seconds + fraction;
}

SleeveTimes SleeveTimes::parse(std::string_view text) {
    SleeveTimes result;
    int rangeCount = 0;
    size_t i = 0;
    auto separator = [](char c) {
        return c == ',' || c == ';' || std::isspace(static_cast<unsigned char>(c));
    };
    while (i < text.size()) {
        while (i < text.size() && separator(text[i]))
            ++i;
        const size_t start = i;
        while (i < text.size() && !separator(text[i]))
            ++i;
        if (start == i)
            break;
        const std::string_view token = text.substr(start, i - start);
        const double seconds = parseDuration(token);
        if (seconds > 0) {
            result.durations.push_back(seconds);
            continue;
        }
        char side = 0;
        int number = 0;
        if (parseLabel(token, side, number))
            continue;
        // A range of labels: "A1-A5", with a hyphen or an en dash.
        size_t dash = token.find('-');
        size_t dashLength = 1;
        if (dash == std::string_view::npos) {
            dash = token.find("\xE2\x80\x93");
            dashLength = 3;
        }
        char lastSide = 0;
        int last = 0;
        if (dash != std::string_view::npos && parseLabel(token.substr(0, dash), side, number) &&
            parseLabel(token.substr(dash + dashLength), lastSide, last)) {
            if (last < number || (lastSide != 0 && lastSide != side) || rangeCount != 0) {
                result.problem = Problem::BadRange;
                result.entry = std::string(token);
                return result;
            }
            rangeCount = last - number + 1;
            continue;
        }
        result.problem = Problem::BadEntry;
        result.entry = std::string(token);
        return result;
    }
    if (result.durations.empty() && rangeCount == 0) {
        result.problem = Problem::Empty;
        return result;
    }
    if (!result.durations.empty() && rangeCount != 0 &&
        static_cast<size_t>(rangeCount) != result.durations.size()) {
        result.problem = Problem::BadRange;
        return result;
    }
    result.count =
        result.durations.empty() ? rangeCount : static_cast<int>(result.durations.size());
    return result;
}

} // namespace Sonra::Audio::Filters
