#include "cli/LoopbackProbe.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <optional>
#include <vector>

namespace waxline::cli {

namespace {

constexpr double kPeriodSeconds = 0.5;
constexpr int kClicks = 10;
constexpr double kLeadSeconds = 0.25;
constexpr const char* kProbeSink = "waxline_latency_probe";

std::optional<platform::DeviceInfo> find(platform::AudioSystem& system,
                                         platform::Direction direction, auto&& matches) {
    for (const auto& d : system.devices(direction))
        if (matches(d))
            return d;
    return std::nullopt;
}

// Runs pactl with `arguments`; its standard output, or nothing when it failed.
std::optional<QString> pactl(const QStringList& arguments) {
    QProcess process;
    process.start("pactl", arguments);
    if (!process.waitForFinished(5000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return std::nullopt;
    return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}

void waitMilliseconds(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

// Plays the click train once, then silence.
class TrainPlayer : public platform::OutputHandler {
public:
    explicit TrainPlayer(std::vector<float> train)
        : train(std::move(train)) {}
    void onOutput(float* const* channels, uint32_t count, uint32_t frames, int64_t,
                  uint64_t) override {
        std::size_t at = position.load(std::memory_order_relaxed);
        for (uint32_t i = 0; i < frames; ++i, ++at) {
            const float s = at < train.size() ? train[at] : 0.0f;
            for (uint32_t c = 0; c < count; ++c)
                channels[c][i] = s;
        }
        position.store(at, std::memory_order_relaxed);
    }

private:
    std::vector<float> train;
    std::atomic<std::size_t> position{0};
};

// Keeps the first channel of what it hears, up to the room made beforehand.
class Recorder : public platform::InputHandler {
public:
    explicit Recorder(std::size_t frames)
        : heard(frames, 0.0f) {}
    void onInput(float* const* channels, uint32_t, uint32_t frames, int64_t, uint64_t) override {
        std::size_t at = used.load(std::memory_order_relaxed);
        const std::size_t n = std::min<std::size_t>(frames, heard.size() - at);
        std::copy(channels[0], channels[0] + n, heard.begin() + static_cast<std::ptrdiff_t>(at));
        used.store(at + n, std::memory_order_release);
    }
    std::vector<float> take() {
        heard.resize(used.load(std::memory_order_acquire));
        return std::move(heard);
    }

private:
    std::vector<float> heard;
    std::atomic<std::size_t> used{0};
};

} // namespace

LoopbackMeasurement measureThroughLoopback(platform::AudioSystem& system,
                                           platform::AudioObjectID input,
                                           platform::AudioObjectID output) {
    using platform::Direction;
    LoopbackMeasurement result;
    const auto in = system.device(input, Direction::Input);
    const auto out = system.device(output, Direction::Output);
    if (!in || !out || in->monitorOf == platform::kNoDevice) {
        result.whyNot = "the input is not the monitor of an output";
        return result;
    }
    if (in->monitorOf == output) {
        result.whyNot = "the input is the monitor of the output itself";
        return result;
    }
    const auto deck = system.device(in->monitorOf, Direction::Output);
    const auto heardAt = find(system, Direction::Input,
                              [&](const platform::DeviceInfo& d) { return d.monitorOf == output; });
    if (!deck || !heardAt) {
        result.whyNot = "the output has no monitor to listen to";
        return result;
    }
    const auto module =
        pactl({"load-module", "module-combine-sink", QString("sink_name=") + kProbeSink,
               QString::fromStdString("slaves=" + deck->serverName + "," + out->serverName)});
    if (!module) {
        result.whyNot = "pactl could not make a combined sink";
        return result;
    }
    std::optional<platform::DeviceInfo> both;
    for (int i = 0; i < 20 && !both; ++i) {
        both = find(system, Direction::Output,
                    [](const platform::DeviceInfo& d) { return d.serverName == kProbeSink; });
        if (!both)
            waitMilliseconds(50);
    }
    if (both) {
        const double rate = both->nominalSampleRate;
        const double seconds = kLeadSeconds + kClicks * kPeriodSeconds + 0.5;
        Recorder recorder(static_cast<std::size_t>(heardAt->nominalSampleRate * (seconds + 1)));
        TrainPlayer player(makeClickTrain(rate, kPeriodSeconds, kClicks, kLeadSeconds));
        platform::Status status = platform::kNoError;
        auto listening =
            system.openInput(heardAt->id, {heardAt->nominalSampleRate, 1}, 0, recorder, status);
        auto playing = listening && status == platform::kNoError
                           ? system.openOutput(both->id, {rate, 1}, 0, player, status)
                           : nullptr;
        if (playing && status == platform::kNoError && listening->start() == platform::kNoError &&
            playing->start() == platform::kNoError) {
            waitMilliseconds(static_cast<int>(seconds * 1000));
            playing.reset();
            listening.reset();
            result.delays = summarise(
                findClickDelays(recorder.take(), heardAt->nominalSampleRate, kPeriodSeconds));
            result.made = result.delays.clicks > 0;
            if (!result.made)
                result.whyNot = "no click came back";
        } else {
            result.whyNot = "the click streams could not be opened";
        }
    } else {
        result.whyNot = "the combined sink did not appear";
    }
    pactl({"unload-module", *module});
    return result;
}

} // namespace waxline::cli
