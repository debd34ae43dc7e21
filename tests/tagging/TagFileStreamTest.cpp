#include "tagging/TagFileStream.h"
#include "tagging/TaglibTagger.h"

#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <taglib/fileref.h>
#include <taglib/tbytevectorstream.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <utility>

namespace waxline {
namespace {

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Bytes that differ from their neighbours everywhere, so a block moved by one byte shows.
TagLib::ByteVector patterned(unsigned int size, unsigned int seed) {
    TagLib::ByteVector bytes(size, '\0');
    uint32_t x = seed * 2654435761u + 1;
    for (unsigned int i = 0; i < size; ++i) {
        x = x * 1664525u + 1013904223u;
        bytes[i] = static_cast<char>(x >> 24);
    }
    return bytes;
}

struct StreamCase {
    const char* name;
    unsigned int size; // of the file before the operations
    std::function<void(TagLib::IOStream&)> operations;
};

void PrintTo(const StreamCase& c, std::ostream* os) {
    *os << c.name;
}

class TagFileStreamTest : public testing::TestWithParam<StreamCase> {};

// TagLib's in-memory stream is the reference: the same operations on a file must leave the
// same bytes, and the reads along the way must see the same data.
TEST_P(TagFileStreamTest, EndsWithTheBytesOfTagLibsMemoryStream) {
    const StreamCase& c = GetParam();
    const TagLib::ByteVector original = patterned(c.size, c.size);
    test::TempDir dir;
    const std::string path = dir.file("stream.bin");
    std::ofstream(path, std::ios::binary).write(original.data(), original.size());

    TagLib::ByteVectorStream reference(original);
    c.operations(reference);
    {
        TagFileStream stream(path);
        ASSERT_TRUE(stream.isOpen());
        c.operations(stream);
        EXPECT_FALSE(stream.failed());
        EXPECT_EQ(stream.length(), reference.length());
        stream.seek(0);
        reference.seek(0);
        EXPECT_TRUE(stream.readBlock(1 << 24) == reference.readBlock(1 << 24));
    }
    const TagLib::ByteVector& expected = *reference.data();
    EXPECT_TRUE(fileBytes(path) == std::string(expected.data(), expected.size()));
}

constexpr unsigned int kLarge = 700'001; // several of the stream's blocks, and an odd length

const StreamCase kStreamCases[] = {
    {"GrowAtTheStartOverManyBlocks", kLarge,
     [](TagLib::IOStream& s) { s.insert(patterned(3000, 1), 0, 45); }},
    {"GrowByOneByte", kLarge, [](TagLib::IOStream& s) { s.insert(patterned(46, 2), 0, 45); }},
    {"GrowInTheMiddle", kLarge,
     [](TagLib::IOStream& s) { s.insert(patterned(300'000, 3), 123'456, 10); }},
    {"ShrinkAtTheStart", kLarge, [](TagLib::IOStream& s) { s.insert(patterned(10, 4), 0, 5000); }},
    {"ReplaceInPlace", kLarge, [](TagLib::IOStream& s) { s.insert(patterned(999, 5), 77, 999); }},
    {"InsertAtTheEnd", 1000, [](TagLib::IOStream& s) { s.insert(patterned(128, 6), 1000, 0); }},
    {"RemoveFromTheMiddle", kLarge, [](TagLib::IOStream& s) { s.removeBlock(262'143, 262'146); }},
    {"RemoveTheTail", kLarge, [](TagLib::IOStream& s) { s.removeBlock(kLarge - 128, 128); }},
    {"WritesAfterSeeksAndReads", kLarge,
     [](TagLib::IOStream& s) {
         s.seek(-128, TagLib::IOStream::End);
         const TagLib::ByteVector tail = s.readBlock(500); // past the end: only 128 come back
         s.seek(10);
         s.writeBlock(tail);
         s.seek(5, TagLib::IOStream::Current);
         s.writeBlock(patterned(7, 7));
         s.seek(0, TagLib::IOStream::End);
         s.writeBlock(patterned(128, 8));
     }},
    {"TruncateThenGrow", kLarge,
     [](TagLib::IOStream& s) {
         s.truncate(300'000);
         s.insert(patterned(2048, 9), 100, 0);
     }},
};

INSTANTIATE_TEST_SUITE_P(Cases, TagFileStreamTest, testing::ValuesIn(kStreamCases),
                         [](const auto& info) { return std::string(info.param.name); });

// The tagger goes through the stream; what it writes must be what TagLib writes through its
// own file stream, byte for byte, whether the tag grows past the audio or fits its padding.
TEST(TagFileStream, TaggerWritesTheBytesTagLibWritesThroughItsOwnFile) {
    test::TempDir dir;
    const std::string made = dir.file("made.mp3");
    ASSERT_TRUE(test::makeMp3(made, 90.0, {{"genre", "Polka"}}));
    ASSERT_GT(std::filesystem::file_size(made), 2u * 256 * 1024); // more than one block

    const std::string mine = dir.file("mine.mp3");
    const std::string theirs = dir.file("theirs.mp3");
    std::filesystem::copy_file(made, mine);
    std::filesystem::copy_file(made, theirs);
    const std::string longTitle(5000, 'x'); // past any padding the first tagging left
    for (const char* title : {"Side Two Opener", "Short", longTitle.c_str()}) {
        SCOPED_TRACE(std::string(title).substr(0, 20));
        {
            TaglibTagger tagger(mine.c_str());
            ASSERT_TRUE(tagger.isValid());
            tagger.setSongTitle(title);
            tagger.setArtist("The Grooves");
            tagger.setTrackNumber("7");
        }
        {
            // What the tagger does, key by key, through TagLib's own file stream.
            TagLib::FileRef file(theirs.c_str());
            ASSERT_FALSE(file.isNull());
            for (const auto& [key, value] : {std::pair<const char*, const char*>{"TITLE", title},
                                             {"ARTIST", "The Grooves"},
                                             {"TRACKNUMBER", "7"}}) {
                TagLib::PropertyMap map = file.file()->properties();
                map.replace(key, TagLib::StringList(TagLib::String(value, TagLib::String::Latin1)));
                file.file()->setProperties(map);
            }
            file.save();
        }
        const std::string mineBytes = fileBytes(mine), theirBytes = fileBytes(theirs);
        ASSERT_EQ(mineBytes.size(), theirBytes.size());
        ASSERT_TRUE(mineBytes == theirBytes) << "same length, different bytes";
    }
    EXPECT_EQ(test::probeTags(mine)["title"], longTitle);
}

} // namespace
} // namespace waxline
