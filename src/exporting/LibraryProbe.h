#pragma once

#include <functional>

namespace waxline::exporting {

// The check of the music library before an export: asks `probe` until it answers 0. After
// each failure `onError` sees the code (for the log). When the code is
// LibraryImporter::kLibraryUnavailable, `onUnavailable` runs next: it may block (the window
// shows its alert there and the user confirms) and returns whether to ask again; any other
// failure is asked again at once. Returns 0, or the code it gave up on (always so for
// kLibraryUnavailable without an `onUnavailable`).
int probeUntilAvailable(const std::function<int()>& probe,
                        const std::function<void(int error)>& onError,
                        const std::function<bool()>& onUnavailable);

} // namespace waxline::exporting
