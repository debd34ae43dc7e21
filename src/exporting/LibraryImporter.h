#pragma once

#include "exporting/ExportProblem.h"
#include "exporting/UnknownNames.h"

#include <string>

namespace waxline::exporting {

// The music library on Linux: a folder of "<artist>/<album>/<NN> <title>.mp3" files.
// Used from the export thread; holds no state beyond the folder's path.
class LibraryImporter {
public:
    // What the probe gives when the library cannot be reached, as a script error would.
    static constexpr int kLibraryUnavailable = -1753;
    static constexpr const char* kUntitled = "Unknown";

    // `text` words the stand-ins for an artist or album that leaves nothing once made safe
    // (the keys of UnknownNames.h); without it the keys themselves stand in. A title stands in
    // as the tag writer's "Unknown", so that the file's name and its title tag agree.
    explicit LibraryImporter(std::string musicFolder, TextLookup text = {});

    const std::string& folder() const { return root; }

    // 0 when the music folder exists (made when missing) and a file can be created in it;
    // kLibraryUnavailable otherwise. Tries a real file rather than asking access(), which
    // says yes to root for folders root still cannot write (read-only mounts, paths under a
    // regular file).
    int probe() const;

    struct Result {
        bool ok = false;
        std::string path;      // the file in the library
        ExportProblem problem; // why it failed
    };

    // Copies the encoded file (MP3 or FLAC) to its place in the library, under the file's own
    // extension. An existing file there is replaced only by a complete copy: the data goes to
    // a temporary name in the same folder first.
    Result importTrack(const std::string& mp3Path, const std::string& artist,
                       const std::string& album, const std::string& title, int number) const;

    // Where importTrack puts a track of the given extension (without the dot).
    std::string destinationFor(const std::string& artist, const std::string& album,
                               const std::string& title, int number,
                               const std::string& extension = "mp3") const;

    // One path component made safe: "/" becomes "-", control characters "_", leading dots "_",
    // surrounding blanks dropped, at most `maxBytes` bytes (cut on a UTF-8 character
    // boundary); `fallback` when nothing is left.
    static std::string safeComponent(const std::string& name, const std::string& fallback,
                                     size_t maxBytes = 255);

private:
    std::string root;
    TextLookup text;
};

} // namespace waxline::exporting
