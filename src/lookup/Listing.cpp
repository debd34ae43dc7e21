#include "lookup/Listing.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace waxline::lookup {

namespace {

bool contains(const std::string& text, const char* word) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower.find(word) != std::string::npos;
}

} // namespace

std::string sideLetterOf(const std::string& number) {
    size_t letters = 0;
    while (letters < number.size() && std::isalpha(static_cast<unsigned char>(number[letters])))
        ++letters;
    return number.substr(0, letters);
}

bool Medium::isVinyl() const {
    return contains(format, "vinyl") || contains(format, "shellac");
}

bool Medium::isCassette() const {
    return contains(format, "cassette");
}

std::vector<std::string> Medium::sideLetters() const {
    std::vector<std::string> letters;
    for (const ListedTrack& t : tracks) {
        const std::string letter = sideLetterOf(t.number);
        if (letter.empty())
            return {};
        if (letters.empty() || letters.back() != letter)
            letters.push_back(letter);
    }
    return letters;
}

std::string ReleaseSummary::formatText() const {
    // Equal formats in a row are counted: a double album reads "2×12" Vinyl".
    std::string text;
    for (size_t i = 0; i < formats.size();) {
        size_t same = i;
        while (same < formats.size() && formats[same] == formats[i])
            ++same;
        if (!text.empty())
            text += " + ";
        if (same - i > 1)
            text += std::to_string(same - i) + "\xC3\x97";
        text += formats[i].empty() ? "?" : formats[i];
        i = same;
    }
    return text;
}

int Release::sideCount() const {
    int sides = 0;
    for (const Medium& m : media) {
        const size_t letters = m.sideLetters().size();
        sides += static_cast<int>(letters ? letters : (m.isVinyl() || m.isCassette() ? 2 : 1));
    }
    return sides;
}

bool ReleaseSummary::hasAnalogueMedium() const {
    return std::any_of(formats.begin(), formats.end(), [](const std::string& f) {
        return contains(f, "vinyl") || contains(f, "cassette") || contains(f, "shellac");
    });
}

} // namespace waxline::lookup
