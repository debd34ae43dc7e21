#include "tagging/ReleaseTags.h"

#include "tagging/FlacCover.h"
#include "tagging/TaglibTagger.h"

namespace waxline {

bool ReleaseTags::empty() const {
    return artist.empty() && albumArtist.empty() && date.empty() && discNumber.empty() &&
           releaseId.empty() && recordingId.empty() && releaseTrackId.empty() &&
           albumArtistId.empty() && frontCover.empty();
}

bool writeReleaseTags(const std::string& path, const ReleaseTags& tags, TagText text) {
    bool coverInTag = false;
    {
        TaglibTagger tagger(path.c_str(), text);
        if (!tagger.isValid())
            return false;
        // TagLib's property names, which it stores as each format's taggers expect (in ID3v2:
        // TPE2, TDRC, TPOS, the "MusicBrainz ..." user texts and the recording's UFID).
        const std::pair<const char*, const std::string*> keys[] = {
            {"ARTIST", &tags.artist},
            {"ALBUMARTIST", &tags.albumArtist},
            {"DATE", &tags.date},
            {"DISCNUMBER", &tags.discNumber},
            {"MUSICBRAINZ_ALBUMID", &tags.releaseId},
            {"MUSICBRAINZ_TRACKID", &tags.recordingId},
            {"MUSICBRAINZ_RELEASETRACKID", &tags.releaseTrackId},
            {"MUSICBRAINZ_ALBUMARTISTID", &tags.albumArtistId},
        };
        for (const auto& [key, value] : keys)
            if (!value->empty())
                tagger.setTagProperty(key, value->c_str());
        if (!tags.frontCover.empty())
            coverInTag = tagger.setFrontCover(tags.frontCover, "image/jpeg");
    } // saved here
    // A FLAC keeps its picture in a block of its own, written once the tags are saved.
    if (!tags.frontCover.empty() && !coverInTag)
        return setFlacFrontCover(path, tags.frontCover, "image/jpeg");
    return true;
}

} // namespace waxline
