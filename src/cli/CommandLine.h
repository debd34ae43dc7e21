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
    std::optional<double> numberOption(const std::string& name);

    // The positional arguments; fails on any option that no one asked for.
    std::vector<std::string> positional() const;

private:
    std::vector<std::string> items;
};

} // namespace waxline::cli
