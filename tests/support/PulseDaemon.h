#pragma once

#include "support/Signals.h"

#include <string>
#include <utility>
#include <vector>

namespace waxline::test {

// A private PulseAudio daemon for integration tests: its own XDG_RUNTIME_DIR, no sound card, a
// null sink whose monitor source carries whatever is played into the sink, paced in real time.
// That sink and its monitor are the daemon's first devices: sink 0 and source 0.
// While it lives, this process's XDG_RUNTIME_DIR and PULSE_SERVER point at it, so PulseAudio
// clients made afterwards (ours, pactl, paplay) talk to it.
//
//   waxline::test::PulseDaemon pulse;
//   if (!pulse.running())
//       GTEST_SKIP() << pulse.whyNot();
//   // open a record stream on pulse.monitorSource() ("deck.monitor"), then:
//   pulse.play(wavPath);              // returns when paplay is done
//   pulse.unloadModule(pulse.sinkModule()); // the sink and its monitor vanish
class PulseDaemon {
public:
    explicit PulseDaemon(std::string sinkName = "deck", int rate = 44100, int channels = 2);
    ~PulseDaemon(); // stops the daemon by its pid and restores the environment
    PulseDaemon(const PulseDaemon&) = delete;
    PulseDaemon& operator=(const PulseDaemon&) = delete;

    bool running() const { return pid > 0; }
    const std::string& whyNot() const { return failure; }

    const std::string& sinkName() const { return sink; }
    std::string monitorSource() const { return sink + ".monitor"; }
    int sinkModule() const { return nullSinkModule; }

    // A source remapped from the monitor, named `sourceName`, with properties of our choosing
    // (e.g. {"device.description", "USB Audio CODEC "} or {"alsa.card_name", ...}); values may
    // hold blanks but no quotes. Returns the module index or -1.
    int addRemappedSource(const std::string& sourceName,
                          const std::vector<std::pair<std::string, std::string>>& properties);

    // A USB card as the kernel shows a codec with both sides: a null sink `name` (its playback
    // side) and a source `name`_in remapped from its monitor (its capture side), both carrying
    // alsa.card_name = cardName, as does the sink's monitor (which on PipeWire it does). Returns
    // false when the daemon refuses.
    bool addCard(const std::string& name, const std::string& cardName, int rate);
    // Sets properties on an existing source (pacmd), e.g. {"alsa.card_name", "USB Audio CODEC "}.
    bool setSourceProperties(const std::string& source,
                             const std::vector<std::pair<std::string, std::string>>& properties);

    // Runs `pactl ARGS` against this daemon; returns its exit status, output in `output`.
    int pactl(const std::string& args, std::string& output) const;
    int loadModule(const std::string& moduleAndArguments); // module index or -1
    bool unloadModule(int index);

    // Plays a sound file into the sink with paplay; returns when it has been played.
    bool play(const std::string& file) const;

private:
    void stop();
    void watchOverDaemon() const;

    TempDir runtime; // destroyed last, after the daemon is gone
    std::string sink;
    std::string failure;
    int pid = -1;
    int nullSinkModule = -1;
    std::vector<std::pair<std::string, std::string>> savedEnvironment; // name, value ("\1": unset)
};

} // namespace waxline::test
