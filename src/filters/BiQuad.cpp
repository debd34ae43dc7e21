#include "filters/BiQuad.h"

#include <cmath>
#include <string>

namespace Sonra::Audio::Filters {

BiQuad::BiQuad(double b0_, double b1_, double b2_, double a1_, double a2_)
    : b0(b0_)
    , b1(b1_)
    , b2(b2_)
    , a1(a1_)
    , a2(a2_) {}

BiQuad::BiQuad(Type type, double gainDb, unsigned frequency, unsigned sampleRate,
               unsigned bandwidth) {
    const double A = std::pow(10.0, gainDb / 40.0);
    const double w0 = frequency * 6.283185307179586 / sampleRate;
    const double s = std::sin(w0);
    const double c = std::cos(w0);
    // ln 2 / 2: bandwidth in octaves, the classic audio-equaliser cookbook form.
    const double alpha =
        s * std::sinh(0.34657359027997264 * static_cast<double>(bandwidth) * w0 / s);
    const double S = s * std::sqrt(2.0 * A);

    double rb0, rb1, rb2, ra0, ra1, ra2;
    switch (type) {
    case LowPass:
        rb0 = (1 - c) * 0.5;
        rb1 = 1 - c;
        rb2 = (1 - c) * 0.5;
        ra0 = 1 + alpha;
        ra1 = -2 * c;
        ra2 = 1 - alpha;
        break;
    case HighPass:
        rb0 = (1 + c) * 0.5;
        rb1 = -(1 + c);
        rb2 = (1 + c) * 0.5;
        ra0 = 1 + alpha;
        ra1 = -2 * c;
        ra2 = 1 - alpha;
        break;
    case BandPass:
        rb0 = alpha;
        rb1 = 0;
        rb2 = -alpha;
        ra0 = 1 + alpha;
        ra1 = -2 * c;
        ra2 = 1 - alpha;
        break;
    case Notch:
        rb0 = 1;
        rb1 = -2 * c;
        rb2 = 1;
        ra0 = 1 + alpha;
        ra1 = -2 * c;
        ra2 = 1 - alpha;
        break;
    case Peak:
        rb0 = 1 + alpha * A;
        rb1 = -2 * c;
        rb2 = 1 - alpha * A;
        ra0 = 1 + alpha / A;
        ra1 = -2 * c;
        ra2 = 1 - alpha / A;
        break;
    case LowShelf:
        rb0 = A * ((A + 1) - (A - 1) * c + S);
        rb1 = 2 * A * ((A - 1) - (A + 1) * c);
        rb2 = A * ((A + 1) - (A - 1) * c - S);
        ra0 = (A + 1) + (A - 1) * c + S;
        ra1 = -2 * ((A + 1) * c + (A - 1));
        ra2 = (A + 1) + (A - 1) * c - S;
        break;
    case HighShelf:
        rb0 = A * ((A + 1) + (A - 1) * c + S);
        rb1 = -2 * A * ((A + 1) * c + (A - 1));
        rb2 = A * ((A + 1) + (A - 1) * c - S);
        ra0 = (A + 1) - (A - 1) * c + S;
        ra1 = 2 * ((A - 1) - (A + 1) * c);
        ra2 = (A + 1) - (A - 1) * c - S;
        break;
    default:
        throw std::string("Invalid filter type");
    }
    b0 = rb0 / ra0;
    b1 = rb1 / ra0;
    b2 = rb2 / ra0;
    a1 = ra1 / ra0;
    a2 = ra2 / ra0;
}

BiQuad::BiQuad(const BiQuad& other)
    : b0(other.b0)
    , b1(other.b1)
    , b2(other.b2)
    , a1(other.a1)
    , a2(other.a2) {}

BiQuad& BiQuad::operator=(const BiQuad& other) {
    b0 = other.b0;
    b1 = other.b1;
    b2 = other.b2;
    a1 = other.a1;
    a2 = other.a2;
    Reset();
    return *this;
}

void BiQuad::Reset() {
    x1 = x2 = y1 = y2 = 0;
}

void BiQuad::operator()(float* samples, unsigned long count) {
    Kernel k = kernel();
    for (unsigned long i = 0; i < count; ++i)
        samples[i] = k.step(samples[i]);
    keepState(k);
}

} // namespace Sonra::Audio::Filters
