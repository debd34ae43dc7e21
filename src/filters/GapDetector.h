#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace Sonra::Audio::Filters {

// Watches the equalised stereo input in half-second frames and reports the start of a gap between
// tracks, the return of sound and the end of a side. Works on a 16-bit mono mix band-passed
// around 500 Hz in Q13 fixed point; keeps every frame's level for the offline track finder.
class GapDetector {
public:
    // Called synchronously on the thread that feeds the detector: implementations must not block.
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void TrackSilenceStarted() = 0;
        virtual void TrackSilenceEnded() = 0;
        virtual void AlbumEnded() = 0;
    };

    // Receives the detector's one-line diagnostics. The default writes to standard error; a
    // real-time owner installs one that only queues the line.
    using DiagnosticWriter = void (*)(const char* line);

    // Fixed-point biquad state. Coefficients are Q13 (scaled by 8192); the accumulators are
    // 64-bit and y1, y2 keep the full 64-bit outputs.
    struct FilterParams {
        int64_t b0, b1, b2, a1, a2;
        int64_t x1, x2, y1, y2;
        int64_t spare[4];
        float frequency;
    };

    struct ZoneItem {
        int32_t kind; // 0 sound, 1 silence
        float start;
        float duration;
        float previousDuration;
    };

    struct TrackItem {
        float start;
        float duration;
        int64_t startSample;
        int64_t length;
    };

    // Assigning a bool fires TrackSilenceStarted (true) or TrackSilenceEnded (false) on a change.
    class SilenceState {
    public:
        explicit SilenceState(Listener& l)
            : listener(l) {}
        SilenceState& operator=(bool value);
        operator bool() const { return flag; }

    private:
        friend class GapDetector;
        Listener& listener;
        bool flag = false;
        DiagnosticWriter diagnostic;
    };

    // Assigning true fires AlbumEnded on a change; clearing fires nothing.
    class AlbumEnd {
    public:
        explicit AlbumEnd(Listener& l)
            : listener(l) {}
        AlbumEnd& operator=(bool value);
        operator bool() const { return flag; }

    private:
        friend class GapDetector;
        Listener& listener;
        bool flag = false;
    };

    // The rate argument is ignored on purpose: the owner sets the real rate before recording.
    GapDetector(Listener& listener, unsigned sampleRate);
    GapDetector(const GapDetector&) = delete;
    GapDetector& operator=(const GapDetector&) = delete;

    // Main thread. No effect when the rate equals the current one.
    void SetSampleRate(unsigned sampleRate);
    // Main thread. Marks the input as silent and the album as not ended, without events.
    void Reset();

    // Audio input thread. Returns the verdict of the last frame finished in this call (true once
    // the album has ended), false when no frame finished.
    bool operator()(const float* left, const float* right, unsigned long count);

    static void SetFilter_BP(FilterParams* params, float centre, short halfWidth,
                             double sampleRate);
    static void SetFilter_LP(FilterParams* params, double cutoff, double resonance,
                             double sampleRate);
    short ApplyFilter(long sample);
    float CalcAAMFrame();
    bool ProcessFrameBuffer();

    // Offline: proposes tracks from the whole level history, appending to tracks, and empties
    // the history.
    void FindTracks(std::vector<TrackItem>& tracks);
    static void CleanupZones(std::vector<ZoneItem>& zones, float total);
    static void CalculateDurations(std::vector<ZoneItem>& zones, float total);
    static void ReduceZones(std::vector<ZoneItem>& zones);

    void SetDiagnosticWriter(DiagnosticWriter writer) { silence.diagnostic = writer; }

    // Read-only views for owners and tests.
    bool isSilent() const { return silence.flag; }
    bool albumHasEnded() const { return albumEnd.flag; }
    int64_t frameLength() const { return frameSize; }
    uint64_t framePosition() const { return frameFill; }
    float rate() const { return sampleRate; }
    float loudestFrame() const { return maxAAM; }
    float quietestFrame() const { return minAAM; }
    float silentTime() const { return silentSeconds; }
    float soundTime() const { return soundSeconds; }
    const std::vector<float>& history() const { return aamHistory; }
    const FilterParams& filter() const { return bandPass; }

    // For tests of the track finder: replaces the level history and its extremes.
    void setHistoryForAnalysis(std::vector<float> history, float maxLevel, float minLevel);

private:
    SilenceState silence;
    AlbumEnd albumEnd;
    int64_t frameSize = 0;
    std::unique_ptr<int16_t[]> frameBuffer;
    FilterParams bandPass{};
    uint64_t frameFill = 0;
    float sampleRate = 0;
    int64_t frameSum = 0;
    float maxAAM = 0;
    float minAAM = 9999999;
    std::vector<float> aamHistory;
    float silentSeconds = 0;
    float soundSeconds = 0;
};

} // namespace Sonra::Audio::Filters
