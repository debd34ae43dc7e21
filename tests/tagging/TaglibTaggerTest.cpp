#include "tagging/TaglibTagger.h"

#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>

namespace waxline {
namespace {

using test::probeTags;
using Tags = std::map<std::string, std::string>;

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct TagCase {
    const char* name;
    Tags before; // tags ffmpeg writes when making the file
    std::function<void(TaglibTagger&)> set;
    Tags expected; // a subset of what ffprobe must read back
};

void PrintTo(const TagCase& c, std::ostream* os) {
    *os << c.name;
}

class TaglibTaggerTest : public testing::TestWithParam<TagCase> {};

TEST_P(TaglibTaggerTest, WritesWhatAnIndependentReaderSees) {
    const TagCase& c = GetParam();
    test::TempDir dir;
    const std::string path = dir.file("track.mp3");
    ASSERT_TRUE(test::makeMp3(path, 1.0, c.before));
    {
        TaglibTagger tagger(path.c_str());
        ASSERT_TRUE(tagger.isValid());
        c.set(tagger);
    }
    const Tags tags = probeTags(path);
    for (const auto& [key, value] : c.expected) {
        ASSERT_TRUE(tags.count(key)) << "missing " << key;
        EXPECT_EQ(tags.at(key), value) << key;
    }
}

// "Café" as UTF-8: the accented e takes two bytes, and each byte becomes a character.
const char kCafeUtf8[] = "Caf\xC3\xA9";

const TagCase kTagCases[] = {
    {"AllFour",
     {},
     [](TaglibTagger& t) {
         t.setSongTitle("Side Two Opener");
         t.setArtist("The Grooves");
         t.setAlbumName("Pressed Again");
         t.setTrackNumber("7");
     },
     {{"title", "Side Two Opener"},
      {"artist", "The Grooves"},
      {"album", "Pressed Again"},
      {"track", "7"}}},
    {"EmptyValuesBecomeUnknown",
     {},
     [](TaglibTagger& t) {
         t.setSongTitle("");
         t.setArtist("");
         t.setAlbumName("");
         t.setTrackNumber("");
     },
     {{"title", "Unknown"}, {"artist", "Unknown"}, {"album", "Unknown"}}},
    {"SecondSetWins",
     {{"artist", "Made By Encoder"}},
     [](TaglibTagger& t) {
         t.setArtist("First");
         t.setArtist("Second");
     },
     {{"artist", "Second"}}},
    {"OtherKeysSurvive",
     {{"genre", "Polka"}, {"date", "1979"}, {"title", "Old Title"}},
     [](TaglibTagger& t) {
         t.setSongTitle("New Title");
         t.setTrackNumber("3");
     },
     {{"genre", "Polka"}, {"date", "1979"}, {"title", "New Title"}, {"track", "3"}}},
    {"Utf8BytesStoredAsLatin1Characters",
     {},
     [](TaglibTagger& t) { t.setAlbumName(kCafeUtf8); },
     {{"album", test::latin1BytesAsUtf8(kCafeUtf8)}}},
    {"GenericKeyThroughSetTagProperty",
     {},
     [](TaglibTagger& t) { t.setTagProperty("COMMENT", "from the cellar"); },
     {{"comment", "from the cellar"}}},
};

INSTANTIATE_TEST_SUITE_P(Cases, TaglibTaggerTest, testing::ValuesIn(kTagCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TaglibTagger, Latin1ValueHasOneCharacterPerByte) {
    test::TempDir dir;
    const std::string path = dir.file("track.mp3");
    ASSERT_TRUE(test::makeMp3(path, 0.5));
    TaglibTagger tagger(path.c_str());
    tagger.setSongTitle(kCafeUtf8);
    const TagLib::StringList titles = tagger.getPropertyMap()["TITLE"];
    ASSERT_EQ(titles.size(), 1u);
    const TagLib::String title = titles.front();
    ASSERT_EQ(title.size(), 5u);
    EXPECT_EQ(static_cast<unsigned>(title[3]), 0xC3u);
    EXPECT_EQ(static_cast<unsigned>(title[4]), 0xA9u);
}

// With TagText::Unicode a name reads back as it was typed, whatever the characters; bytes that
// are not UTF-8 still go in one character per byte.
TEST(TaglibTagger, UnicodeTextReadsBackAsTyped) {
    const struct {
        TagText mode;
        const char* given;
        std::string readBack;
    } cases[] = {
        {TagText::Unicode, kCafeUtf8, kCafeUtf8},
        {TagText::Unicode, "\xCE\xA9mega \xE2\x99\xAA \xF0\x9F\x8E\xB5", // outside Latin-1
         "\xCE\xA9mega \xE2\x99\xAA \xF0\x9F\x8E\xB5"},
        {TagText::Unicode, "Caf\xE9", test::latin1BytesAsUtf8("Caf\xE9")},           // Latin-1
        {TagText::Unicode, "\xC0\xAF", test::latin1BytesAsUtf8("\xC0\xAF")},         // overlong
        {TagText::Unicode, "\xED\xA0\x80", test::latin1BytesAsUtf8("\xED\xA0\x80")}, // surrogate
        {TagText::Unicode, "", "Unknown"},
        {TagText::Latin1Bytes, kCafeUtf8, test::latin1BytesAsUtf8(kCafeUtf8)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        test::TempDir dir;
        const std::string path = dir.file("track.mp3");
        ASSERT_TRUE(test::makeMp3(path, 0.5));
        {
            TaglibTagger tagger(path.c_str(), c.mode);
            tagger.setSongTitle(c.given);
            tagger.setArtist(c.given);
        }
        Tags tags = probeTags(path);
        EXPECT_EQ(tags["title"], c.readBack);
        EXPECT_EQ(tags["artist"], c.readBack);
    }
}

TEST(TaglibTagger, NothingReachesTheDiskBeforeDestruction) {
    test::TempDir dir;
    const std::string path = dir.file("track.mp3");
    ASSERT_TRUE(test::makeMp3(path, 0.5, {{"title", "Before"}}));
    const std::string original = fileBytes(path);
    {
        TaglibTagger tagger(path.c_str());
        tagger.setSongTitle("After");
        EXPECT_EQ(fileBytes(path), original);
    }
    EXPECT_EQ(probeTags(path)["title"], "After");
}

TEST(TaglibTagger, MissingOrUnknownFileGivesAnInvalidTaggerThatTouchesNothing) {
    test::TempDir dir;
    const std::string missing = dir.file("no-such.mp3");
    const std::string text = dir.file("notes.txt");
    std::ofstream(text) << "not audio at all\n";
    const std::string textBefore = fileBytes(text);
    {
        TaglibTagger tagger(missing.c_str());
        EXPECT_FALSE(tagger.isValid());
        EXPECT_TRUE(tagger.getPropertyMap().isEmpty());
        tagger.setSongTitle("x");
        tagger.setTrackNumber("1");
    }
    {
        TaglibTagger tagger(text.c_str());
        EXPECT_FALSE(tagger.isValid());
        tagger.setArtist("x");
    }
    EXPECT_FALSE(std::filesystem::exists(missing));
    EXPECT_EQ(fileBytes(text), textBefore);
    EXPECT_EQ(test::filesBelow(dir.path()).size(), 1u);
}

} // namespace
} // namespace waxline
