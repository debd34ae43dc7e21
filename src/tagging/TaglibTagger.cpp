#include "tagging/TaglibTagger.h"

#include <taglib/tstring.h>
#include <taglib/tstringlist.h>

namespace waxline {

namespace {
const char* const kDefaultValue = "Unknown";
}

TaglibTagger::TaglibTagger(const char* path)
    : fileRef(path, true, TagLib::AudioProperties::Average) {}

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
    const TagLib::String tagValue(value[0] == '\0' ? kDefaultValue : value, TagLib::String::Latin1);
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
