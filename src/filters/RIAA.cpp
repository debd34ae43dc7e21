#include "filters/RIAA.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Sonra::Audio::Filters {

// The 48000 Hz row repeats the 44100 Hz row on purpose.
const double RIAA::coeffs[NumCoeffs][5] = {
    {0.02675918611906, -0.04592084787595, 0.01921229297239, -0.73845850035973, -0.1795175547743},
    {0.02675918611906, -0.04592084787595, 0.01921229297239, -0.73845850035973, -0.1795175547743},
    {0.04872204977233, -0.09076930609195, 0.04202280710877, -0.85197860443215, -0.10921171201431},
    {0.05265477122714, -0.09864197097385, 0.0459647435209, -0.85835597216218, -0.10600020417219},
};

RIAA::SampleRate RIAA::ToSampleRate(unsigned sampleRate) {
    switch (sampleRate) {
    case 44100:
        return SR_44100;
    case 48000:
        return SR_48000;
    case 88200:
        return SR_88200;
    case 96000:
        return SR_96000;
    default:
        throw std::string("RIAA filter: invalid sample rate");
    }
}

RIAA::RIAA(SampleRate sr)
    : BiQuad(0, 0, 0, 0, 0) {
    // Checked in every build type: a bad row index must never read past the table.
    if (!(sr < NumCoeffs)) {
        std::fprintf(stderr, "Assertion failed: (sr < NumCoeffs), function RIAA, file %s.\n",
                     "Source/Classes/Audio Filters/RIAA");
        std::abort();
    }
    b0 = coeffs[sr][0];
    b1 = coeffs[sr][1];
    b2 = coeffs[sr][2];
    a1 = coeffs[sr][3];
    a2 = coeffs[sr][4];
}

} // namespace Sonra::Audio::Filters
