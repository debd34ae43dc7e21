#include "cli/RecordSession.h"

#include "capture/Audio.h"
#include "capture/RecordingSequence.h"
#include "capture/chain/FilterSwap.h"
#include "capture/chain/InputChain.h"
#include "cli/PlatformWords.h"
#include "cli/Terminal.h"
#include "exporting/EarlyEncoder.h"
#include "platform/Platform.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace waxline::cli {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void onInterrupt(int) {
    interrupted = 1;
}

// A Qt event loop needs an application object; the command line makes one when none exists.
std::unique_ptr<QCoreApplication> ensureApplication() {
    if (QCoreApplication::instance())
        return nullptr;
    static int argc = 1;
    static char name[] = "waxline-cli";
    static char* argv[] = {name, nullptr};
    return std::make_unique<QCoreApplication>(argc, argv);
}

// What the file library and the system said, in parentheses; nothing when they said nothing
// useful (libsndfile answers "No Error." when the fault lay elsewhere).
std::string detailOf(const RecordingStop& stop) {
    if (stop.errorText.empty() || stop.errorText.rfind("No Error", 0) == 0)
        return {};
    return " (" + stop.errorText + ")";
}

std::string folderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

// The command line's words for a recording that ended by itself: what failed and what to do.
std::string describe(const RecordingStop& stop) {
    switch (stop.reason) {
    case RecordingStopReason::DeviceGone:
        break;
    case RecordingStopReason::ServerGone:
        return "The sound server (PulseAudio or PipeWire) stopped answering, so the recording "
               "was stopped; the tracks recorded so far are kept. Check that the sound works, "
               "then record again.";
    case RecordingStopReason::DiskFull:
        return "The disk is full: the recording was stopped while writing " + stop.path +
               ". What was recorded before is kept; free space on the disk that holds " +
               folderOf(stop.path) + " and record again.";
    case RecordingStopReason::WriteFailed:
        return "The recording was stopped because track file " + stop.path +
               " could not be written" + detailOf(stop) +
               ". What was recorded before is kept; check the disk and record again.";
    case RecordingStopReason::FolderGone: {
        std::error_code ec;
        if (std::filesystem::is_directory(folderOf(stop.path), ec))
            return "Track file " + stop.path +
                   " was deleted while recording, and what it held went with it; the recording "
                   "was stopped. The tracks before it are kept.";
        return "The export folder " + folderOf(stop.path) +
               " was removed while recording, and every track recorded into it went with it; "
               "the recording was stopped. Record the side again.";
    }
    case RecordingStopReason::FileNotCreated:
        return "The recording was stopped because the next track file " + stop.path +
               " could not be created" + detailOf(stop) +
               ". What was recorded before is kept; check the export folder and record again.";
    }
    return "The recording device was disconnected; the recording has been stopped and the "
           "tracks recorded so far are kept.";
}

class SessionDelegate : public AudioDelegate {
public:
    bool albumEnded = false;
    std::string stoppedReason;
    void audioDetectedAlbumEnd() override { albumEnded = true; }
    void audioRecordingStopped(const RecordingStop& stop) override {
        stoppedReason = describe(stop);
        std::fprintf(userErr(), "\nwaxline-cli record: %s\n", stoppedReason.c_str());
    }
    // The keys are printed as they are: the command line has no catalogue.
    void audioShowAlert(const CaptureAlert& alert) override {
        std::fprintf(userErr(), "\n%s: %s (%s)\n", alert.titleKey.c_str(), alert.message.c_str(),
                     alert.buttonKey.c_str());
        if (stoppedReason.empty())
            stoppedReason = alert.message;
    }
};

std::string dbfs(float peak) {
    char text[32];
    if (peak <= 0)
        return "  -inf";
    std::snprintf(text, sizeof text, "%6.1f", 20.0 * std::log10(peak));
    return text;
}

std::string clock(double seconds) {
    // Rounded as the application's elapsed-time field does.
    const unsigned total = static_cast<unsigned>(std::lround(seconds));
    char text[32];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u", total / 3600, total / 60 % 60, total % 60);
    return text;
}

double wavSeconds(const std::string& path) {
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f)
        return -1;
    sf_close(f);
    return info.samplerate ? static_cast<double>(info.frames) / info.samplerate : 0;
}

// Finds an input by id, server name or shown name.
platform::AudioObjectID findInput(platform::AudioSystem& system, const std::string& wanted) {
    for (const auto& d : system.devices(platform::Direction::Input))
        if (std::to_string(d.id) == wanted || d.serverName == wanted || d.name == wanted ||
            d.description == wanted)
            return d.id;
    return platform::kNoDevice;
}

