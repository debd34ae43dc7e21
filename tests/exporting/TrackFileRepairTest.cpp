#include "exporting/TrackFileCheck.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace {

namespace fs = std::filesystem;
using waxline::exporting::measureTrackFile;
using waxline::exporting::repairTrackFile;

constexpr int kRate = 44100;
constexpr int64_t kFrames = 3 * kRate + 17; // a little over three seconds, stereo 16-bit
constexpr uint64_t kDataOffset = 44;        // libsndfile's plain WAV header

int16_t leftSample(int64_t i) {
    return int16_t(i % 20000);
}
int16_t rightSample(int64_t i) {
    return int16_t(-(i % 15000));
}

void writeTrack(const std::string& path) {
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_TRUE(file);
    std::vector<int16_t> pcm;
    for (int64_t i = 0; i < kFrames; ++i) {
        pcm.push_back(leftSample(i));
        pcm.push_back(rightSample(i));
    }
    ASSERT_EQ(sf_writef_short(file, pcm.data(), kFrames), kFrames);
    sf_close(file);
}

void writeLittleEndian32(const std::string& path, uint64_t at, uint32_t value) {
    std::fstream out(path, std::ios::binary | std::ios::in | std::ios::out);
    out.seekp(std::streamoff(at));
    const unsigned char bytes[4] = {uint8_t(value), uint8_t(value >> 8), uint8_t(value >> 16),
                                    uint8_t(value >> 24)};
    out.write(reinterpret_cast<const char*>(bytes), 4);
}

uint32_t readLittleEndian32(const std::string& path, uint64_t at) {
    std::ifstream in(path, std::ios::binary);
    in.seekg(std::streamoff(at));
    unsigned char b[4] = {};
    in.read(reinterpret_cast<char*>(b), 4);
    return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
}

// What a crash leaves: the header's data size as last written, and maybe half a frame.
TEST(TrackFileRepair, HeadersLeftByACrashAreMadeToSayWhatTheFileHolds) {
    struct Case {
        const char* name;
        int64_t announcedFrames; // the data size the header is left with, in frames
        int tornBytes;           // bytes of a last frame that was not written whole
    };
    const Case cases[] = {
        {"header a second behind", kFrames - kRate, 0},
        {"header never updated", 0, 0},
        {"header behind, torn last frame", kFrames - 2 * kRate, 2},
        {"header right", kFrames, 0},
        {"header ahead of a cut file", kFrames + kRate, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        waxline::test::TempDir dir;
        const std::string path = dir.file("WXRTTmpFile.1.wav");
        writeTrack(path);
        ASSERT_EQ(fs::file_size(path), kDataOffset + uint64_t(kFrames) * 4);
        const uint32_t announced = uint32_t(c.announcedFrames * 4);
        writeLittleEndian32(path, 4, uint32_t(kDataOffset - 8) + announced);
        writeLittleEndian32(path, kDataOffset - 4, announced);
        if (c.tornBytes)
            std::ofstream(path, std::ios::binary | std::ios::app)
                .write("\x7f\x7f\x7f", c.tornBytes);

        const auto before = measureTrackFile(path);
        ASSERT_TRUE(before);
        EXPECT_EQ(before->frames, uint64_t(kFrames));
        EXPECT_EQ(before->sampleRate, uint32_t(kRate));
        EXPECT_EQ(before->channels, 2);
        EXPECT_EQ(before->dataOffset, kDataOffset);
        EXPECT_EQ(before->headerRight(), c.announcedFrames == kFrames && !c.tornBytes);

        ASSERT_TRUE(repairTrackFile(path));
        EXPECT_EQ(fs::file_size(path), kDataOffset + uint64_t(kFrames) * 4);
        EXPECT_EQ(readLittleEndian32(path, 4), uint32_t(kDataOffset - 8 + kFrames * 4));
        EXPECT_EQ(readLittleEndian32(path, kDataOffset - 4), uint32_t(kFrames * 4));

        // Every reader now takes all of it, up to the last frame written.
        SF_INFO info{};
        SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
        ASSERT_TRUE(file);
        EXPECT_EQ(info.frames, kFrames);
        int16_t last[2 * 4];
        ASSERT_EQ(sf_seek(file, kFrames - 4, SEEK_SET), kFrames - 4);
        ASSERT_EQ(sf_readf_short(file, last, 4), 4);
        sf_close(file);
        for (int k = 0; k < 4; ++k) {
            EXPECT_EQ(last[2 * k], leftSample(kFrames - 4 + k));
            EXPECT_EQ(last[2 * k + 1], rightSample(kFrames - 4 + k));
        }
        EXPECT_NEAR(waxline::test::probeDuration(path), double(kFrames) / kRate, 0.001);
    }
}

TEST(TrackFileRepair, WhatIsNoWavFileIsLeftAlone) {
    waxline::test::TempDir dir;
    const std::string text = dir.file("notes.wav");
    std::ofstream(text) << "not a recording at all, just some words\n";
    const auto size = fs::file_size(text);
    EXPECT_FALSE(measureTrackFile(text));
    EXPECT_FALSE(repairTrackFile(text));
    EXPECT_EQ(fs::file_size(text), size);
    EXPECT_FALSE(repairTrackFile(dir.file("missing.wav")));
}

} // namespace
