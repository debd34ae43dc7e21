#include "filters/AudioFilter.h"

namespace Sonra::Audio::Filters {
namespace {

// The presets' coefficients are single-precision numbers widened exactly to double.
constexpr double w(float v) {
    return static_cast<double>(v);
}

BiQuad riaaSection0() {
    return {w(0.225f), w(0.2321032f), w(0.052797012f), w(0.9147276f), w(0.16572149f)};
}
BiQuad riaaSection1() {
    return {w(1.0f), w(-0.871538f), w(-0.055509713f), w(-1.7317901f), w(0.7336619f)};
}
BiQuad chromeSection() {
    return {w(0.6013478f), w(-0.8847261f), w(0.33175603f), w(-1.5921159f), w(0.64049363f)};
}
BiQuad brightSpinSection() {
    return {w(1.0319743f), w(-0.9609203f), w(0.0f), w(-0.9928946f), w(0.0f)};
}

} // namespace

void AudioFilter::Set(Type type) {
    for (auto& slot : slots)
        slot.reset();

    switch (type) {
    case BrightSpin:
        slots[0] = std::make_unique<BiQuad>(brightSpinSection());
        slots[2] = std::make_unique<BiQuad>(*slots[0]);
        break;
    case ChromeTape:
        slots[0] = std::make_unique<BiQuad>(chromeSection());
        slots[2] = std::make_unique<BiQuad>(*slots[0]);
        break;
    case RIAAPlayback:
        slots[0] = std::make_unique<BiQuad>(riaaSection0());
        slots[2] = std::make_unique<BiQuad>(*slots[0]);
        slots[1] = std::make_unique<BiQuad>(riaaSection1());
        slots[3] = std::make_unique<BiQuad>(*slots[1]);
        break;
    default:
        break;
    }
}

} // namespace Sonra::Audio::Filters
