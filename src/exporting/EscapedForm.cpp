#include "exporting/EscapedForm.h"

namespace waxline::exporting {

namespace {
void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}
} // namespace

std::string escapedFormOf(const std::string& text) {
    std::string escaped = text;
    replaceAll(escaped, "\\", "\\\\");
    replaceAll(escaped, "\"", "\\\"");
    return escaped;
}

} // namespace waxline::exporting
