#pragma once

#include "filters/AudioFilter.h"

namespace waxline {

// Main thread: builds the preset and hands it to the input chain by pointer swap; the old preset
// is freed here once the audio thread no longer uses it. Safe while the input callback runs.
void setFilterType(Sonra::Audio::Filters::AudioFilter::Type type);

// Audio input thread: applies the preset in force. No allocation, no lock.
void applyActiveFilter(float* left, float* right, unsigned long frames);

} // namespace waxline
