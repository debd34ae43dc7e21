#include "support/Signals.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace waxline::test {

std::vector<float> sine(double frequency, double amplitude, double sampleRate, size_t frames,
                        double phase) {
    std::vector<float> out(frames);
    for (size_t i = 0; i < frames; ++i)
        out[i] = static_cast<float>(
            amplitude *
            std::sin(2 * M_PI * frequency * static_cast<double>(i) / sampleRate + phase));
    return out;
}

double toneAmplitude(const std::vector<float>& samples, double frequency, double sampleRate,
                     size_t from) {
    double re = 0, im = 0;
    for (size_t i = from; i < samples.size(); ++i) {
        const double w = 2 * M_PI * frequency * static_cast<double>(i) / sampleRate;
        re += samples[i] * std::cos(w);
        im += samples[i] * std::sin(w);
    }
    const double n = static_cast<double>(samples.size() - from);
    return 2 * std::sqrt(re * re + im * im) / n;
}

double toDb(double ratio) {
    return 20 * std::log10(ratio);
}

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "waxline-test-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot make a temporary directory");
    dir = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
}

int runCommand(const std::string& command, std::string& output, bool mergeErrors) {
    output.clear();
    FILE* pipe = popen((command + (mergeErrors ? " 2>&1" : "")).c_str(), "r");
    if (!pipe)
        return -1;
    std::array<char, 4096> chunk;
    size_t n;
    while ((n = fread(chunk.data(), 1, chunk.size(), pipe)) > 0)
        output.append(chunk.data(), n);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string shellQuote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

std::string cliPath() {
    const char* path = std::getenv("WAXLINE_CLI");
    if (path && *path)
        return path;
    std::error_code ec;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
    return (self.parent_path().parent_path() / "src/cli/waxline-cli").string();
}

// Sides are made once per build: the build's tests share them in a folder beside the generator,
// each side named by its arguments and by the generator's time, and every test gets a copy.
std::string makeDemoSideFile(const TempDir& dir, int tracks, int seed) {
    namespace fs = std::filesystem;
    const std::string side = dir.file("side.wav");
    const std::string arguments =
        " --tracks " + std::to_string(tracks) + " --seed " + std::to_string(seed);
    std::error_code ec;
    const fs::path cacheDir = fs::path(cliPath()).parent_path() / "test-sides";
    const auto generator = fs::last_write_time(cliPath(), ec).time_since_epoch().count();
    std::string cached;
    if (!ec)
        fs::create_directories(cacheDir, ec);
    if (!ec) {
        cached = (cacheDir / ("side-" + std::to_string(tracks) + "-" + std::to_string(seed) + "-" +
                              std::to_string(generator) + ".wav"))
                     .string();
        if (fs::copy_file(cached, side, ec))
            return side;
    }
    std::string output;
    const int status =
        runCommand(cliPath() + " make-demo-side " + shellQuote(side) + arguments, output);
    EXPECT_EQ(status, 0) << output;
    if (status == 0 && !cached.empty()) {
        const std::string partial = cached + "." + std::to_string(::getpid());
        if (fs::copy_file(side, partial, ec))
            fs::rename(partial, cached, ec); // whole or not at all, whichever test is first
    }
    return side;
}

std::vector<std::string> processesMentioning(const std::string& text) {
    std::vector<std::string> found;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ec)) {
        const std::string pid = entry.path().filename().string();
        if (pid.find_first_not_of("0123456789") != std::string::npos ||
            pid == std::to_string(::getpid()))
            continue;
        std::ifstream in(entry.path() / "cmdline", std::ios::binary);
        std::string line((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        for (char& c : line)
            if (c == '\0')
                c = ' ';
        if (line.find(text) != std::string::npos)
            found.push_back(pid + ": " + line);
    }
    return found;
}

} // namespace waxline::test
