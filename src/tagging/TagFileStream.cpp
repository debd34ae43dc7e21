#include "tagging/TagFileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace waxline {

namespace {

// Big enough that shifting a 10 MB file takes a few dozen calls, small enough to be cheap to
// allocate for every tag that grows.
constexpr long kBlockSize = 256 * 1024;

} // namespace

TagFileStream::TagFileStream(const std::string& path)
    : path(path) {
    fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    writable = fd >= 0;
    if (fd < 0)
        fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

TagFileStream::~TagFileStream() {
    if (fd >= 0)
        ::close(fd);
}

TagLib::FileName TagFileStream::name() const {
    return path.c_str();
}

bool TagFileStream::readOnly() const {
    return !writable;
}

bool TagFileStream::isOpen() const {
    return fd >= 0;
}

TagLib::ByteVector TagFileStream::readBlock(unsigned long length) {
    if (fd < 0 || length == 0)
        return {};
    TagLib::ByteVector block(static_cast<unsigned int>(length), '\0');
    size_t got = 0;
    while (got < length) {
        const ssize_t n = ::pread(fd, block.data() + got, length - got, position + long(got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        got += static_cast<size_t>(n);
    }
    block.resize(static_cast<unsigned int>(got));
    position += static_cast<long>(got);
    return block;
}

bool TagFileStream::writeAt(const char* data, size_t size, long offset) {
    if (!writable || writeFailed)
        return false;
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::pwrite(fd, data + done, size - done, offset + long(done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            writeFailed = true;
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

void TagFileStream::writeBlock(const TagLib::ByteVector& data) {
    if (writeAt(data.data(), data.size(), position))
        position += static_cast<long>(data.size());
}

// Copies `size` bytes from `from` to `to` within the file; the ranges may overlap. Going
// from the far end when moving towards the end means no byte is overwritten before it is read.
bool TagFileStream::moveBlock(long from, long to, long size) {
    std::vector<char> buffer(static_cast<size_t>(std::min(size, kBlockSize)));
    const bool backwards = to > from;
    for (long moved = 0; moved < size;) {
        const long chunk = std::min(kBlockSize, size - moved);
        const long offset = backwards ? size - moved - chunk : moved;
        size_t got = 0;
        while (got < size_t(chunk)) {
            const ssize_t n =
                ::pread(fd, buffer.data() + got, size_t(chunk) - got, from + offset + long(got));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return false;
            got += static_cast<size_t>(n);
        }
        if (!writeAt(buffer.data(), got, to + offset))
            return false;
        moved += chunk;
    }
    return true;
}

void TagFileStream::insert(const TagLib::ByteVector& data, unsigned long start,
                           unsigned long replace) {
    const long at = static_cast<long>(start);
    const long size = static_cast<long>(data.size());
    const long replaced = static_cast<long>(replace);
    if (size < replaced) {
        removeBlock(start + data.size(), replace - data.size());
    } else if (size > replaced) {
        const long tail = length() - at - replaced;
        if (tail > 0 && !moveBlock(at + replaced, at + size, tail))
            return;
    }
    seek(at);
    writeBlock(data);
}

void TagFileStream::removeBlock(unsigned long start, unsigned long length) {
    const long at = static_cast<long>(start);
    const long removed = static_cast<long>(length);
    const long total = this->length();
    if (removed <= 0 || at >= total)
        return;
    const long tail = std::max(0L, total - at - removed);
    if (tail > 0 && !moveBlock(at + removed, at, tail))
        return;
    truncate(at + tail);
}

void TagFileStream::seek(long offset, Position p) {
    switch (p) {
    case Beginning:
        position = offset;
        break;
    case Current:
        position += offset;
        break;
    case End:
        position = length() + offset;
        break;
    }
    position = std::max(0L, position);
}

long TagFileStream::tell() const {
    return position;
}

long TagFileStream::length() {
    struct stat st {};
    return fd >= 0 && ::fstat(fd, &st) == 0 ? static_cast<long>(st.st_size) : 0;
}

void TagFileStream::truncate(long length) {
    if (!writable || writeFailed)
        return;
    if (::ftruncate(fd, length) != 0)
        writeFailed = true;
}

} // namespace waxline
