#include "capture/Audio.h"

#include "capture/buffered/CAAudioFileRecorder.h"
#include "capture/buffered/CAXException.h"
#include "capture/chain/FilterSwap.h"
#include "capture/chain/InputChain.h"
#include "capture/devices/UsbEnumeration.h"
#include "capture/monitor/CAPlayThrough.h"
#include "exportfolder/ExportFolder.h"
#include "splitting/RecordedSide.h"
#include "util/SpscFifo.h"

#include <QStandardPaths>

#include <unistd.h>

#include <cerrno>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace waxline {

using Sonra::Audio::Filters::AudioFilter;
using Sonra::Audio::Filters::GapDetector;

namespace {

// The gap detector's diagnostic lines come from the audio thread, which may not write to a
// stream: they wait here until the main thread prints them.
struct DiagnosticLine {
    std::array<char, 96> text;
};
SpscFifo<DiagnosticLine> diagnosticLines(64);
std::atomic<uint64_t> diagnosticLinesLost{0};

void queueDiagnostic(const char* line) {
    DiagnosticLine item{};
    std::strncpy(item.text.data(), line, item.text.size() - 1);
    if (!diagnosticLines.tryPush(item))
        diagnosticLinesLost.fetch_add(1, std::memory_order_relaxed);
}

constexpr auto kPollInterval = std::chrono::milliseconds(10);

} // namespace

void GapDetectorListener::TrackSilenceStarted() {
    audio.trackGapDetected();
}

void GapDetectorListener::AlbumEnded() {
    audio.albumEndDetected();
}

Audio::Audio(platform::Platform& platform, MonitorFactory monitorFactory, QObject* parent)
    : QObject(parent)
    , mPlatform(platform)
    , mMonitorFactory(monitorFactory ? std::move(monitorFactory)
                                     : MonitorFactory(makePlayThroughHost)) {
    gapDetectorListener = std::make_unique<GapDetectorListener>(*this);
    mGapDetector = std::make_unique<GapDetector>(*gapDetectorListener, 44100);
    mGapDetector->SetDiagnosticWriter(queueDiagnostic);
    gapDetector.store(mGapDetector.get(), std::memory_order_release);

    mInputDeviceList = std::make_unique<AudioDeviceList>(*mPlatform.audio, true);
    mOutputDeviceList = std::make_unique<AudioDeviceList>(*mPlatform.audio, false);
    mInputDeviceID = mPreviousInputDeviceID =
        mPlatform.audio->defaultDevice(platform::Direction::Input);
    mOutputDeviceID = mPlatform.audio->defaultDevice(platform::Direction::Output);
    setExportFolder(defaultExportFolder());

    // Platform thread: only flag it; the poll rebuilds the list and detects again.
    mDeviceListListener = mPlatform.audio->onDeviceListChanged(
        [this] { mPendingDeviceListChange.store(true, std::memory_order_release); });

    // The monitor's failed start ends the process; the delegate hears why first.
    setMonitorStartFailureNotice([this](const MonitorStartFailure& failure) {
        if (mDelegate)
            mDelegate->audioMonitorCannotStart(monitorFailureOf(failure));
    });

    mPoll.setInterval(kPollInterval);
    QObject::connect(&mPoll, &QTimer::timeout, this, [this] { processPendingEvents(); });
    mPoll.start();
}

Audio::~Audio() {
    // The platform may outlive this object: its notifications must not reach it any more.
    mPlatform.audio->removeListener(mDeviceListListener);
    setMonitorStartFailureNotice({});
    mPoll.stop();
    mExcerpt.stop();
    _recorderEngine.reset();
    _playThru.reset();
    gapDetector.store(nullptr, std::memory_order_release);
    mGapDetector.reset();
    gapDetectorListener.reset();
}

std::string Audio::defaultExportFolder() {
    return waxline::defaultExportFolder();
}

void Audio::setExportFolder(const std::string& folder) {
    _outputFolderPathBase = folder;
}

void Audio::log(const char* format, const char* what) {
    std::fprintf(stderr, format, what);
    std::fputc('\n', stderr);
}

unsigned Audio::countDevicesWithMatchingName() {
    if (!mDevice || mInputDeviceList->empty())
        return 0;
    unsigned n = 0;
    for (const auto& d : mInputDeviceList->GetList())
        if (mDevice->NameMatch(d.mName))
            ++n;
    return n;
}

