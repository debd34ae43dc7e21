#include "cli/Commands.h"
#include "cli/ExportSession.h"
#include "cli/Terminal.h"

#include "exporting/TrackAudio.h"
#include "restoration/Cleaning.h"

#include <chrono>
#include <cstdio>
#include <filesystem>

namespace waxline::cli {

namespace {

restoration::HumChoice humChoice(const std::string& word) {
    if (word == "50")
        return restoration::HumChoice::Hz50;
    if (word == "60")
        return restoration::HumChoice::Hz60;
    if (word == "auto")
        return restoration::HumChoice::Auto;
    throw BadValue("--hum takes 50, 60 or auto, not '" + word + "'");
}

} // namespace

int cleanCommand(Arguments& args) {
    const auto output = args.option("--output");
    restoration::CleaningChoice choice;
    choice.clicks = args.flag("--clicks");
    if (const auto hum = args.option("--hum"))
        choice.hum = humChoice(*hum);
    const std::vector<std::string> inputs = args.positional();
    if (inputs.size() != 1)
        throw UsageError("one input file is needed");
    if (!output)
        throw UsageError("--output OUT.wav is needed");
    if (!choice.any())
        throw UsageError("nothing to do: give --clicks, --hum 50|60|auto or both");
    std::error_code ec;
    if (std::filesystem::equivalent(inputs.front(), *output, ec))
        throw BadValue("the output would overwrite the input " + inputs.front() +
                       ": a recording is never cleaned in place");

    exporting::TrackAudio audio = exporting::readTrackAudio(inputs.front());
    if (!audio.error.empty()) {
        std::fprintf(userErr(), "waxline-cli clean: cannot read %s: %s\n", inputs.front().c_str(),
                     audio.error.c_str());
        return 2;
    }
    const auto started = std::chrono::steady_clock::now();
    const restoration::CleaningReport report =
        restoration::cleanAudio(audio.samples, audio.channels, audio.rate, choice);
    const double took =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    if (!exporting::writeTrackAudio(*output, audio)) {
        std::fprintf(userErr(), "waxline-cli clean: cannot write %s: %s\n", output->c_str(),
                     audio.error.c_str());
        return 1;
    }
    const double seconds = audio.rate ? double(audio.frames()) / audio.rate : 0;
    if (choice.clicks)
        std::fprintf(userOut(), "clicks repaired: %zu (%zu samples)\n", report.clicks,
                     report.samplesRepaired);
    if (choice.hum != restoration::HumChoice::Off)
        std::fprintf(userOut(), "%s\n", describe(report.hum).c_str());
    std::fprintf(userOut(), "%s: %.1f s of audio cleaned in %.2f s\n", output->c_str(), seconds,
                 took);
    return 0;
}

} // namespace waxline::cli
