#pragma once

#include "exporting/EncoderFormat.h"
#include "exporting/ExportProblem.h"

#include <string>
#include <vector>

namespace waxline::exporting {

struct EncodeResult {
    // Whether the program ran at all.
    enum class Launch { Ran, NothingToRun, NoPipe, NotStarted, NotFound };
    Launch launch = Launch::Ran;
    int exitStatus = -1;      // the encoder's exit status; 127 when it could not be started
    std::string program;      // what was run
    std::string command;      // the command line, quoted for reading, for the log
    std::string errorOutput;  // the last lines the encoder printed
    std::string launchDetail; // the system's reason when it could not be started
    bool ok() const { return exitStatus == 0; }
};

// The one description of a failed encoding (None when it succeeded).
ExportProblem encoderProblem(const EncodeResult& result);

// The encoder to run: "ffmpeg" beside the running executable when there is one, else the
// first executable "ffmpeg" on PATH; empty when there is none.
std::string ffmpegProgram();

// The export's encoder command: PROGRAM -i WAV, the encoding's codec options, OUTPUT, with the
// options that keep ffmpeg quiet and non-interactive. Every exported file is made with this.
std::vector<std::string> encoderArguments(const std::string& program, const std::string& inputPath,
                                          const std::string& outputPath,
                                          const EncoderDescription& encoding = mp3Encoding());

// Runs a program with an argument vector, no shell: standard input is /dev/null, standard
// output and error are collected. Blocks the calling thread until the program ends.
EncodeResult runProgram(const std::vector<std::string>& argv);

// Encodes the track's WAV file to the MP3 beside it (same base name), overwriting it, with
// mp3Encoding(). Safe to call from several threads.
EncodeResult encodeFileToMp3(const std::string& wavPath);

// Same, from any input file to a chosen output file.
EncodeResult encodeToMp3(const std::string& inputPath, const std::string& mp3Path);

// Any encoding, from any input file to a chosen output file, overwriting it.
EncodeResult encodeFile(const std::string& inputPath, const std::string& outputPath,
                        const EncoderDescription& encoding);

} // namespace waxline::exporting
