// The command line as transcripts: each file in cli/transcripts is a session at a shell, run in
// a fresh folder with waxline-cli on PATH and the helpers of prelude.sh. An indented "$ " line is
// a command ("> " continues it); the indented lines after it are what it must print (standard
// output and error together), a line ending in " (re)" being a regular expression and "[N]" the
// exit status when it is not 0; other lines ("# ...") are comments.
// WAXLINE_TRANSCRIPT_UPDATE=1 writes what was printed back into the file, keeping the expected
// lines that still match.
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace waxline::test {
namespace {

namespace fs = std::filesystem;

const fs::path kFolder = fs::path(WAXLINE_SOURCE_DIR) / "tests/cli/transcripts";
const std::string kMarker = "@@transcript@@";

struct Command {
    size_t firstLine = 0; // index into the file's lines of the "$ " line
    size_t endLine = 0;   // one past its last expected line
    std::string shell;
    std::vector<std::string> expected;
};

struct Transcript {
    std::vector<std::string> lines;
    std::vector<Command> commands;
};

Transcript parse(const fs::path& file) {
    Transcript t;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        t.lines.push_back(line);
    for (size_t i = 0; i < t.lines.size(); ++i) {
        const std::string& line = t.lines[i];
        if (line.rfind("  $ ", 0) == 0) {
            t.commands.push_back({i, i + 1, line.substr(4), {}});
        } else if (line.rfind("  > ", 0) == 0 && !t.commands.empty() &&
                   t.commands.back().expected.empty()) {
            t.commands.back().shell += "\n" + line.substr(4);
            t.commands.back().endLine = i + 1;
        } else if (line.rfind("  ", 0) == 0 && !t.commands.empty() &&
                   t.commands.back().endLine == i) {
            t.commands.back().expected.push_back(line.substr(2));
            t.commands.back().endLine = i + 1;
        }
    }
    return t;
}

bool matches(const std::string& expected, const std::string& actual) {
    const std::string re = " (re)";
    if (expected.size() > re.size() &&
        expected.compare(expected.size() - re.size(), re.size(), re) == 0)
        return std::regex_match(actual,
                                std::regex(expected.substr(0, expected.size() - re.size())));
    return expected == actual;
}

// What each command printed, its exit status as a last "[N]" line when it is not 0.
std::vector<std::vector<std::string>> run(const Transcript& t, const TempDir& dir) {
    std::ostringstream script;
    script << ". " << shellQuote((kFolder / "prelude.sh").string()) << "\n";
    for (size_t i = 0; i < t.commands.size(); ++i)
        script << t.commands[i].shell << "\necho \"" << kMarker << " $?\"\n";
    std::ofstream(dir.file("transcript.sh")) << script.str();
    const std::string cliDir = fs::path(cliPath()).parent_path().string();
    std::string output;
    runCommand("cd " + shellQuote(dir.path()) + " && PATH=" + shellQuote(cliDir) +
                   ":\"$PATH\" WAXLINE_CLI= bash transcript.sh 2>&1",
               output);
    std::vector<std::vector<std::string>> printed(1);
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const size_t at = line.find(kMarker);
        if (at == std::string::npos) {
            printed.back().push_back(line);
            continue;
        }
        if (at > 0)
            printed.back().push_back(line.substr(0, at) + " (no newline at the end)");
        const std::string status = line.substr(at + kMarker.size() + 1);
        if (status != "0")
            printed.back().push_back("[" + status + "]");
        printed.emplace_back();
    }
    printed.pop_back();
    return printed;
}

class Transcripts : public testing::TestWithParam<std::string> {};

TEST_P(Transcripts, PrintWhatTheyShow) {
    const fs::path file = kFolder / (GetParam() + ".t");
    Transcript t = parse(file);
    ASSERT_FALSE(t.commands.empty()) << file;
    TempDir dir;
    const auto printed = run(t, dir);
    ASSERT_EQ(printed.size(), t.commands.size()) << "the session ended early";
    std::vector<std::string> updated;
    size_t copied = 0;
    for (size_t c = 0; c < t.commands.size(); ++c) {
        const Command& command = t.commands[c];
        const auto& actual = printed[c];
        bool same = actual.size() == command.expected.size();
        for (size_t i = 0; same && i < actual.size(); ++i)
            same = matches(command.expected[i], actual[i]);
        std::ostringstream diff;
        for (const auto& line : command.expected)
            diff << "  - " << line << "\n";
        for (const auto& line : actual)
            diff << "  + " << line << "\n";
        EXPECT_TRUE(same) << file.filename().string() << ":" << command.firstLine + 1 << ": $ "
                          << command.shell << "\n"
                          << diff.str();
        updated.insert(updated.end(), t.lines.begin() + static_cast<long>(copied),
                       t.lines.begin() + static_cast<long>(command.endLine) -
                           static_cast<long>(command.expected.size()));
        for (size_t i = 0; i < actual.size(); ++i)
            updated.push_back(
                "  " + (i < command.expected.size() && matches(command.expected[i], actual[i])
                            ? command.expected[i]
                            : actual[i]));
        copied = command.endLine;
    }
    updated.insert(updated.end(), t.lines.begin() + static_cast<long>(copied), t.lines.end());
    if (const char* update = std::getenv("WAXLINE_TRANSCRIPT_UPDATE"); update && *update == '1') {
        std::ofstream out(file);
        for (const auto& line : updated)
            out << line << "\n";
    }
}

std::vector<std::string> transcriptNames() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(kFolder))
        if (entry.path().extension() == ".t")
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

INSTANTIATE_TEST_SUITE_P(Cli, Transcripts, testing::ValuesIn(transcriptNames()),
                         [](const auto& info) {
                             std::string name = info.param;
                             for (char& c : name)
                                 if (!std::isalnum(static_cast<unsigned char>(c)))
                                     c = '_';
                             return name;
                         });

} // namespace
} // namespace waxline::test
