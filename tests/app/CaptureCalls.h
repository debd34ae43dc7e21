#pragma once

#include "support/FakeCapture.h"

#include <algorithm>
#include <string>
#include <vector>

namespace waxline::test {

// A fake capture whose track files go into `folder`.
inline FakeCapture captureIn(const std::string& folder) {
    FakeCapture capture;
    capture.folder = folder;
    return capture;
}

// How often the fake capture was given that command.
inline int count(const FakeCapture& capture, const std::string& call) {
    return int(std::count(capture.calls.begin(), capture.calls.end(), call));
}

// The commands besides the monitor's start and stop and the delegate's setting.
inline std::vector<std::string> besidesMonitor(const FakeCapture& capture) {
    std::vector<std::string> rest;
    for (const std::string& call : capture.calls)
        if (call != "startPlayThru" && call != "stopPlayThru" && call != "setDelegate")
            rest.push_back(call);
    return rest;
}

} // namespace waxline::test
