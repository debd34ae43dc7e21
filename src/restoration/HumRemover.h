#pragma once

#include <cstddef>
#include <vector>

namespace waxline::restoration {

// Which mains frequency to look for.
enum class HumChoice { Off, Auto, Hz50, Hz60 };

// The hum of a side: its fundamental (exact to a hundredth of a hertz) and the harmonics
// that stand out of the noise around them. No fundamental (0) when there is no hum.
struct HumProfile {
    double fundamental = 0;
    std::vector<int> harmonics; // 1 is the fundamental itself
    bool present() const { return fundamental > 0 && !harmonics.empty(); }
};

// The quietest stretches of x: the four-second blocks of lowest level, as many as make up a
// tenth of the whole (at least four when there are), joined end to end. Hum shows there best,
// with little music over it; findHum takes each block on its own.
std::vector<float> quietStretches(const std::vector<float>& x, double rate);

// Looks for hum near 50 or 60 Hz (or both, for Auto) in quiet audio; a harmonic counts when
// it stands at least 10 dB above the spectrum a few hertz beside it.
HumProfile findHum(const std::vector<float>& quiet, double rate, HumChoice choice);

// Narrow notches (1.6 Hz wide) at each harmonic of the profile, run forwards and backwards so
// that nothing is shifted in time.
void removeHum(std::vector<float>& x, double rate, const HumProfile& hum);

} // namespace waxline::restoration
