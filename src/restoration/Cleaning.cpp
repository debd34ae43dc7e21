#include "restoration/Cleaning.h"

namespace waxline::restoration {

std::optional<CleaningChoice> cleaningNamed(std::string_view list) {
    CleaningChoice choice;
    while (!list.empty()) {
        const size_t comma = list.find(',');
        const std::string_view word = list.substr(0, comma);
        if (word == "clicks")
            choice.clicks = true;
        else if (word == "hum")
            choice.hum = HumChoice::Auto;
        else
            return std::nullopt;
        if (comma == std::string_view::npos)
            break;
        list.remove_prefix(comma + 1);
    }
    if (!choice.any())
        return std::nullopt;
    return choice;
}

CleaningReport cleanAudio(std::vector<float>& interleaved, int channels, double rate,
                          const CleaningChoice& choice, const HumProfile* knownHum) {
    CleaningReport report;
    if (channels <= 0)
        return report;
    const auto count = static_cast<size_t>(channels);
    const size_t frames = interleaved.size() / count;
    std::vector<std::vector<float>> split(count, std::vector<float>(frames));
    for (size_t i = 0; i < frames; ++i)
        for (size_t c = 0; c < count; ++c)
            split[c][i] = interleaved[i * count + c];

    if (choice.hum != HumChoice::Off) {
        if (knownHum) {
            report.hum = *knownHum;
        } else {
            std::vector<float> mono(frames);
            for (size_t i = 0; i < frames; ++i)
                for (size_t c = 0; c < count; ++c)
                    mono[i] += split[c][i] / static_cast<float>(count);
            report.hum = findHum(quietStretches(mono, rate), rate, choice.hum);
        }
        for (auto& channel : split)
            removeHum(channel, rate, report.hum);
    }
    if (choice.clicks) {
        for (auto& channel : split)
            for (const ClickSpan& span : removeClicks(channel)) {
                ++report.clicks;
                report.samplesRepaired += span.last - span.first + 1;
            }
    }
    for (size_t i = 0; i < frames; ++i)
        for (size_t c = 0; c < count; ++c)
            interleaved[i * count + c] = split[c][i];
    return report;
}

} // namespace waxline::restoration
