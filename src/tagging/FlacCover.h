#pragma once

#include <string>
#include <utility>

namespace waxline {

// Puts a front cover picture (the image file's bytes, "image/jpeg" or "image/png") into a FLAC
// file's PICTURE block, replacing any front cover it held. False when the file is not a FLAC
// that can be opened and saved, or the image is empty.
bool setFlacFrontCover(const std::string& flacPath, const std::string& imageBytes,
                       const std::string& mimeType);

// The front cover's bytes and type read back; empty when there is none.
std::pair<std::string, std::string> flacFrontCover(const std::string& flacPath);

} // namespace waxline