int Audio::detectAudioDevice() {
    rebuildInputDevicesList();
    UsbEnumeration usb(*mPlatform.usb);
    mDevice = nullptr;
    mOtherInput = false;
    if (usb.numberOfDetectedDevices() == 0)
        return 0;
    if (usb.numberOfDetectedDevices() > 1)
        return 2;
    mDevice = usb.device();
    const unsigned matching = countDevicesWithMatchingName();
    if (matching == 0)
        return 0;
    if (matching > 1)
        return 3;
    selectInputFromDeviceList();
    return 1;
}

bool Audio::mightBeTurntableOrTape() const {
    return mOtherInput || (mDevice && mDevice->genericChip && mDevice->turntableOrTape);
}

std::vector<InputChoice> Audio::audioInputs() {
    std::vector<InputChoice> inputs;
    for (const auto& d : mPlatform.audio->devices(platform::Direction::Input))
        inputs.push_back({d.id, d.name});
    return inputs;
}

bool Audio::selectOtherInput(uint32_t id) {
    if (!mPlatform.audio->device(id, platform::Direction::Input))
        return false;
    mDevice = nullptr;
    mOtherInput = true;
    selectInput(id);
    return true;
}

void Audio::setNoFilter() {
    log("%s", "setNoFilter");
    setFilterType(AudioFilter::NoFilter);
}

void Audio::setRIAAFilter() {
    log("%s", "setRIAAFilter");
    if (!mDevice) {
        if (mOtherInput)
            setFilterType(AudioFilter::RIAAPlayback);
        return;
    }
    if (mDevice->usbId == UsbID{0x0D8C, 0x0131}) {
        log("%s: Setting no filter", "setRIAAFilter");
        setFilterType(AudioFilter::NoFilter);
    } else if (mDevice->riaa) {
        log("%s: Setting RIAA filter", "setRIAAFilter");
        setFilterType(AudioFilter::RIAAPlayback);
    } else {
        log("%s: Setting BrightSpin filter", "setRIAAFilter");
        setFilterType(AudioFilter::BrightSpin);
    }
}

void Audio::setChromeFilter() {
    log("%s", "setChromeFilter");
    setFilterType(AudioFilter::ChromeTape);
}

void Audio::setBrightSpinFilter() {
    log("%s", "setBrightSpinFilter");
    setFilterType(AudioFilter::BrightSpin);
}

MonitorFailure Audio::monitorFailureOf(const MonitorStartFailure& failure) const {
    MonitorFailure typed;
    typed.status = static_cast<int>(failure.status);
    switch (failure.status) {
    case platform::kErrorUnknownDevice:
        typed.reason = MonitorFailureReason::DeviceUnknown;
        break;
    case platform::kErrorOpenFailed:
        typed.reason = MonitorFailureReason::OpenFailed;
        break;
    case platform::kErrorNotConnected:
        typed.reason = MonitorFailureReason::NotConnected;
        break;
    default:
        typed.reason = MonitorFailureReason::Other;
        break;
    }
    platform::AudioObjectID input = failure.input;
    if (input == platform::kDefaultDevice)
        input = mPlatform.audio->defaultDevice(platform::Direction::Input);
    if (auto device = mPlatform.audio->device(input, platform::Direction::Input))
        typed.inputName = device->name;
    return typed;
}

void Audio::resetTrackCounter() {
    _tracks = 0;
    // A new side is counted from here: the silence heard since the last album end (Record
    // pressed before the next side plays) must not end this one at once with no track.
    mGapDetector->RestartAlbumCount();
}

void Audio::setAutomaticTrackSplit(bool on) {
    log("%s", "setAutomaticTrackSplit");
    automaticTrackSplit.store(on, std::memory_order_release);
    mGapDetector->Reset();
}

uint32_t Audio::selectInputFromDeviceList() {
    if (!mDevice || mInputDeviceList->empty())
        return 0xFFFFFFFF;
    const auto& list = mInputDeviceList->GetList();
    const AudioDeviceList::Device* chosen = nullptr;
    for (size_t i = 0; i < list.size(); ++i) {
        std::fprintf(stderr, "selectInputFromDeviceList Device = %d %s, %s\n", static_cast<int>(i),
                     list[i].mName.c_str(), mDevice->name);
        if (mDevice->NameMatch(list[i].mName)) {
            chosen = &list[i];
            break;
        }
    }
    if (!chosen)
        return 0xFFFFFFFF;
    return selectInput(chosen->mID);
}

