#include "tagging/ReleaseTags.h"

#include "support/MediaFiles.h"

#include <gtest/gtest.h>

#include <taglib/attachedpictureframe.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tpropertymap.h>

namespace waxline {
namespace {

struct Row {
    const char* what;
    std::string ReleaseTags::*field;
    std::string value;
    TagText text;
    const char* property; // TagLib's name, read back through TagLib
    std::string stored;
    const char* probed; // ffprobe's name; empty when ffprobe does not show it
};

TEST(ReleaseTags, readBackUnderTheTaggersNames) {
    const std::string cafe = "Caf\xC3\xA9";
    const std::vector<Row> rows = {
        {"album artist", &ReleaseTags::albumArtist, "The Band", TagText::Latin1Bytes, "ALBUMARTIST",
         "The Band", "album_artist"},
        {"album artist, Latin-1 rule", &ReleaseTags::albumArtist, cafe, TagText::Latin1Bytes,
         "ALBUMARTIST", test::latin1BytesAsUtf8(cafe), "album_artist"},
        {"album artist, as text", &ReleaseTags::albumArtist, cafe, TagText::Unicode, "ALBUMARTIST",
         cafe, "album_artist"},
        {"year", &ReleaseTags::date, "1979", TagText::Latin1Bytes, "DATE", "1979", "date"},
        {"disc of a set", &ReleaseTags::discNumber, "2/2", TagText::Latin1Bytes, "DISCNUMBER",
         "2/2", "disc"},
        {"release id", &ReleaseTags::releaseId, "0b1c2d3e-aaaa-4bbb-8ccc-000000000001",
         TagText::Latin1Bytes, "MUSICBRAINZ_ALBUMID", "0b1c2d3e-aaaa-4bbb-8ccc-000000000001",
         "musicbrainz album id"},
        {"recording id", &ReleaseTags::recordingId, "9f8e7d6c-aaaa-4bbb-8ccc-000000000002",
         TagText::Latin1Bytes, "MUSICBRAINZ_TRACKID", "9f8e7d6c-aaaa-4bbb-8ccc-000000000002", ""},
        {"track's own artist", &ReleaseTags::artist, "Guest", TagText::Latin1Bytes, "ARTIST",
         "Guest", "artist"},
    };
    test::TempDir dir;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string path = dir.path() + "/t.mp3";
        ASSERT_TRUE(test::makeMp3(path, 0.5, {{"title", "Kept"}}));
        ReleaseTags tags;
        tags.*row.field = row.value;
        ASSERT_TRUE(writeReleaseTags(path, tags, row.text));
        {
            TagLib::MPEG::File file(path.c_str());
            const auto values = file.properties()[row.property];
            ASSERT_EQ(values.size(), 1u);
            EXPECT_EQ(values.front().to8Bit(true), row.stored);
        }
        const auto probed = test::probeTags(path);
        EXPECT_EQ(probed.at("title"), "Kept");
        if (*row.probed) {
            EXPECT_EQ(probed.at(row.probed), row.stored);
        }
    }
}

TEST(ReleaseTags, embedsOneFrontCover) {
    test::TempDir dir;
    const std::string path = dir.path() + "/t.mp3";
    ASSERT_TRUE(test::makeMp3(path, 0.5));
    const std::string first = "\xFF\xD8 first", second = "\xFF\xD8 second picture";
    for (const std::string& cover : {first, second}) {
        ReleaseTags tags;
        tags.frontCover = cover;
        ASSERT_TRUE(writeReleaseTags(path, tags));
    }
    TagLib::MPEG::File file(path.c_str());
    const auto frames = file.ID3v2Tag()->frameList("APIC");
    ASSERT_EQ(frames.size(), 1u);
    const auto* picture = dynamic_cast<TagLib::ID3v2::AttachedPictureFrame*>(frames.front());
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->type(), TagLib::ID3v2::AttachedPictureFrame::FrontCover);
    EXPECT_EQ(picture->mimeType().to8Bit(), "image/jpeg");
    EXPECT_EQ(std::string(picture->picture().data(), picture->picture().size()), second);
}

} // namespace
} // namespace waxline
