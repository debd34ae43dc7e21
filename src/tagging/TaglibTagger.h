#pragma once

#include "tagging/TagText.h"

#include <taglib/fileref.h>
#include <taglib/tpropertymap.h>

#include <memory>
#include <mutex>
#include <string>

namespace waxline {

class TagFileStream;

// Held by whatever opens a file through TagLib: it fills some tables lazily without a lock.
std::mutex& taglibUse();

// Writes the four tags of one exported file through TagLib's format-neutral property map.
// Made, set and destroyed as a local: the file is saved when the tagger goes.
// Keys are always Latin-1; values are read as `text` says. Callers must not convert first.
class TaglibTagger {
public:
    explicit TaglibTagger(const char* path, TagText text = TagText::Latin1Bytes);
    ~TaglibTagger();
    TaglibTagger(const TaglibTagger&) = delete;
    TaglibTagger& operator=(const TaglibTagger&) = delete;

    bool isValid() const;
    TagLib::PropertyMap getPropertyMap() const;

    // Replaces the key's values with the one value ("Unknown" when empty); other keys stay.
    // `value` must not be null. Nothing reaches the disk before destruction.
    void setTagProperty(const char* key, const char* value);

    void setSongTitle(const char* title);
    void setArtist(const char* artist);
    void setAlbumName(const char* album);
    void setTrackNumber(const char* number);

    // Replaces the front-cover picture with `picture` (`mime`: "image/jpeg" or "image/png").
    // False when the file's format cannot carry one here. Defined in TaglibTaggerCover.cpp.
    bool setFrontCover(const std::string& picture, const char* mime);

private:
    // TagLib fills some of its tables lazily and without a lock, and the export tags from
    // several encoder threads: one tagger at a time in the process, held from open to save.
    std::unique_lock<std::mutex> exclusive;
    std::unique_ptr<TagFileStream> stream; // outlives fileRef, which reads and writes through it
    TagLib::FileRef fileRef;
    TagText text;
};

} // namespace waxline
