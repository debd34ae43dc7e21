// An ffmpeg of the test's own, first on PATH while the object lives, for tests where only how
// long the encoder runs matters, or what it was given.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace waxline::test {

struct StandInEncoder {
    std::string savedPath;
    // Writes `folder`/ffmpeg running `body`, with the output file (the last argument, "file:"
    // taken off) in $out.
    StandInEncoder(const std::string& folder, const std::string& body) {
        namespace fs = std::filesystem;
        fs::create_directories(folder);
        std::ofstream(folder + "/ffmpeg") << "#!/bin/sh\nfor out; do :; done\nout=${out#file:}\n"
                                          << body << "\n";
        fs::permissions(folder + "/ffmpeg", fs::perms::owner_all);
        const char* path = std::getenv("PATH");
        savedPath = path ? path : "";
        ::setenv("PATH", (folder + ":" + savedPath).c_str(), 1);
    }
    ~StandInEncoder() { ::setenv("PATH", savedPath.c_str(), 1); }
    StandInEncoder(const StandInEncoder&) = delete;
    StandInEncoder& operator=(const StandInEncoder&) = delete;
};

// The body of an encoder that has written part of its file and never ends by itself. It forks
// nothing once the file is there: a fork not yet replaced by its program still shows the
// encoder's command line, and would look like an encoder left running.
inline const char* const kEncoderThatNeverEnds = "mkfifo \"${0%/*}/never\" 2>/dev/null\n"
                                                 "echo part > \"$out\"\n"
                                                 "read x < \"${0%/*}/never\"";

} // namespace waxline::test
