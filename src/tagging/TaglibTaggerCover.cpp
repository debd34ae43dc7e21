#include "tagging/TaglibTagger.h"

#include <taglib/attachedpictureframe.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>

namespace waxline {

bool TaglibTagger::setFrontCover(const std::string& picture, const char* mime) {
    auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(fileRef.file());
    if (!mpeg || picture.empty())
        return false;
    TagLib::ID3v2::Tag* tag = mpeg->ID3v2Tag(true);
    // A second front cover would leave players to pick one at random: the old one goes.
    const TagLib::ID3v2::FrameList pictures = tag->frameList("APIC");
    for (TagLib::ID3v2::Frame* frame : pictures) {
        auto* old = dynamic_cast<TagLib::ID3v2::AttachedPictureFrame*>(frame);
        if (old && old->type() == TagLib::ID3v2::AttachedPictureFrame::FrontCover)
            tag->removeFrame(frame);
    }
    auto* frame = new TagLib::ID3v2::AttachedPictureFrame;
    frame->setMimeType(mime);
    frame->setType(TagLib::ID3v2::AttachedPictureFrame::FrontCover);
    frame->setPicture(TagLib::ByteVector(picture.data(), static_cast<unsigned>(picture.size())));
    tag->addFrame(frame); // the tag owns it from here
    return true;
}

} // namespace waxline
