#pragma once

#include "capture/buffered/CABufferQueue.h"

#include <atomic>
#include <string>

struct sf_private_tag;

namespace waxline {

// Writes the buffers of a push queue to a WAV file of interleaved 32-bit float frames on the
// shared worker thread. The header is rewritten with every write, so the file stays readable if
// the process dies. A failing write stops further writing and is counted.
class CAAudioFileWriter : public CAPushBufferQueue {
public:
    CAAudioFileWriter(int nBuffers, uint32_t bufferSizeFrames);
    ~CAAudioFileWriter() override;

    // Control thread. Creates (replacing) parentFolder/fileName and prepares the queue for
    // `format`. Throws CAXException("couldn't create output file", errno-like status).
    void SetFile(const std::string& parentFolder, const std::string& fileName,
                 const Format& format);
    void CloseFile();

    void Start() override;
    // Waits for the queued buffers, writes the partly filled one, and stops.
    void Stop() override;
    bool IsRunning() const { return mRunning.load(); }

    uint64_t FramesWritten() const { return mFramesWritten.load(); }
    bool WriteFailed() const { return mWriteFailed.load(); }
    const std::string& Path() const { return mPath; }

protected:
    void ProcessBuffer(Buffer* buffer) override;

private:
    sf_private_tag* mFile = nullptr;
    std::string mPath;
    std::atomic<bool> mRunning{false};
    std::atomic<bool> mWriteFailed{false};
    std::atomic<uint64_t> mFramesWritten{0};
};

} // namespace waxline
