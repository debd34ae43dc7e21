#pragma once

#include "restoration/ClickRemover.h"
#include "restoration/HumRemover.h"

#include <optional>
#include <string_view>
#include <vector>

namespace waxline::restoration {

// What to clean.
struct CleaningChoice {
    bool clicks = false;
    HumChoice hum = HumChoice::Off;
    bool any() const { return clicks || hum != HumChoice::Off; }
};

// "clicks", "hum" or "clicks,hum" (either order); nothing for any other list.
std::optional<CleaningChoice> cleaningNamed(std::string_view list);

// What cleaning did to one piece of audio.
struct CleaningReport {
    size_t clicks = 0;          // stretches repaired, all channels
    size_t samplesRepaired = 0; // samples inside them
    HumProfile hum;
};

// Cleans interleaved audio in place: hum first (the side's `knownHum` when given, else what
// the audio's own quiet stretches show), then clicks on each channel.
CleaningReport cleanAudio(std::vector<float>& interleaved, int channels, double rate,
                          const CleaningChoice& choice, const HumProfile* knownHum = nullptr);

} // namespace waxline::restoration