uint32_t Audio::selectInput(platform::AudioObjectID id) {
    if (id == mInputDeviceID && _playThru)
        return 0;
    if (id != platform::kNoDevice)
        mInputDeviceID = id;
    _playThru.reset();
    mPlayThroughTarget = choosePlayThroughOutput(*mPlatform.audio, mInputDeviceID, mOutputDeviceID);
    _playThru = mMonitorFactory(*mPlatform.audio, mInputDeviceID, mPlayThroughTarget.output);
    if (_playThru)
        _playThru->SetInputGain(m_gainDb);
    return id == platform::kNoDevice ? 0xFFFFFFFF : 0;
}

void Audio::rebuildInputDevicesList() {
    mInputDeviceList = std::make_unique<AudioDeviceList>(*mPlatform.audio, true);
}

void Audio::startPlayThru() {
    // The monitor and an excerpt would play into the same speakers at once.
    stopExcerpt();
    if (_playThru)
        _playThru->Start();
    mGapDetector->Reset();
}

void Audio::stopPlayThru() {
    if (!_playThru)
        return;
    _playThru->Stop();
    const MonitorDrops drops = _playThru->Drops();
    if (drops.skips || drops.outputUnderflows || drops.inputOverflows)
        std::fprintf(stderr,
                     "CAPlayThrough: to hold its latency the monitor skipped %.1f ms of input in "
                     "%llu places; the output ran dry %llu times, the input overflowed %llu "
                     "times\n",
                     drops.skippedMs, static_cast<unsigned long long>(drops.skips),
                     static_cast<unsigned long long>(drops.outputUnderflows),
                     static_cast<unsigned long long>(drops.inputOverflows));
}

std::string Audio::fileNameForTrack(int track) const {
    return trackFilePath(_outputFolderPathBase, track);
}

// Audio input thread.
void Audio::trackGapDetected() {
    if (mRecording.load(std::memory_order_acquire) &&
        automaticTrackSplit.load(std::memory_order_acquire))
        mPendingNewTracks.fetch_add(1, std::memory_order_acq_rel);
}

// Audio input thread.
void Audio::albumEndDetected() {
    if (mRecording.load(std::memory_order_acquire) &&
        automaticTrackSplit.load(std::memory_order_acquire))
        mPendingAlbumEnd.store(true, std::memory_order_release);
}

void Audio::albumEndDetectedOnMainThread() {
    stopRecording();
    // The file opened at the last gap holds only the run-out: it stays on disk, uncounted.
    --_tracks;
    if (mDelegate)
        mDelegate->audioDetectedAlbumEnd();
}

void Audio::processPendingEvents() {
    DiagnosticLine line;
    while (diagnosticLines.tryPop(line))
        std::fputs(line.text.data(), stderr);
    if (double ms = 0; _playThru && _playThru->TakeSettledLatency(ms))
        std::fprintf(stderr,
                     "CAPlayThrough: monitor latency settled at %.1f ms, the lowest that holds on "
                     "this audio server\n",
                     ms);

    if (mPendingDeviceListChange.exchange(false, std::memory_order_acq_rel)) {
        rebuildInputDevicesList();
        detectAudioDevice();
    }
    if (mPendingWriteFailure.exchange(false, std::memory_order_acq_rel))
        endRecordingWith(mWriteFailure);
    if (mPendingDeviceGone.exchange(false, std::memory_order_acq_rel))
        endRecordingWith({mPlatform.audio->serverReachable() ? RecordingStopReason::DeviceGone
                                                             : RecordingStopReason::ServerGone,
                          {},
                          {}});
    // Splits and the album end are handled in the order they can occur: gaps first.
    for (int n = mPendingNewTracks.exchange(0, std::memory_order_acq_rel); n > 0; --n)
        if (recording())
            newTrack();
    if (mPendingAlbumEnd.exchange(false, std::memory_order_acq_rel) && recording())
        albumEndDetectedOnMainThread();
    mExcerpt.closeWhenDone();
}

