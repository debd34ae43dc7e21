#include "exporting/EncoderFormat.h"

#include <filesystem>

namespace waxline::exporting {

const EncoderDescription& mp3Encoding() {
    // Variable bit rate, LAME's quality 2: transparent for records and tapes at about 190 kbit/s.
    static const EncoderDescription mp3{"MP3", "mp3", {"-codec:a", "libmp3lame", "-qscale:a", "2"}};
    return mp3;
}

const EncoderDescription& flacEncoding() {
    // The archive copy: the samples as recorded (FLAC keeps the track's own bit depth) with the
    // MD5 of the decoded audio in its header, so any later copy can be checked.
    static const EncoderDescription flac{
        "FLAC", "flac", {"-codec:a", "flac", "-compression_level", "8"}, true};
    return flac;
}

std::vector<const EncoderDescription*> encodingsOf(ExportFormat format) {
    switch (format) {
    case ExportFormat::Mp3:
        return {&mp3Encoding()};
    case ExportFormat::Flac:
        return {&flacEncoding()};
    case ExportFormat::Both:
        return {&mp3Encoding(), &flacEncoding()};
    }
    return {};
}

std::optional<ExportFormat> exportFormatNamed(std::string_view word) {
    if (word == "mp3")
        return ExportFormat::Mp3;
    if (word == "flac")
        return ExportFormat::Flac;
    if (word == "both")
        return ExportFormat::Both;
    return std::nullopt;
}

std::string encodedPathFor(const std::string& wavPath, const EncoderDescription& encoding) {
    return std::filesystem::path(wavPath).replace_extension(encoding.extension).string();
}

} // namespace waxline::exporting
