#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace waxline::exporting {

// Why one step of an export failed. The front end words it; the fields a kind does not name
// stay empty. `detail` is the system's own text (errno, libsndfile) where there is one.
struct ExportProblem {
    enum class Kind {
        None,
        TrackFileMissing,       // path: the track file
        TrackFileEmpty,         // path
        TrackFileUnreadable,    // path, detail
        TrackFileHoldsNoAudio,  // path
        EncoderFailed,          // status: exit status, command, detail: the encoder's last output
        EncoderNotFound,        // status 127, command: as it would have run
        EncoderNotStarted,      // status 127, command, path: the program, detail
        EncoderNoPipe,          // status 127, command, detail
        EncoderNothingToRun,    // status 127
        EncoderMadeNoMp3,       // command, path: the MP3 that is missing or empty
        NormaliseCannotRead,    // path: the track file, detail
        NormaliseCannotCreate,  // path: "normalized.wav", detail
        NormaliseCannotWrite,   // path, detail
        NormaliseCannotFinish,  // path
        CleaningFailed,         // path: the cleaned copy or the track file, detail
        CannotTag,              // path: the MP3
        ImportCannotMakeFolder, // path: the library folder, detail (may be empty)
        ImportCannotCreate,     // path: the library folder, detail
        ImportCannotRead,       // path: the MP3, detail
        ImportCannotWrite,      // detail
        ImportCannotPutInPlace, // path: the library file, detail
        LibraryUnavailable,     // path: the music folder; its check after this track failed
        NotExported,            // the export ended before this track: the library was unavailable
    };

    ExportProblem() = default;
    ExportProblem(Kind kind, std::string path, std::string detail = {}, std::string command = {})
        : kind(kind)
        , path(std::move(path))
        , detail(std::move(detail))
        , command(std::move(command)) {}

    Kind kind = Kind::None;
    std::string path;
    std::string detail;
    std::string command;
    int status = 0;

    bool failed() const { return kind != Kind::None; }
    // A failure of the import into the library (as opposed to making the MP3).
    bool isImport() const {
        return kind >= Kind::ImportCannotMakeFolder && kind <= Kind::ImportCannotPutInPlace;
    }
};

// A track file that can be exported but is not quite right.
struct TrackWarning {
    enum class Kind {
        Truncated, // the header announces more audio than the file holds
    };
    Kind kind = Kind::Truncated;
    std::string path;
    uint64_t bytesPresent = 0;
    uint64_t bytesAnnounced = 0;
    double seconds = 0; // the audio that is there
};

} // namespace waxline::exporting
