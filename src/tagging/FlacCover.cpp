#include "tagging/FlacCover.h"

#include "tagging/TaglibTagger.h"

#include <taglib/flacfile.h>
#include <taglib/flacpicture.h>

#include <utility>

namespace waxline {

bool setFlacFrontCover(const std::string& flacPath, const std::string& imageBytes,
                       const std::string& mimeType) {
    if (imageBytes.empty())
        return false;
    const std::lock_guard<std::mutex> exclusive(taglibUse());
    TagLib::FLAC::File file(flacPath.c_str(), false);
    if (!file.isValid())
        return false;
    for (TagLib::FLAC::Picture* old : file.pictureList())
        if (old->type() == TagLib::FLAC::Picture::FrontCover)
            file.removePicture(old, true);
    auto* picture = new TagLib::FLAC::Picture;
    picture->setType(TagLib::FLAC::Picture::FrontCover);
    picture->setMimeType(TagLib::String(mimeType, TagLib::String::Latin1));
    picture->setData(
        TagLib::ByteVector(imageBytes.data(), static_cast<unsigned>(imageBytes.size())));
    file.addPicture(picture); // the file owns it from here
    return file.save();
}

std::pair<std::string, std::string> flacFrontCover(const std::string& flacPath) {
    const std::lock_guard<std::mutex> exclusive(taglibUse());
    TagLib::FLAC::File file(flacPath.c_str(), false);
    if (!file.isValid())
        return {};
    for (TagLib::FLAC::Picture* picture : file.pictureList())
        if (picture->type() == TagLib::FLAC::Picture::FrontCover)
            return {std::string(picture->data().data(), picture->data().size()),
                    picture->mimeType().to8Bit()};
    return {};
}

} // namespace waxline
