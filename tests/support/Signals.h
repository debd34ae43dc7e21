#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace waxline::test {

// A sine of the given amplitude (full scale 1.0), frequency and length.
std::vector<float> sine(double frequency, double amplitude, double sampleRate, size_t frames,
                        double phase = 0);

// The amplitude of the component at `frequency` in `samples` (single-bin DFT over the whole
// span); choose spans holding whole periods for an exact reading.
double toneAmplitude(const std::vector<float>& samples, double frequency, double sampleRate,
                     size_t from = 0);

double toDb(double ratio);

// A fresh temporary directory, removed with its contents when the object goes.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return dir; }
    std::string file(const std::string& name) const { return dir + "/" + name; }

private:
    std::string dir;
};

// Runs a command line through the shell; returns the exit status and fills `output` with what
// it printed on standard output (and standard error when `mergeErrors`).
int runCommand(const std::string& command, std::string& output, bool mergeErrors = true);

// The text as one single-quoted shell word, safe for any bytes but NUL.
std::string shellQuote(const std::string& text);

// The waxline-cli under test: $WAXLINE_CLI, else the one built in the same build tree.
std::string cliPath();

// Writes a synthetic record side with `waxline-cli make-demo-side` as "side.wav" in the folder
// and returns its path; a failing command fails the test.
std::string makeDemoSideFile(const TempDir& dir, int tracks, int seed);

// Every other process whose command line mentions `text` (arguments joined by blanks), as
// "PID: command line": for finding encoders left running on a test's folder.
std::vector<std::string> processesMentioning(const std::string& text);

} // namespace waxline::test
