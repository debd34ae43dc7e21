// The virtual system's life (the deck's file, the heard file, the pacing thread) and the deck
// unplugged and plugged as a whole; the rest lives in VirtualAudioSystem{Devices,Streams,Timeline}.
#include "platform/virtual/VirtualAudioSystem.h"

#include "platform/virtual/VirtualAudioSystemShared.h"
#include "platform/virtual/VirtualUsbBus.h"

#include <cmath>
#include <stdexcept>

namespace waxline::platform {

namespace {

std::string sndfileError(SNDFILE* file) {
    return sf_strerror(file);
}

} // namespace

VirtualAudioSystem::VirtualAudioSystem(const VirtualSetup& setup)
    : config(setup)
    , shared(std::make_shared<Shared>()) {
    Shared& s = *shared;
    s.inputRate = setup.rate;
    s.channels = setup.channels;
    s.period = setup.bufferFrames;
    s.inputClock = setup.clock;

    if (!setup.file.empty()) {
        SF_INFO info{};
        s.file = sf_open(setup.file.c_str(), SFM_READ, &info);
        if (!s.file)
            throw std::runtime_error("virtual deck: cannot read \"" + setup.file +
                                     "\": " + sndfileError(nullptr));
        if (setup.rateGiven && setup.rate != info.samplerate) {
            sf_close(s.file);
            throw std::runtime_error("virtual deck: rate=" + std::to_string(setup.rate) +
                                     " contradicts the file's rate of " +
                                     std::to_string(info.samplerate) + " Hz");
        }
        s.inputRate = info.samplerate;
        s.fileChannels = static_cast<uint32_t>(info.channels);
        s.fileFrames = info.frames;
        s.interleaved.assign(static_cast<size_t>(s.fileChannels) * s.period, 0.0f);
    }
    s.outputRate = setup.outRate > 0 ? setup.outRate : s.inputRate;
    s.periodBuffers.assign(s.channels, std::vector<float>(s.period, 0.0f));
    s.silence.assign(s.period, 0.0f);
    s.mix.assign(2 * static_cast<size_t>(s.period), 0.0f);
    s.mixInterleaved.assign(2 * static_cast<size_t>(s.period), 0.0f);

    if (!setup.output.empty()) {
        SF_INFO info{};
        info.samplerate = static_cast<int>(std::lround(s.outputRate));
        info.channels = 2;
        info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        s.heard = sf_open(setup.output.c_str(), SFM_WRITE, &info);
        if (!s.heard) {
            if (s.file)
                sf_close(s.file);
            throw std::runtime_error("virtual output: cannot write \"" + setup.output +
                                     "\": " + sndfileError(nullptr));
        }
    }

    s.deck = s.nextInputId++;
    s.defaultInput = s.deck;
    for (size_t i = 0; i < setup.extraInputs.size(); ++i)
        s.extraIds.push_back(s.nextInputId++);
    s.steppedHostBase = hostTime();

    if (!setup.stepped())
        pacer = std::thread([this] { paceLoop(); });
}

VirtualAudioSystem::~VirtualAudioSystem() {
    {
        std::lock_guard lock(shared->mutex);
        shared->quit = true;
        shared->wake.notify_all();
    }
    if (pacer.joinable())
        pacer.join();
    std::lock_guard lock(shared->mutex);
    for (auto& e : shared->inputs)
        e->running = false, e->ended = true;
    for (auto& e : shared->outputs)
        e->running = false, e->ended = true;
    if (shared->file)
        sf_close(shared->file), shared->file = nullptr;
    if (shared->heard)
        sf_close(shared->heard), shared->heard = nullptr;
}

// ---- the deck as a whole ----

bool unplugVirtualDeck(Platform& platform) {
    auto* audio = dynamic_cast<VirtualAudioSystem*>(platform.audio.get());
    auto* usb = dynamic_cast<VirtualUsbBus*>(platform.usb.get());
    if (!audio || !usb)
        return false;
    usb->detachAll();
    audio->removeInput();
    return true;
}

bool plugVirtualDeck(Platform& platform) {
    auto* audio = dynamic_cast<VirtualAudioSystem*>(platform.audio.get());
    auto* usb = dynamic_cast<VirtualUsbBus*>(platform.usb.get());
    if (!audio || !usb)
        return false;
    usb->detachAll();
    for (const auto& device : audio->setup().usb)
        usb->attach(device);
    audio->addInput();
    return true;
}

} // namespace waxline::platform
