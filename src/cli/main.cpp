#include "cli/Commands.h"

#include <cstdio>
#include <cstring>
#include <exception>

namespace {

struct Command {
    const char* name;
    int (*run)(waxline::cli::Arguments&);
    const char* usage;
};

const Command kCommands[] = {
    {"analyse", waxline::cli::analyseCommand,
     "analyse FILE.wav [--preset none|riaa|chrome|brightspin] [--output OUT.wav] [--tracks]"},
    {"make-demo-side", waxline::cli::makeDemoSideCommand,
     "make-demo-side OUT.wav [--tracks N] [--seed S] [--length SECONDS] [--realistic]"},
    {"devices", waxline::cli::devicesCommand,
     "devices [--virtual-device SETUP] [--latency [--input INPUT]]"},
    {"record", waxline::cli::recordCommand,
     "record [--virtual-device SETUP] [--input INPUT] [--preset auto|none|riaa|chrome|brightspin] "
     "[--split auto|off] [--gain DB] [--max-seconds N] [--export-dir DIR]"},
    {"export", waxline::cli::exportCommand,
     "export --artist A --album B [--title T]... [--normalise] [--tracks N] [--export-dir DIR] "
     "[--library DIR] [--jobs N]"},
    {"digitize", waxline::cli::digitizeCommand,
     "digitize [--virtual-device SETUP] [--input INPUT] --artist A --album B [--title T]... "
     "[--preset auto|none|riaa|chrome|brightspin] [--split auto|off] [--gain DB] [--max-seconds N] "
     "[--normalise] "
     "[--export-dir DIR] [--library DIR] [--jobs N]"},
};

void printUsage(FILE* to) {
    std::fprintf(to, "Usage: waxline-cli COMMAND [ARGS]\n\nCommands:\n");
    for (const auto& c : kCommands)
        std::fprintf(to, "  waxline-cli %s\n", c.usage);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        printUsage(stderr);
        return 2;
    }
    if (!std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "help")) {
        printUsage(stdout);
        return 0;
    }
    for (const auto& c : kCommands) {
        if (std::strcmp(argv[1], c.name) != 0)
            continue;
        waxline::cli::Arguments args(std::vector<std::string>(argv + 2, argv + argc));
        try {
            return c.run(args);
        } catch (const waxline::cli::UsageError& e) {
            std::fprintf(stderr, "waxline-cli %s: %s\nUsage: waxline-cli %s\n", c.name, e.what(),
                         c.usage);
            return 2;
        } catch (const std::exception& e) {
            std::fprintf(stderr, "waxline-cli %s: %s\n", c.name, e.what());
            return 1;
        }
    }
    std::fprintf(stderr, "waxline-cli: unknown command '%s'\n", argv[1]);
    printUsage(stderr);
    return 2;
}
