#include "cli/CommandLine.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

namespace waxline::cli {

bool Arguments::flag(const std::string& name) {
    for (auto it = items.begin(); it != items.end(); ++it) {
        if (*it == name) {
            items.erase(it);
            return true;
        }
    }
    return false;
}

std::optional<std::string> Arguments::option(const std::string& name) {
    std::vector<std::string> all = options(name);
    if (all.empty())
        return std::nullopt;
    if (all.size() > 1)
        throw UsageError(name + " is given more than once");
    return all.front();
}

std::vector<std::string> Arguments::options(const std::string& name) {
    std::vector<std::string> values;
    for (size_t i = 0; i < items.size();) {
        if (items[i] == name) {
            if (i + 1 >= items.size())
                throw UsageError(name + " needs a value");
            values.push_back(items[i + 1]);
            items.erase(items.begin() + static_cast<long>(i),
                        items.begin() + static_cast<long>(i) + 2);
        } else if (items[i].rfind(name + "=", 0) == 0) {
            values.push_back(items[i].substr(name.size() + 1));
            items.erase(items.begin() + static_cast<long>(i));
        } else {
            ++i;
        }
    }
    return values;
}

std::optional<long long> Arguments::integerOption(const std::string& name, long long min,
                                                  long long max) {
    auto text = option(name);
    if (!text)
        return std::nullopt;
    errno = 0;
    char* end = nullptr;
    const long long value = std::strtoll(text->c_str(), &end, 10);
    if (text->empty() || *end != '\0' || errno != 0 || value < min || value > max)
        throw BadValue(name + " takes a whole number from " + std::to_string(min) + " to " +
                       std::to_string(max) + ", not '" + *text + "'");
    return value;
}

std::optional<double> Arguments::numberOption(const std::string& name) {
    auto text = option(name);
    if (!text)
        return std::nullopt;
    char* end = nullptr;
    const double value = std::strtod(text->c_str(), &end);
    if (text->empty() || *end != '\0' || !std::isfinite(value))
        throw BadValue(name + " takes a finite number, not '" + *text + "'");
    return value;
}

std::vector<std::string> Arguments::positional() const {
    for (const auto& item : items) {
        if (item.size() > 1 && item[0] == '-' && item != "-")
            throw UsageError("unknown option " + item);
    }
    return items;
}

} // namespace waxline::cli
