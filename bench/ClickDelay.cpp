// The click train for bench/monitor-latency, and the delays of the monitored copies in a
// recording of the output.
//
//   click_delay make OUT.wav RATE PERIOD CLICKS LEAD   a stereo click train
//   click_delay measure IN.wav PERIOD [FROM TO]        one line per click: seconds, delay ms or
//                                                      "lost"; clicks from FROM to TO seconds
#include "capture/monitor/ClickDelays.h"

#include <sndfile.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

int make(const char* path, double rate, double period, int clicks, double lead) {
    const std::vector<float> mono = waxline::makeClickTrain(rate, period, clicks, lead);
    std::vector<float> stereo(mono.size() * 2);
    for (std::size_t i = 0; i < mono.size(); ++i)
        stereo[2 * i] = stereo[2 * i + 1] = mono[i];
    SF_INFO info{};
    info.samplerate = static_cast<int>(rate);
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* file = sf_open(path, SFM_WRITE, &info);
    if (!file) {
        std::fprintf(stderr, "click_delay: cannot write %s: %s\n", path, sf_strerror(nullptr));
        return 1;
    }
    sf_writef_float(file, stereo.data(), static_cast<sf_count_t>(mono.size()));
    sf_close(file);
    return 0;
}

int measure(const char* path, double period, double from, double to) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path, SFM_READ, &info);
    if (!file) {
        std::fprintf(stderr, "click_delay: cannot read %s: %s\n", path, sf_strerror(nullptr));
        return 1;
    }
    std::vector<float> frames(static_cast<std::size_t>(info.frames) * info.channels);
    sf_readf_float(file, frames.data(), info.frames);
    sf_close(file);
    std::vector<float> mono(static_cast<std::size_t>(info.frames));
    for (std::size_t i = 0; i < mono.size(); ++i)
        mono[i] = frames[i * info.channels];
    for (const auto& click : waxline::findClickDelays(mono, info.samplerate, period)) {
        if (click.atSeconds < from || click.atSeconds > to)
            continue;
        if (click.lost)
            std::printf("%.3f lost\n", click.atSeconds);
        else
            std::printf("%.3f %.2f\n", click.atSeconds, click.delayMs);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "make" && argc == 7)
        return make(argv[2], std::atof(argv[3]), std::atof(argv[4]), std::atoi(argv[5]),
                    std::atof(argv[6]));
    if (mode == "measure" && (argc == 4 || argc == 6))
        return measure(argv[2], std::atof(argv[3]), argc == 6 ? std::atof(argv[4]) : 0,
                       argc == 6 ? std::atof(argv[5]) : 1e12);
    std::fprintf(stderr, "usage: click_delay make OUT.wav RATE PERIOD CLICKS LEAD\n"
                         "       click_delay measure IN.wav PERIOD [FROM TO]\n");
    return 2;
}
