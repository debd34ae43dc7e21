#include "exporting/HumOfSide.h"

#include "exporting/ExportFolders.h"
#include "exporting/TrackAudio.h"

namespace waxline::exporting {

std::optional<restoration::HumProfile> humOfSide(const std::string& folder, int tracks,
                                                 restoration::HumChoice choice) {
    std::vector<float> quiet;
    double rate = 0;
    for (int track = 1; track <= tracks; ++track) {
        const TrackAudio audio = readTrackAudio(trackFileName(folder, track));
        if (!audio.error.empty() || audio.channels == 0 || (rate && audio.rate != rate))
            continue;
        rate = audio.rate;
        std::vector<float> mono(audio.frames());
        for (int c = 0; c < audio.channels; ++c) {
            const std::vector<float> channel = audio.channel(c);
            for (size_t i = 0; i < mono.size(); ++i)
                mono[i] += channel[i] / static_cast<float>(audio.channels);
        }
        const std::vector<float> stretches = restoration::quietStretches(mono, rate);
        quiet.insert(quiet.end(), stretches.begin(), stretches.end());
    }
    if (rate == 0)
        return std::nullopt;
    return restoration::findHum(quiet, rate, choice);
}

} // namespace waxline::exporting
