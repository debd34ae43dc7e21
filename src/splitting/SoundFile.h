#pragma once

#include <sndfile.h>

#include <string>

namespace waxline {

// A sound file opened for reading with libsndfile, closed when it goes out of scope.
class SoundFile {
public:
    explicit SoundFile(const std::string& path)
        : file(sf_open(path.c_str(), SFM_READ, &header)) {}
    ~SoundFile() {
        if (file)
            sf_close(file);
    }
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    explicit operator bool() const { return file != nullptr; }
    SNDFILE* get() const { return file; }
    const SF_INFO& info() const { return header; }

private:
    SF_INFO header{};
    SNDFILE* file;
};

} // namespace waxline
