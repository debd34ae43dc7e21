#pragma once

namespace waxline {

// How the tagger reads the names it is given.
enum class TagText {
    // Byte by byte as Latin-1, as the export has always stored them: a UTF-8 name lands in the
    // tag as one character per byte ("Café" reads back as "CafÃ©").
    Latin1Bytes,
    // As UTF-8 text, so a name reads back as it was typed; bytes that are not UTF-8 are still
    // taken as Latin-1.
    Unicode,
};

} // namespace waxline
