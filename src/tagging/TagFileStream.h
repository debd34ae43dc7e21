#pragma once

#include <taglib/tbytevector.h>
#include <taglib/tiostream.h>

#include <string>

namespace waxline {

// A TagLib stream over one file that moves the audio in large blocks when a tag grows or
// shrinks. TagLib's own file stream shifts it a kilobyte at a time, which costs tens of
// milliseconds a track on an export whose cores are all busy encoding. The bytes written are
// the same: TagLib still decides every one of them.
class TagFileStream : public TagLib::IOStream {
public:
    // Opens for reading and writing, or for reading only when writing is not allowed.
    explicit TagFileStream(const std::string& path);
    ~TagFileStream() override;
    TagFileStream(const TagFileStream&) = delete;
    TagFileStream& operator=(const TagFileStream&) = delete;

    TagLib::FileName name() const override;
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, unsigned long start = 0,
                unsigned long replace = 0) override;
    void removeBlock(unsigned long start = 0, unsigned long length = 0) override;
    bool readOnly() const override;
    bool isOpen() const override;
    void seek(long offset, Position p = Beginning) override;
    long tell() const override;
    long length() override;
    void truncate(long length) override;

    // Whether a write failed (a full disk, say); the stream writes nothing more after one.
    bool failed() const { return writeFailed; }

private:
    bool writeAt(const char* data, size_t size, long offset);
    bool moveBlock(long from, long to, long size);

    std::string path;
    int fd = -1;
    bool writable = false;
    bool writeFailed = false;
    long position = 0;
};

} // namespace waxline
