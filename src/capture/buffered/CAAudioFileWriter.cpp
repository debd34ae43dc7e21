#include "capture/buffered/CAAudioFileWriter.h"

#include "capture/buffered/CAXException.h"

#include <sndfile.h>

namespace waxline {

CAAudioFileWriter::CAAudioFileWriter(int nBuffers, uint32_t bufferSizeFrames)
    : CAPushBufferQueue(nBuffers, bufferSizeFrames) {}

CAAudioFileWriter::~CAAudioFileWriter() {
    if (mRunning.load()) {
        Stop();
    }
    if (sWorkThread != nullptr) {
        sWorkThread->RemoveBuffers(this);
    }
    CloseFile();
}

void CAAudioFileWriter::SetFile(const std::string& parentFolder, const std::string& fileName,
                                const Format& format) {
    CloseFile();
    mPath = parentFolder.empty() ? fileName : parentFolder + "/" + fileName;
    SF_INFO info{};
    info.samplerate = static_cast<int>(format.sampleRate + 0.5);
    info.channels = static_cast<int>(format.channels);
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    mFile = sf_open(mPath.c_str(), SFM_WRITE, &info);
    if (mFile == nullptr) {
        throw CAXException("couldn't create output file", sf_error(nullptr));
    }
    sf_command(mFile, SFC_SET_UPDATE_HEADER_AUTO, nullptr, SF_TRUE);
    SetFormat(format);
    mFramesWritten = 0;
    mWriteFailed = false;
}

void CAAudioFileWriter::CloseFile() {
    if (mFile != nullptr) {
        sf_close(mFile);
        mFile = nullptr;
    }
}

void CAAudioFileWriter::Start() {
    CAPushBufferQueue::Start();
    mRunning = true;
}

void CAAudioFileWriter::Stop() {
    WaitUntilProcessed();
    Flush();
    mRunning = false;
    if (mFile != nullptr) {
        sf_write_sync(mFile);
    }
}

void CAAudioFileWriter::ProcessBuffer(Buffer* buffer) {
    const uint32_t frames = buffer->mEndFrame - buffer->mStartFrame;
    mScratch.mBuffers[0].mData =
        buffer->mStorage.data() + static_cast<std::size_t>(buffer->mStartFrame) * mFormat.channels;
    mScratch.mBuffers[0].mDataByteSize = frames * mBytesPerFrame;
    if (mFile != nullptr && !mWriteFailed.load() && frames > 0) {
        const sf_count_t written = sf_writef_float(mFile, mScratch.mBuffers[0].mData, frames);
        if (written != static_cast<sf_count_t>(frames)) {
            mWriteFailed = true;
        }
        mFramesWritten += static_cast<uint64_t>(written > 0 ? written : 0);
    }
    buffer->mStartFrame = 0;
    buffer->mEndFrame = 0;
}

} // namespace waxline
