#include "support/PulseDaemon.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace waxline::test {

namespace {

const char* const kUnset = "\1";

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

bool alive(int pid) {
    return ::kill(pid, 0) == 0 || errno == EPERM;
}

} // namespace

PulseDaemon::PulseDaemon(std::string sinkName, int rate, int channels)
    : sink(std::move(sinkName)) {
    std::string output;
    if (runCommand("command -v pulseaudio && command -v pactl && command -v paplay", output) != 0) {
        failure = "pulseaudio, pactl or paplay is not installed (Debian packages pulseaudio and "
                  "pulseaudio-utils)";
        return;
    }
    ::chmod(runtime.path().c_str(), 0700);
    for (const char* name : {"XDG_RUNTIME_DIR", "PULSE_SERVER", "PULSE_RUNTIME_PATH"}) {
        const char* value = std::getenv(name);
        savedEnvironment.emplace_back(name, value ? value : kUnset);
    }
    ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
    ::setenv("PULSE_RUNTIME_PATH", (runtime.path() + "/pulse").c_str(), 1);
    ::setenv("PULSE_SERVER", ("unix:" + runtime.path() + "/pulse/native").c_str(), 1);

    // As root the daemon needs no system mode for this: it only warns.
    // No module-always-sink: its placeholder sink would take index 0, and tests need a real
    // device there. The command-line protocol lets pacmd set properties on sources.
    const int status = runCommand("pulseaudio -D --exit-idle-time=-1 --disallow-exit -n "
                                  "--load=module-native-protocol-unix "
                                  "--load=module-cli-protocol-unix </dev/null >/dev/null 2>" +
                                      quoted(runtime.file("daemon.log")) + "; status=$?; cat " +
                                      quoted(runtime.file("daemon.log")) + "; exit $status",
                                  output);
    std::ifstream pidFile(runtime.path() + "/pulse/pid");
    int started = -1;
    if (!(pidFile >> started) || status != 0) {
        failure =
            "cannot start a PulseAudio daemon (status " + std::to_string(status) + "): " + output;
        while (!failure.empty() && failure.back() == '\n')
            failure.pop_back();
        if (started > 0)
            ::kill(started, SIGKILL);
        return;
    }
    pid = started;
    watchOverDaemon();
    nullSinkModule = loadModule("module-null-sink sink_name=" + sink + " norewinds=1 rate=" +
                                std::to_string(rate) + " channels=" + std::to_string(channels));
    if (nullSinkModule < 0) {
        failure = "the PulseAudio daemon refused the null sink";
        stop();
    }
}

PulseDaemon::~PulseDaemon() {
    stop();
    for (const auto& [name, value] : savedEnvironment) {
        if (value == kUnset)
            ::unsetenv(name.c_str());
        else
            ::setenv(name.c_str(), value.c_str(), 1);
    }
}

void PulseDaemon::stop() {
    if (pid <= 0)
        return;
    ::kill(pid, SIGTERM);
    for (int i = 0; i < 100 && alive(pid); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (alive(pid))
        ::kill(pid, SIGKILL);
    pid = -1;
}

// A test that dies (a sanitizer halting, an abort, a kill) never reaches the destructor: a
// detached watcher stops the daemon and removes its folder once this process is gone.
void PulseDaemon::watchOverDaemon() const {
    const std::string self = std::to_string(::getpid());
    const std::string daemon = std::to_string(pid);
    std::string output;
    runCommand("setsid sh -c " +
                   quoted("while kill -0 " + self + " && kill -0 " + daemon +
                          "; do sleep 0.5; done; kill -0 " + self + " || { kill " + daemon +
                          "; sleep 2; kill -9 " + daemon + "; rm -rf " + quoted(runtime.path()) +
                          "; }") +
                   " </dev/null >/dev/null 2>&1 &",
               output);
}

int PulseDaemon::pactl(const std::string& args, std::string& output) const {
    return runCommand("pactl " + args, output, false);
}

int PulseDaemon::loadModule(const std::string& moduleAndArguments) {
    std::string output;
    if (pactl("load-module " + moduleAndArguments, output) != 0)
        return -1;
    try {
        return std::stoi(output);
    } catch (...) {
        return -1;
    }
}

bool PulseDaemon::unloadModule(int index) {
    std::string output;
    return index >= 0 && pactl("unload-module " + std::to_string(index), output) == 0;
}

int PulseDaemon::addRemappedSource(
    const std::string& sourceName,
    const std::vector<std::pair<std::string, std::string>>& properties) {
    std::string list;
    for (const auto& [key, value] : properties)
        list += (list.empty() ? "" : " ") + key + "=\"" + value + "\"";
    return loadModule("module-remap-source master=" + monitorSource() + " source_name=" +
                      sourceName + " " + quoted("source_properties='" + list + "'"));
}

bool PulseDaemon::addCard(const std::string& name, const std::string& cardName, int rate) {
    const std::string card = "alsa.card_name=\"" + cardName + "\"";
    if (loadModule("module-null-sink sink_name=" + name +
                   " norewinds=1 channels=2 rate=" + std::to_string(rate) + " " +
                   quoted("sink_properties='" + card + " device.description=\"" + name +
                          " playback\"'")) < 0)
        return false;
    if (loadModule("module-remap-source master=" + name + ".monitor source_name=" + name + "_in " +
                   quoted("source_properties='" + card + " device.description=\"" + name +
                          " capture\"'")) < 0)
        return false;
    return setSourceProperties(name + ".monitor", {{"alsa.card_name", cardName}});
}

bool PulseDaemon::setSourceProperties(
    const std::string& source, const std::vector<std::pair<std::string, std::string>>& properties) {
    std::string output;
    for (const auto& [key, value] : properties)
        if (runCommand("pacmd update-source-proplist " + quoted(source) + " " +
                           quoted(key + "=\"" + value + "\""),
                       output, false) != 0)
            return false;
    return true;
}

bool PulseDaemon::play(const std::string& file) const {
    std::string output;
    return runCommand("paplay -d " + sink + " " + quoted(file), output) == 0;
}

} // namespace waxline::test