// The one line that says why the input is not heard where it normally would be.
std::string playThroughWarning(platform::AudioSystem& system, const Audio& audio) {
    const PlayThroughTarget target = audio.playThroughTarget();
    if (target.route == PlayThroughRoute::Nowhere)
        return "waxline-cli record: warning: the input is the monitor of the output, so it is not "
               "played through (it would record itself)";
    const auto other = system.device(target.output, platform::Direction::Output);
    return "waxline-cli record: warning: the input is the monitor of the output, so it is played "
           "through '" +
           (other ? other->description : std::to_string(target.output)) +
           "' instead (it would record itself)";
}

void removeOldTrackFiles(const std::string& folder) {
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("WXRTTmpFile.", 0) == 0)
            std::filesystem::remove(entry.path(), ec);
    }
}

} // namespace

int recordSide(const RecordOptions& options, RecordResult& result) {
    const auto app = ensureApplication();
    platform::Platform platform;
    try {
        platform = platform::openPlatform(options.virtualDevice);
    } catch (const platform::PlatformError& e) {
        std::fprintf(userErr(), "waxline-cli record: %s\n", describe(e).c_str());
        return 2;
    }

    Audio audio(platform);
    SessionDelegate delegate;
    audio.setDelegate(&delegate);
    if (!options.exportDir.empty())
        audio.setExportFolder(options.exportDir);

    std::string preset = options.preset;
    if (!options.input.empty()) {
        const platform::AudioObjectID id = findInput(*platform.audio, options.input);
        if (id == platform::kNoDevice) {
            std::fprintf(userErr(),
                         "waxline-cli record: no input named '%s'; 'waxline-cli devices' lists "
                         "the inputs\n",
                         options.input.c_str());
            return 2;
        }
        audio.selectInput(id);
        if (preset == "auto")
            preset = "none";
    } else {
        switch (audio.detectAudioDevice()) {
        case 1:
            break;
        case 2:
            std::fprintf(userErr(), "waxline-cli record: more than one supported USB turntable or "
                                    "cassette player is attached; unplug all but one\n");
            return 2;
        case 3:
            std::fprintf(userErr(),
                         "waxline-cli record: several audio inputs match the supported device; "
                         "name one with --input\n");
            return 2;
        default:
            if (audio.device())
                std::fprintf(userErr(),
                             "waxline-cli record: the supported device is attached but no audio "
                             "input carries its name; name the input with --input\n");
            else
                std::fprintf(userErr(),
                             "waxline-cli record: no supported USB turntable or cassette player "
                             "found; connect one, or name an input with --input\n");
            return 2;
        }
    }

    if (audio.playThroughTarget().route != PlayThroughRoute::Direct)
        std::fprintf(userErr(), "%s\n", playThroughWarning(*platform.audio, audio).c_str());

    // As the application's wizard; a device it would ask about is taken for a turntable here.
    if (preset == "auto") {
        if (choosePresetByDevice(audio) == PresetChoice::AskUser) {
            std::fprintf(userOut(),
                         "Taking the device for a turntable; give --preset none or --preset "
                         "chrome for a cassette deck\n");
            choosePresetFor(audio, PlaybackDevice::Turntable);
        }
    } else if (preset == "none")
        audio.setNoFilter();
    else if (preset == "riaa")
        setFilterType(Sonra::Audio::Filters::AudioFilter::RIAAPlayback);
    else if (preset == "chrome")
        audio.setChromeFilter();
    else if (preset == "brightspin")
        audio.setBrightSpinFilter();

    // The ready panel: monitoring at the chosen gain. Then Record.
    audio.setGainDb(options.gainDb);
    audio.setRecordingTimeLimit(options.maxSeconds);
    audio.startPlayThru();
    // Before the folder is emptied: nothing may still be encoding into it.
    if (options.early)
        options.early->begin(audio.exportFolder());
    RecordingSequence sequence(audio, removeOldTrackFiles);
    sequence.prepare(options.automaticSplit);
    if (!sequence.openFirstTrack()) {
        audio.stopPlayThru();
        std::fprintf(userErr(), "waxline-cli record: cannot record into %s\n",
                     audio.exportFolder().c_str());
        return 1;
    }
    std::fprintf(userOut(), "Recording from input %u into %s%s\n", audio.inputDeviceID(),
                 audio.exportFolder().c_str(),
                 options.automaticSplit ? " (tracks split at the gaps)" : "");
    std::fflush(userOut());

    // Ctrl-C, a logout (SIGHUP) and a shutdown (SIGTERM) all stop the recording cleanly, with
    // the files closed and the count left.
    interrupted = 0;
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    const int stopSignals[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction previous[std::size(stopSignals)]{};
    for (size_t i = 0; i < std::size(stopSignals); ++i)
        sigaction(stopSignals[i], &action, &previous[i]);

    const bool tty = isatty(STDOUT_FILENO);
    int ticks = 0;
    QEventLoop loop;
    QTimer status;
    status.setInterval(100);
    QObject::connect(&status, &QTimer::timeout, [&] {
        audio.processPendingEvents();
        if (interrupted) {
            sequence.stop();
            result.endedBy = "interrupted";
        }
        const auto counters = audio.recorderCounters();
        if (options.maxSeconds > 0 && audio.recording() &&
            counters.capturedFrames >=
                static_cast<uint64_t>(std::llround(options.maxSeconds * audio.fileSampleRate()))) {
            sequence.stop();
            result.endedBy = "time limit";
        }
        if (!audio.recording()) {
            loop.quit();
            return;
        }
        sequence.keepCountCurrent();
        // The writer has closed this many files; the one it writes now is not among them.
        if (options.early)
            options.early->tracksClosed(
                std::min(static_cast<int>(counters.filesFinished), audio.numRecordedTracks() - 1));
        if (options.onTick)
            options.onTick(audio, platform);
        const float l = GetVUMaxL(), r = GetVUMaxR();
        if (options.showStatus && (tty || ++ticks % 50 == 0)) {
            std::fprintf(userOut(), "%strack %d  %s  L %s dBFS  R %s dBFS%s  dropped %llu%s",
                         tty ? "\r" : "", audio.numRecordedTracks(),
                         clock(audio.currentTrackSeconds()).c_str(), dbfs(l).c_str(),
                         dbfs(r).c_str(), (l >= 1.0f || r >= 1.0f) ? "  CLIP" : "      ",
                         static_cast<unsigned long long>(counters.droppedBuffers),
                         tty ? "\x1b[K" : "\n");
            std::fflush(userOut());
        }
    });
    status.start();
    loop.exec();
    status.stop();
    for (size_t i = 0; i < std::size(stopSignals); ++i)
        sigaction(stopSignals[i], &previous[i], nullptr);
    if (tty && options.showStatus)
        std::fprintf(userOut(), "\n");

    audio.stopPlayThru();
    if (audio.recording())
        sequence.stop();
    else if (delegate.albumEnded)
        sequence.albumEnded();
    else
        sequence.leaveTrackCount();
    if (delegate.albumEnded)
        result.endedBy = "album end";
    else if (!delegate.stoppedReason.empty())
        result.endedBy = delegate.stoppedReason;
    else if (result.endedBy.empty())
        result.endedBy = "stopped";

    // Every counted track is closed now; the run-out after an album end is not encoded.
    if (options.early)
        options.early->tracksClosed(audio.numRecordedTracks());

    const auto counters = audio.recorderCounters();
    result.capturedFrames = counters.capturedFrames;
    result.droppedBuffers = counters.droppedBuffers;
    result.droppedFrames = counters.droppedFrames;
    result.countedTracks = audio.numRecordedTracks();
    std::error_code ec;
    for (int n = 1;; ++n) {
        const std::string path = audio.fileNameForTrack(n);
        if (!std::filesystem::exists(path, ec))
            break;
        result.files.push_back({path, wavSeconds(path), n <= result.countedTracks});
    }

    // A failure has been said in full already; the summary does not say it again.
    const bool reasonShown = !delegate.stoppedReason.empty() && !delegate.albumEnded;
    std::fprintf(userOut(), "Recording ended (%s): %d track%s, %llu dropped buffer%s\n",
                 reasonShown ? "stopped" : result.endedBy.c_str(), result.countedTracks,
                 result.countedTracks == 1 ? "" : "s",
                 static_cast<unsigned long long>(result.droppedBuffers),
                 result.droppedBuffers == 1 ? "" : "s");
    for (const auto& f : result.files)
        std::fprintf(userOut(), "  %s  %s (%.3f s)%s\n", f.path.c_str(), clock(f.seconds).c_str(),
                     f.seconds, f.counted ? "" : "  run-out after the album end, not counted");
    return reasonShown ? 1 : 0;
}

} // namespace waxline::cli
