#include "capture/chain/FilterSwap.h"
#include "capture/chain/InputChain.h"
#include "cli/Commands.h"

#include <sndfile.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <vector>

namespace waxline::cli {
namespace {

using Sonra::Audio::Filters::AudioFilter;
using Sonra::Audio::Filters::GapDetector;

constexpr uint32_t kBufferFrames = 4096;

AudioFilter::Type presetNamed(const std::string& name) {
    static const std::map<std::string, AudioFilter::Type> presets = {
        {"none", AudioFilter::NoFilter},
        {"riaa", AudioFilter::RIAAPlayback},
        {"chrome", AudioFilter::ChromeTape},
        {"brightspin", AudioFilter::BrightSpin},
    };
    auto it = presets.find(name);
    if (it == presets.end())
        throw UsageError("unknown preset '" + name + "' (none, riaa, chrome or brightspin)");
    return it->second;
}

bool supportedRate(int rate) {
    return rate == 44100 || rate == 48000 || rate == 88200 || rate == 96000;
}

// Collects the detector's events with the time of the frame that caused them. The CLI prints
// them after each buffer, never from inside the detector.
struct EventLog : GapDetector::Listener {
    const GapDetector* detector = nullptr;
    std::vector<std::pair<double, const char*>> events;

    double now() const {
        return static_cast<double>(detector->history().size()) *
               static_cast<double>(detector->frameLength()) / detector->rate();
    }
    void TrackSilenceStarted() override { events.emplace_back(now(), "silence started"); }
    void TrackSilenceEnded() override { events.emplace_back(now(), "silence ended"); }
    void AlbumEnded() override { events.emplace_back(now(), "album ended"); }
};

// Whether two names lead to one file: the same name, a symbolic or a hard link.
bool sameFile(const std::string& a, const std::string& b) {
    std::error_code ec;
    return std::filesystem::equivalent(a, b, ec) && !ec;
}

struct SoundFileCloser {
    void operator()(SNDFILE* f) const { sf_close(f); }
};
using SoundFile = std::unique_ptr<SNDFILE, SoundFileCloser>;

} // namespace

int analyseCommand(Arguments& args) {
    const AudioFilter::Type preset = presetNamed(args.option("--preset").value_or("none"));
    const auto outputPath = args.option("--output");
    const bool listTracks = args.flag("--tracks");
    const bool timing = args.flag("--timing");
    const auto files = args.positional();
    if (files.size() != 1)
        throw UsageError("name one WAV file to analyse");
    const std::string& path = files.front();
    if (outputPath && sameFile(path, *outputPath)) {
        std::fprintf(stderr,
                     "waxline-cli analyse: --output %s is the input file itself; writing it "
                     "would destroy what is read, so name another file\n",
                     outputPath->c_str());
        return 2;
    }

    SF_INFO info{};
    SoundFile in(sf_open(path.c_str(), SFM_READ, &info));
    if (!in) {
        std::fprintf(stderr, "waxline-cli analyse: cannot read %s: %s\n", path.c_str(),
                     sf_strerror(nullptr));
        return 2;
    }
    if (info.channels != 2) {
        std::fprintf(stderr, "waxline-cli analyse: %s has %d channel%s; a stereo file is needed\n",
                     path.c_str(), info.channels, info.channels == 1 ? "" : "s");
        return 2;
    }
    if (!supportedRate(info.samplerate)) {
        std::fprintf(stderr,
                     "waxline-cli analyse: %s is at %d Hz; 44100, 48000, 88200 or 96000 Hz is "
                     "needed\n",
                     path.c_str(), info.samplerate);
        return 2;
    }

    SoundFile out;
    if (outputPath) {
        SF_INFO outInfo{};
        outInfo.samplerate = info.samplerate;
        outInfo.channels = 2;
        outInfo.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        out.reset(sf_open(outputPath->c_str(), SFM_WRITE, &outInfo));
        if (!out) {
            std::fprintf(stderr, "waxline-cli analyse: cannot write %s: %s\n", outputPath->c_str(),
                         sf_strerror(nullptr));
            return 2;
        }
    }

    EventLog log;
    GapDetector detector(log, static_cast<unsigned>(info.samplerate));
    detector.SetSampleRate(static_cast<unsigned>(info.samplerate));
    log.detector = &detector;
    setFilterType(preset);
    gapDetector.store(&detector);

    std::vector<float> interleaved(2 * kBufferFrames), left(kBufferFrames), right(kBufferFrames);
    AudioBufferList list;
    list.mNumberBuffers = 2;
    list.mBuffers[0].mData = left.data();
    list.mBuffers[1].mData = right.data();

    std::chrono::steady_clock::duration chainTime{};
    int64_t position = 0;
    int status = 0;
    while (true) {
        const sf_count_t n = sf_readf_float(in.get(), interleaved.data(), kBufferFrames);
        if (n <= 0)
            break;
        for (sf_count_t i = 0; i < n; ++i) {
            left[i] = interleaved[2 * i];
            right[i] = interleaved[2 * i + 1];
        }
        const auto start = std::chrono::steady_clock::now();
        InputProcCallback(&list, static_cast<uint32_t>(n), position);
        chainTime += std::chrono::steady_clock::now() - start;
        position += n;

        for (const auto& [seconds, what] : log.events)
            std::printf("%10.3f s  %s\n", seconds, what);
        log.events.clear();

        if (out) {
            for (sf_count_t i = 0; i < n; ++i) {
                interleaved[2 * i] = left[i];
                interleaved[2 * i + 1] = right[i];
            }
            if (sf_writef_float(out.get(), interleaved.data(), n) != n) {
                std::fprintf(stderr, "waxline-cli analyse: writing %s failed: %s\n",
                             outputPath->c_str(), sf_strerror(out.get()));
                status = 1;
                break;
            }
        }
    }
    gapDetector.store(nullptr);
    if (sf_error(in.get()) != SF_ERR_NO_ERROR) {
        std::fprintf(stderr, "waxline-cli analyse: reading %s failed: %s\n", path.c_str(),
                     sf_strerror(in.get()));
        status = 1;
    }

    const double seconds = static_cast<double>(position) / info.samplerate;
    std::printf("%s: %.3f s analysed, peak %.1f dBFS\n", path.c_str(), seconds,
                20.0 * std::log10(std::max(GetVUMax(), 1e-10f)));

    if (listTracks) {
        std::vector<GapDetector::TrackItem> tracks;
        detector.FindTracks(tracks);
        std::printf("%zu proposed track%s:\n", tracks.size(), tracks.size() == 1 ? "" : "s");
        for (size_t i = 0; i < tracks.size(); ++i)
            std::printf("track %-3zu start %10.3f s  length %10.3f s  samples %lld + %lld\n", i + 1,
                        tracks[i].start, tracks[i].duration,
                        static_cast<long long>(tracks[i].startSample),
                        static_cast<long long>(tracks[i].length));
    }
    if (timing) {
        const double chain = std::chrono::duration<double>(chainTime).count();
        std::fprintf(stderr, "chain: %.3f s for %.1f s of audio (%.0f x real time)\n", chain,
                     seconds, chain > 0 ? seconds / chain : 0.0);
    }
    return status;
}

} // namespace waxline::cli
