#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace waxline::cli {

// Thrown for bad usage; the message is shown on one line and the exit status is 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A value the command cannot use: shown as one line, without the usage, exit status 2.
struct BadValue : UsageError {
    using UsageError::UsageError;
};

// The arguments of one command. Options ("--name value", "--name=value" or a bare flag) are
// taken out as they are asked for; what remains are the positional arguments.
class Arguments {
public:
    explicit Arguments(std::vector<std::string> args)
        : items(std::move(args)) {}

    bool flag(const std::string& name);
    std::optional<std::string> option(const std::string& name);
    // Every value of an option that may be repeated, in order.
    std::vector<std::string> options(const std::string& name);
    std::optional<long long> integerOption(const std::string& name, long long min, long long max);
    // A finite number; NaN and infinities are refused as they are never meant.
    std::optional<double> numberOption(const std::string& name);

    // The positional arguments; fails on any option that no one asked for.
    std::vector<std::string> positional() const;

private:
    std::vector<std::string> items;
};

} // namespace waxline::cli
