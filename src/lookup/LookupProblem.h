#pragma once

// Why a lookup gave nothing; each front end words these for its user.
namespace waxline::lookup {

enum class LookupProblem {
    None,
    NoNetwork,    // the service could not be reached (no route, refused, name unknown)
    TimedOut,     // no answer within the time-out
    Busy,         // the service kept answering 503 after waiting as it asked
    ServiceError, // any other HTTP error, or a refusal
    BadAnswer,    // an answer that is not the JSON expected
    NoMatch,      // a search that found nothing, or an unknown release id
    NoCover,      // the release has no front cover
};

} // namespace waxline::lookup
