#include "ui/review/ViewWindow.h"

#include <algorithm>
#include <cmath>

namespace waxline::ui {

namespace {

int64_t clampStart(int64_t start, int64_t length, int64_t sideFrames) {
    return std::clamp<int64_t>(start, 0, std::max<int64_t>(sideFrames - length, 0));
}

} // namespace

ViewWindow ViewWindow::zoomed(double factor, int64_t anchor, int64_t sideFrames,
                              int64_t minLength) const {
    if (sideFrames <= 0 || length <= 0 || factor <= 0)
        return {0, std::max<int64_t>(sideFrames, 0)};
    const int64_t shortest = std::min(minLength, sideFrames);
    const int64_t newLength =
        std::clamp<int64_t>(int64_t(std::llround(double(length) / factor)), shortest, sideFrames);
    // The anchor keeps its share of the width.
    const double share = std::clamp(double(anchor - start) / double(length), 0.0, 1.0);
    const int64_t newStart = anchor - int64_t(std::llround(share * double(newLength)));
    return {clampStart(newStart, newLength, sideFrames), newLength};
}

ViewWindow ViewWindow::scrolled(int64_t frames, int64_t sideFrames) const {
    return {clampStart(start + frames, length, sideFrames), length};
}

ViewWindow ViewWindow::showing(int64_t frame, int64_t sideFrames) const {
    if (frame >= start && frame <= start + length)
        return *this;
    return {clampStart(frame - length / 2, length, sideFrames), length};
}

} // namespace waxline::ui
