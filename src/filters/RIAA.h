#pragma once

#include "filters/BiQuad.h"

namespace Sonra::Audio::Filters {

// A single section with the RIAA recording characteristic, taken from a table by sample rate.
// Separate from the RIAA playback preset of AudioFilter, which has its own two-section chain.
class RIAA : public BiQuad {
public:
    enum SampleRate { SR_44100 = 0, SR_48000, SR_88200, SR_96000 };
    static constexpr unsigned NumCoeffs = 4;
    static const double coeffs[NumCoeffs][5];

    // Throws std::string("RIAA filter: invalid sample rate") for a rate not in the table.
    static SampleRate ToSampleRate(unsigned sampleRate);

    explicit RIAA(SampleRate sr);
};

} // namespace Sonra::Audio::Filters
