#pragma once

namespace Sonra::Audio::Filters {

// One second-order recursive section, direct form I: double coefficients (normalised by a0),
// single-precision state holding exactly the floats read from and written to the buffer.
class BiQuad {
public:
    enum Type { LowPass = 0, HighPass, BandPass, Notch, Peak, LowShelf, HighShelf };

    struct Coefficients {
        double b0, b1, b2, a1, a2;
    };

    BiQuad(double b0, double b1, double b2, double a1, double a2);
    // Designs the section; leaves the state as it was (the owner calls Reset before use).
    // Throws std::string("Invalid filter type") for a type outside the enumeration.
    BiQuad(Type type, double gainDb, unsigned frequency, unsigned sampleRate, unsigned bandwidth);
    // A copy takes the coefficients only: it never inherits the other section's history.
    BiQuad(const BiQuad& other);
    BiQuad& operator=(const BiQuad& other);

    void Reset();

    // Filters count samples in place. Real-time safe: no allocation, no calls.
    void operator()(float* samples, unsigned long count);

    Coefficients coefficients() const { return {b0, b1, b2, a1, a2}; }

    // The section with its state in locals, so that a loop can run several independent
    // sections side by side and still compute exactly what operator() computes.
    struct Kernel {
        double b0, b1, b2, a1, a2;
        float x1, x2, y1, y2;

        float step(float x) {
            const double y = (b2 * x2 + (b0 * x + b1 * x1)) - a1 * y1 - a2 * y2;
            const float out = static_cast<float>(y);
            x2 = x1;
            x1 = x;
            y2 = y1;
            y1 = out;
            return out;
        }
    };
    Kernel kernel() const { return {b0, b1, b2, a1, a2, x1, x2, y1, y2}; }
    void keepState(const Kernel& k) {
        x1 = k.x1;
        x2 = k.x2;
        y1 = k.y1;
        y2 = k.y2;
    }

protected:
    double b0 = 0, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
    float x1 = 0, x2 = 0, y1 = 0, y2 = 0;
};

} // namespace Sonra::Audio::Filters
