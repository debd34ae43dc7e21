#pragma once

#include <cstdint>

namespace waxline::ui {

// The stretch of a side the overview shows: `length` frames from `start`. Every step keeps it
// inside the side (`sideFrames` long) and no shorter than `minLength` (or the side, if shorter).
struct ViewWindow {
    int64_t start = 0;
    int64_t length = 0;

    bool operator==(const ViewWindow&) const = default;

    // `factor` times closer (above 1: in, below 1: out), the frame `anchor` staying where it
    // was on the screen as far as the side's ends allow.
    ViewWindow zoomed(double factor, int64_t anchor, int64_t sideFrames, int64_t minLength) const;
    // Moved by `frames`, stopping at the side's ends.
    ViewWindow scrolled(int64_t frames, int64_t sideFrames) const;
    // Unchanged when `frame` is in view; otherwise centred on it.
    ViewWindow showing(int64_t frame, int64_t sideFrames) const;
};

} // namespace waxline::ui
