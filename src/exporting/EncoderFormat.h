#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace waxline::exporting {

// How one kind of exported file is made: the codec options given to ffmpeg after the input,
// and the extension the file takes beside its track file and in the library.
struct EncoderDescription {
    std::string name;      // as shown: "MP3", "FLAC"
    std::string extension; // without the dot
    std::vector<std::string> codecArguments;
    bool lossless = false;
};

const EncoderDescription& mp3Encoding();
const EncoderDescription& flacEncoding();

// What an export makes of every track.
enum class ExportFormat { Mp3, Flac, Both };

// The encodings a format asks for, the lossy one first.
std::vector<const EncoderDescription*> encodingsOf(ExportFormat format);

// "mp3", "flac" or "both"; nothing for any other word.
std::optional<ExportFormat> exportFormatNamed(std::string_view word);

// The file made from a track: its path with the extension replaced by the encoding's.
std::string encodedPathFor(const std::string& wavPath, const EncoderDescription& encoding);

} // namespace waxline::exporting
