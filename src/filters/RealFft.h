#pragma once

#include <cstddef>
#include <vector>

namespace Sonra::Audio::Filters {

// Power spectrum of a real frame by a complex FFT of half the size. Allocates only when built,
// so one instance can run over a whole side.
class RealFft {
public:
    // size: a power of two from 4 up; throws std::invalid_argument otherwise.
    explicit RealFft(size_t size);

    size_t size() const { return n; }

    // power[k] = |X[k]|^2 for k = 0 .. size/2, X the unnormalised DFT of the size samples.
    void powerSpectrum(const float* input, float* power);

private:
    size_t n;
    // Plain float arrays rather than std::complex: its multiplication guards against NaN and
    // infinity on every call, which costs more than the transform itself.
    std::vector<size_t> bitReverse; // of the half-size transform
    std::vector<float> twiddleRe;   // e^(-2 pi i k / (n/2)), k < n/4
    std::vector<float> twiddleIm;
    std::vector<float> splitRe; // e^(-2 pi i k / n), k <= n/2
    std::vector<float> splitIm;
    std::vector<float> re;
    std::vector<float> im;
};

} // namespace Sonra::Audio::Filters
