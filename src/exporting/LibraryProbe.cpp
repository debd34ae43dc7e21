#include "exporting/LibraryProbe.h"

#include "exporting/LibraryImporter.h"

namespace waxline::exporting {

int probeUntilAvailable(const std::function<int()>& probe,
                        const std::function<void(int error)>& onError,
                        const std::function<bool()>& onUnavailable) {
    for (;;) {
        const int error = probe();
        if (error == 0)
            return 0;
        if (onError)
            onError(error);
        // Nobody to ask means nobody can make the library reachable: give up rather than spin.
        if (error == LibraryImporter::kLibraryUnavailable && !(onUnavailable && onUnavailable()))
            return error;
    }
}

} // namespace waxline::exporting
