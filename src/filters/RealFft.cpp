#include "filters/RealFft.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Sonra::Audio::Filters {

RealFft::RealFft(size_t size)
    : n(size) {
    if (size < 4 || (size & (size - 1)) != 0)
        throw std::invalid_argument("FFT size must be a power of two from 4");
    const size_t half = n / 2;
    const double twoPi = 6.283185307179586;
    bitReverse.resize(half);
    size_t bits = 0;
    while ((size_t{1} << bits) < half)
        ++bits;
    for (size_t i = 0; i < half; ++i) {
        size_t r = 0;
        for (size_t b = 0; b < bits; ++b)
            r |= ((i >> b) & 1) << (bits - 1 - b);
        bitReverse[i] = r;
    }
    const size_t quarter = std::max<size_t>(1, half / 2);
    twiddleRe.resize(quarter);
    twiddleIm.resize(quarter);
    for (size_t k = 0; k < quarter; ++k) {
        const double a = -twoPi * static_cast<double>(k) / static_cast<double>(half);
        twiddleRe[k] = static_cast<float>(std::cos(a));
        twiddleIm[k] = static_cast<float>(std::sin(a));
    }
    splitRe.resize(half + 1);
    splitIm.resize(half + 1);
    for (size_t k = 0; k <= half; ++k) {
        const double a = -twoPi * static_cast<double>(k) / static_cast<double>(n);
        splitRe[k] = static_cast<float>(std::cos(a));
        splitIm[k] = static_cast<float>(std::sin(a));
    }
    re.resize(half);
    im.resize(half);
}

void RealFft::powerSpectrum(const float* input, float* power) {
    const size_t half = n / 2;
    // Even samples as the real part, odd ones as the imaginary part, in bit-reversed order.
    for (size_t i = 0; i < half; ++i) {
        re[bitReverse[i]] = input[2 * i];
        im[bitReverse[i]] = input[2 * i + 1];
    }
    float* xr = re.data();
    float* xi = im.data();
    for (size_t len = 2; len <= half; len <<= 1) {
        const size_t step = half / len;
        const size_t h = len / 2;
        for (size_t start = 0; start < half; start += len) {
            for (size_t j = 0; j < h; ++j) {
                const float wr = twiddleRe[j * step];
                const float wi = twiddleIm[j * step];
                const size_t a = start + j;
                const size_t b = a + h;
                const float br = xr[b] * wr - xi[b] * wi;
                const float bi = xr[b] * wi + xi[b] * wr;
                xr[b] = xr[a] - br;
                xi[b] = xi[a] - bi;
                xr[a] += br;
                xi[a] += bi;
            }
        }
    }
    // Untangle the two real transforms: X[k] = E[k] + e^(-2 pi i k/n) O[k], where
    // E = (Z[k] + conj Z[half-k]) / 2 and O = -i (Z[k] - conj Z[half-k]) / 2.
    for (size_t k = 0; k <= half; ++k) {
        const size_t p = k == half ? 0 : k;
        const size_t q = k == 0 ? 0 : half - k;
        const float zr = xr[p], zi = xi[p];
        const float cr = xr[q], ci = -xi[q];
        const float er = 0.5f * (zr + cr), ei = 0.5f * (zi + ci);
        const float dr = zr - cr, di = zi - ci;
        const float orr = 0.5f * di, oi = -0.5f * dr;
        const float xrk = er + splitRe[k] * orr - splitIm[k] * oi;
        const float xik = ei + splitRe[k] * oi + splitIm[k] * orr;
        power[k] = xrk * xrk + xik * xik;
    }
}

} // namespace Sonra::Audio::Filters