void Audio::endRecordingWith(const RecordingStop& stop) {
    if (!_recorderEngine)
        return;
    stopRecording();
    if (mDelegate)
        mDelegate->audioRecordingStopped(stop);
    else
        std::fprintf(stderr, "Recording stopped (reason %d) %s %s\n", static_cast<int>(stop.reason),
                     stop.path.c_str(), stop.errorText.c_str());
}

void Audio::showAlert(const CaptureAlert& alert) {
    if (mDelegate)
        mDelegate->audioShowAlert(alert);
    else
        AudioDelegate().audioShowAlert(alert);
}

void Audio::adoptRecordedTracks(int count) {
    if (!recording())
        _tracks = count < 0 ? 0 : count;
}

bool Audio::recording() const {
    return _recorderEngine && _recorderEngine->isRunning();
}

void Audio::makeExportFolder() {
    std::error_code ec;
    if (!std::filesystem::exists(_outputFolderPathBase, ec) &&
        !std::filesystem::create_directories(_outputFolderPathBase, ec))
        std::fprintf(stderr, "Error: Create folder failed %s\n", "WXRTTmp");
}

// Sets the detector to the input device's rate (or resets it when the rate is unknown) and
// returns that rate, 0 when it could not be read.
double Audio::setDetectorToInputRate() {
    double rate = 0;
    if (auto in = mPlatform.audio->device(mInputDeviceID, platform::Direction::Input))
        rate = in->actualSampleRate;
    else
        std::fprintf(stderr, "Get sample rate failed (%u)\n",
                     unsigned(platform::kErrorUnknownDevice));
    if (rate != 0)
        mGapDetector->SetSampleRate(static_cast<unsigned>(rate));
    else
        mGapDetector->Reset();
    return rate;
}

std::unique_ptr<RecorderEngine> Audio::newRecorderEngine(const std::string& path) {
    makeExportFolder();
    double rate = setDetectorToInputRate();
    // The file takes the output device's rate when it can be read: required as it stands.
    if (auto out = mPlatform.audio->device(mOutputDeviceID, platform::Direction::Output))
        rate = out->actualSampleRate;
    else
        std::fprintf(stderr, "Get sample rate failed (%u)\n",
                     unsigned(platform::kErrorUnknownDevice));
    mFileSampleRate = rate;

    auto engine = std::make_unique<RecorderEngine>(*mPlatform.audio, mInputDeviceID);
    if (mTimeLimitSeconds > 0)
        engine->setFrameLimit(
            std::max<uint64_t>(1, static_cast<uint64_t>(std::llround(mTimeLimitSeconds * rate))));
    TrackFileError error;
    if (!engine->beginFile(path, rate, m_gainDb, error)) {
        std::fprintf(stderr, "cannot create %s: %s\n", error.path.c_str(), error.text.c_str());
        return nullptr;
    }
    // Writer thread / platform thread: flag only; the poll stops the recording.
    engine->setFailureHandler([this](const TrackFileError& failure) {
        const bool full = failure.errorNumber == ENOSPC || failure.errorNumber == EDQUOT;
        const bool gone = failure.errorNumber == ENOENT;
        mWriteFailure = {full   ? RecordingStopReason::DiskFull
                         : gone ? RecordingStopReason::FolderGone
                                : RecordingStopReason::WriteFailed,
                         failure.path, failure.text};
        mPendingWriteFailure.store(true, std::memory_order_release);
    });
    engine->setEndHandler([this] { mPendingDeviceGone.store(true, std::memory_order_release); });
    return engine;
}

std::unique_ptr<CAAudioFileRecorder> Audio::newRecorder(const std::string& path) {
    makeExportFolder();
    ::unlink(path.c_str());
    const double rate = setDetectorToInputRate();

    try {
        auto recorder =
            std::make_unique<CAAudioFileRecorder>(*mPlatform.audio, mInputDeviceID, 3, 32768);
        const std::filesystem::path file(path);
        const std::filesystem::path folder = file.parent_path();
        std::error_code ec;
        if (folder.empty() || !file.has_filename() || !std::filesystem::is_directory(folder, ec))
            throw CAXException("couldn't find output directory", ENOENT);
        recorder->SetInputGain(m_gainDb);
        // Interleaved 32-bit float stereo at the input's rate (0: the device's own format).
        CABufferQueue::Format format;
        format.sampleRate = rate;
        format.channels = 2;
        recorder->SetFile(folder.string(), file.filename().string(), format);
        return recorder;
    } catch (const CAXException& e) {
        std::fprintf(stderr, "newRecorder Error: %s (%s)\n", e.Operation(),
                     CAXException::FormatStatus(e.Status()).c_str());
    } catch (...) {
        std::fprintf(stderr, "newRecorder An unknown error occurred\n");
    }
    return nullptr;
}

