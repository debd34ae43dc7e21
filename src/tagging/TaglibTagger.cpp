#include "tagging/TaglibTagger.h"

#include "tagging/TagFileStream.h"

#include <taglib/tstring.h>
#include <taglib/tstringlist.h>

#include <cstdint>

namespace waxline {

namespace {

const char* const kDefaultValue = "Unknown";

// Whether the bytes are well-formed UTF-8 (no overlong forms, surrogates or values past
// U+10FFFF).
bool isUtf8(const unsigned char* p) {
    while (*p) {
        unsigned length = 0;
        uint32_t code = 0;
        if (*p < 0x80) {
            ++p;
            continue;
        } else if ((*p & 0xE0) == 0xC0) {
            length = 1;
            code = *p & 0x1F;
        } else if ((*p & 0xF0) == 0xE0) {
            length = 2;
            code = *p & 0x0F;
        } else if ((*p & 0xF8) == 0xF0) {
            length = 3;
            code = *p & 0x07;
        } else {
            return false;
        }
        ++p;
        for (unsigned i = 0; i < length; ++i, ++p) {
            if ((*p & 0xC0) != 0x80)
                return false;
            code = code << 6 | (*p & 0x3F);
        }
        const uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
        if (code < smallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return false;
    }
    return true;
}

} // namespace

std::mutex& taglibUse() {
    static std::mutex use;
    return use;
}

TaglibTagger::TaglibTagger(const char* path, TagText text)
    : exclusive(taglibUse())
    , stream(std::make_unique<TagFileStream>(path))
    , fileRef(stream->isOpen()
                  ? TagLib::FileRef(stream.get(), true, TagLib::AudioProperties::Average)
                  : TagLib::FileRef())
    , text(text) {}

TaglibTagger::~TaglibTagger() {
    if (fileRef.file())
        fileRef.save();
}

bool TaglibTagger::isValid() const {
    return fileRef.file() != nullptr;
}

TagLib::PropertyMap TaglibTagger::getPropertyMap() const {
    if (!fileRef.file())
        return TagLib::PropertyMap();
    return fileRef.file()->properties();
}

void TaglibTagger::setTagProperty(const char* key, const char* value) {
    if (!fileRef.file())
        return;
    TagLib::PropertyMap map = getPropertyMap();
    const TagLib::String tagKey(key, TagLib::String::Latin1);
    const char* shown = value[0] == '\0' ? kDefaultValue : value;
    const bool unicode =
        text == TagText::Unicode && isUtf8(reinterpret_cast<const unsigned char*>(shown));
    const TagLib::String tagValue(shown, unicode ? TagLib::String::UTF8 : TagLib::String::Latin1);
    map.replace(tagKey, TagLib::StringList(tagValue));
    // Keys the format cannot hold come back here; there is nothing useful to do with them.
    fileRef.file()->setProperties(map);
}

void TaglibTagger::setSongTitle(const char* title) {
    setTagProperty("TITLE", title);
}
void TaglibTagger::setArtist(const char* artist) {
    setTagProperty("ARTIST", artist);
}
void TaglibTagger::setAlbumName(const char* album) {
    setTagProperty("ALBUM", album);
}
void TaglibTagger::setTrackNumber(const char* number) {
    setTagProperty("TRACKNUMBER", number);
}

} // namespace waxline
