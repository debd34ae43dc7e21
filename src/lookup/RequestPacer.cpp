#include "lookup/RequestPacer.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace waxline::lookup {

RequestPacer::RequestPacer(Clock clock, double interval)
    : clock(std::move(clock))
    , interval(interval) {}

double RequestPacer::delayBeforeNext() const {
    return std::max(0.0, notBefore - clock());
}

void RequestPacer::sent() {
    notBefore = std::max(notBefore, clock() + interval);
}

void RequestPacer::retryAfter(double seconds) {
    notBefore = std::max(notBefore, clock() + seconds);
}

double RequestPacer::parseRetryAfter(const char* header, double fallback) const {
    double seconds = fallback;
    if (header && *header) {
        char* end = nullptr;
        const double value = std::strtod(header, &end);
        if (end != header && *end == '\0' && value >= 0)
            seconds = value;
    }
    return std::clamp(seconds, interval, 60.0);
}

double steadySeconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

} // namespace waxline::lookup
