#include "cli/Commands.h"
#include "demoside/DemoSide.h"

#include <sndfile.h>

#include <cstdio>
#include <stdexcept>
#include <vector>

namespace waxline::cli {

using demoside::DemoSideGenerator;
using demoside::DemoSideLayout;
using demoside::DemoSideOptions;
using demoside::kMaxDemoSideSeconds;

int makeDemoSideCommand(Arguments& args) {
    DemoSideOptions options;
    options.realistic = args.flag("--realistic");
    // A realistic side without --tracks takes its count, 3 to 14, from the seed.
    options.tracks =
        static_cast<int>(args.integerOption("--tracks", 1, 40).value_or(options.realistic ? 0 : 5));
    options.seed = static_cast<uint32_t>(args.integerOption("--seed", 0, 4294967295LL).value_or(1));
    if (const auto length = args.numberOption("--length")) {
        // 0 is the option left out; given, it must make a side no deck would refuse to play.
        if (*length <= 0 || *length > kMaxDemoSideSeconds)
            throw BadValue("--length takes seconds above 0 and up to " +
                           std::to_string(static_cast<int>(kMaxDemoSideSeconds)) + " (4 hours)");
        options.lengthSeconds = *length;
    }
    const auto files = args.positional();
    if (files.size() != 1)
        throw UsageError("name one output file");
    const std::string& path = files.front();

    std::optional<DemoSideGenerator> generator;
    try {
        generator.emplace(options);
    } catch (const std::invalid_argument& e) {
        throw BadValue(e.what());
    }

    SF_INFO info{};
    info.samplerate = static_cast<int>(options.sampleRate);
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) {
        std::fprintf(stderr, "waxline-cli make-demo-side: cannot write %s: %s\n", path.c_str(),
                     sf_strerror(nullptr));
        return 1;
    }
    constexpr size_t kBlock = 4096;
    std::vector<float> left(kBlock), right(kBlock), interleaved(2 * kBlock);
    bool ok = true;
    while (size_t n = generator->render(left.data(), right.data(), kBlock)) {
        for (size_t i = 0; i < n; ++i) {
            interleaved[2 * i] = left[i];
            interleaved[2 * i + 1] = right[i];
        }
        if (sf_writef_float(file, interleaved.data(), static_cast<sf_count_t>(n)) !=
            static_cast<sf_count_t>(n)) {
            ok = false;
            break;
        }
    }
    if (!ok)
        std::fprintf(stderr, "waxline-cli make-demo-side: writing %s failed: %s\n", path.c_str(),
                     sf_strerror(file));
    sf_close(file);
    if (!ok)
        return 1;

    const DemoSideLayout& side = generator->layout();
    std::printf("%s: %zu tracks, %.3f s at %u Hz, seed %u\n", path.c_str(), side.tracks.size(),
                side.length(), side.sampleRate, options.seed);
    std::printf("lead-in   %10.3f s .. %10.3f s\n", side.leadIn.start, side.leadIn.end);
    for (size_t i = 0; i < side.tracks.size(); ++i) {
        std::printf("track %-3zu %10.3f s .. %10.3f s\n", i + 1, side.tracks[i].start,
                    side.tracks[i].end);
        if (i < side.gaps.size())
            std::printf("gap       %10.3f s .. %10.3f s\n", side.gaps[i].start, side.gaps[i].end);
    }
    std::printf("run-out   %10.3f s .. %10.3f s\n", side.runOut.start, side.runOut.end);
    if (options.realistic) {
        std::printf("noise %.1f dBFS, hum %.0f Hz at %.1f dBFS, rumble %.1f dBFS\n", side.noiseDb,
                    side.humHz, side.humDb, side.rumbleDb);
        const std::pair<const char*, const std::vector<DemoSideLayout::Span>*> features[] = {
            {"fade-in", &side.fadeIns},       {"fade-out", &side.fadeOuts},
            {"quiet", &side.quietPassages},   {"intro", &side.softIntros},
            {"crackle", &side.crackleBursts},
        };
        for (const auto& [name, spans] : features)
            for (const auto& s : *spans)
                std::printf("%-9s %10.3f s .. %10.3f s\n", name, s.start, s.end);
    }
    return 0;
}

} // namespace waxline::cli
