#include "filters/CrossFade.h"

#include <algorithm>
#include <vector>

namespace Sonra::Audio::Filters {

size_t CrossFade::middle(const SideFeatures& side, size_t from, size_t to, size_t fallback) {
    const size_t n = side.frames();
    to = std::min(to, n);
    if (side.hop == 0 || from >= to)
        return fallback;
    const auto half = static_cast<size_t>(kSmoothSeconds / side.frameSeconds() / 2);
    const std::vector<float> level = meansAround(side.level, from, to, half, kSilentDb);
    const auto lowest = std::min_element(level.begin(), level.end());
    auto end = lowest;
    while (end + 1 != level.end() && *(end + 1) <= *lowest + kTroughDb)
        ++end;
    return from + static_cast<size_t>(end - level.begin());
}

} // namespace Sonra::Audio::Filters
