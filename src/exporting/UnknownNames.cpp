#include "exporting/UnknownNames.h"

#include <cctype>

namespace waxline::exporting {

std::string withArgument(const std::string& format, const std::string& argument) {
    std::string result;
    result.reserve(format.size() + argument.size());
    for (size_t i = 0; i < format.size(); ++i) {
        const bool marker =
            format[i] == '%' && i + 1 < format.size() && format[i + 1] == '1' &&
            (i + 2 == format.size() || !std::isdigit(static_cast<unsigned char>(format[i + 2])));
        if (marker) {
            result += argument;
            ++i;
        } else {
            result += format[i];
        }
    }
    return result;
}

TrackNames namesOrUnknown(const TextLookup& text, const std::string& artist,
                          const std::string& album, const std::string& title,
                          const std::string& number) {
    auto lookup = [&](const std::string& key) { return text ? text(key) : key; };
    TrackNames names{artist, album, title};
    if (names.title.empty())
        names.title = withArgument(lookup(kUnknownTrackKey), number);
    if (names.artist.empty())
        names.artist = lookup(kUnknownArtistKey);
    if (names.album.empty())
        names.album = lookup(kUnknownAlbumKey);
    return names;
}

} // namespace waxline::exporting
