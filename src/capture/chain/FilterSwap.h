#pragma once

#include "filters/AudioFilter.h"

namespace waxline {

// Main thread: builds the preset and hands it to the input chain by pointer swap; the old preset
// is freed here once the audio thread no longer uses it. Safe while the input callback runs.
void setFilterType(Sonra::Audio::Filters::AudioFilter::Type type);

// Audio input thread: the preset in force, held for as long as the object lives; the main thread
// does not free it meanwhile. No allocation, no lock.
class ActiveFilter {
public:
    ActiveFilter();
    ~ActiveFilter();
    ActiveFilter(const ActiveFilter&) = delete;
    ActiveFilter& operator=(const ActiveFilter&) = delete;
    Sonra::Audio::Filters::AudioFilter& operator*() const { return *held; }
    Sonra::Audio::Filters::AudioFilter* operator->() const { return held; }

private:
    Sonra::Audio::Filters::AudioFilter* held;
};

} // namespace waxline