bool Audio::newTrack() {
    setInputDevice(mInputDeviceID);
    ++_tracks;
    _outputFilePath = fileNameForTrack(_tracks);

    const bool monitorWasRunning = _playThru && _playThru->IsRunning();
    if (monitorWasRunning)
        _playThru->Stop();

    bool made = true;
    if (recording()) {
        // The capture keeps running: the new file takes over at the next captured buffer.
        TrackFileError error;
        if (!_recorderEngine->beginFile(_outputFilePath, mFileSampleRate, m_gainDb, error)) {
            std::fprintf(stderr, "cannot create %s: %s\n", error.path.c_str(), error.text.c_str());
            --_tracks;
            std::error_code ec;
            const bool folderGone = !std::filesystem::is_directory(_outputFolderPathBase, ec);
            endRecordingWith(
                {folderGone ? RecordingStopReason::FolderGone : RecordingStopReason::FileNotCreated,
                 error.path, error.text});
            made = false;
        }
    } else {
        // An input that monitors the output would record the excerpt too.
        stopExcerpt();
        _recorderEngine = newRecorderEngine(_outputFilePath);
        if (_recorderEngine) {
            std::string error;
            if (!_recorderEngine->start(error))
                std::fprintf(stderr, "engine failed to start: %s\n", error.c_str());
        } else {
            made = false;
            showAlert({"IDS_WARNING",
                       "There was a problem creating the audio file. Your recording may not be "
                       "successful.",
                       "IDS_CONTINUE"});
        }
    }
    mRecording.store(recording(), std::memory_order_release);
    _startHostTime = platform::hostTime();
    if (monitorWasRunning)
        _playThru->Start();
    return made;
}

void Audio::stopRecording() {
    if (_recorderEngine) {
        _recorderEngine->stop();
        mLastCounters = _recorderEngine->counters();
        _recorderEngine.reset();
    }
    mRecording.store(false, std::memory_order_release);
    if (mPlatform.audio->setDefaultInput(mPreviousInputDeviceID) != platform::kNoError)
        std::fprintf(stderr, "Error: Input device was not reset\n");
}

uint64_t Audio::currentTrackLengthNanos() const {
    return platform::hostTimeToNanos(platform::hostTime() - _startHostTime);
}

double Audio::currentTrackSeconds() const {
    if (!_recorderEngine || mFileSampleRate <= 0)
        return 0;
    return static_cast<double>(_recorderEngine->counters().currentFileFrames) / mFileSampleRate;
}

RecorderEngine::Counters Audio::recorderCounters() const {
    return _recorderEngine ? _recorderEngine->counters() : mLastCounters;
}

void Audio::setGainDb(float db) {
    m_gainDb = db;
    if (_playThru)
        _playThru->SetInputGain(db);
}

bool Audio::playExcerpt(int64_t firstFrame, int64_t frames) {
    if (recording() || (_playThru && _playThru->IsRunning()))
        return false;
    stopExcerpt();
    // A stretch around a split near the side's start begins before it: play what there is.
    if (firstFrame < 0) {
        frames += firstFrame;
        firstFrame = 0;
    }
    const SideOpen opened = openRecordedSide(_outputFolderPathBase, _tracks);
    if (opened.problem != SideProblem::None)
        return false;
    return mExcerpt.play(*mPlatform.audio, mOutputDeviceID,
                         {static_cast<double>(opened.side.sampleRate), opened.side.channels,
                          readSideRange(opened.side, firstFrame, frames)});
}

void Audio::stopExcerpt() {
    mExcerpt.stop();
}

platform::Status Audio::setInputDevice(platform::AudioObjectID id) {
    return mPlatform.audio->setDefaultInput(id);
}

} // namespace waxline
