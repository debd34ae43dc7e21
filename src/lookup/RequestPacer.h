#pragma once

#include <functional>

namespace waxline::lookup {

// The service's rate rule: at most one request a second, and after a 503 nothing before the
// time its Retry-After names. The clock is given, so that tests step it.
class RequestPacer {
public:
    using Clock = std::function<double()>; // seconds, rising

    // A little over a second apart, so that a request held up on its way does not arrive
    // within a second of the one before.
    explicit RequestPacer(Clock clock, double interval = 1.05);

    // Seconds to wait before the next request may go; 0 when it may go now.
    double delayBeforeNext() const;
    // A request has just gone out.
    void sent();
    // The service answered 503 asking for `seconds` of rest (counted from now).
    void retryAfter(double seconds);

    // A Retry-After value as seconds: a count of seconds, else the fallback. Clamped to
    // [interval, 60] so that a wild value neither hammers the service nor waits forever.
    double parseRetryAfter(const char* header, double fallback) const;

private:
    Clock clock;
    double interval;
    double notBefore = -1e300;
};

// The process's steady clock in seconds.
double steadySeconds();

} // namespace waxline::lookup
