#pragma once

#include <atomic>
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
    // Main thread. A new side starts: the silence counted so far (the run-out of the last side)
    // no longer counts towards this side's album end. Taken on the input thread at the next
    // frame, so the count is never written from two threads. Reset alone keeps the count.
    void RestartAlbumCount() { albumCountRestart.store(true, std::memory_order_release); }

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

    // Feeds stereo samples one at a time with the detector's state held in locals; finish()
    // writes it back. Samples go in runs of at most room(), each closed by endRun(), so that the
    // per-sample path has no frame check. operator() is a Feed over a whole buffer; a caller with
    // a loop of its own (the input chain's equaliser) can feed its samples in the same pass.
    class Feed {
    public:
        explicit Feed(GapDetector& d)
            : detector(d)
            , f(d.bandPass)
            , sum(d.frameSum)
            , fill(d.frameFill)
            , buffer(d.frameBuffer.get())
            , size(static_cast<uint64_t>(d.frameSize)) {}

        // Samples the current frame still takes (at least one).
        uint64_t room() const { return size > fill ? size - fill : 1; }

        // Adds one sample; never more than room() before endRun().
        void add(float left, float right) {
            const int16_t l = wrapTo16(left * kFullScale16);
            const int16_t r = wrapTo16(right * kFullScale16);
            const int64_t mono = (static_cast<int64_t>(l) + r) >> 1;
            const int64_t y = filterStep(f, mono);
            sum += y;
            buffer[fill++] = static_cast<int16_t>(y);
        }

        // Judges the frame when it is full.
        void endRun() {
            if (fill >= size) {
                store();
                verdict = detector.ProcessFrameBuffer();
                fill = 0;
                sum = 0;
            }
        }

        void push(float left, float right) {
            add(left, right);
            endRun();
        }

        // The verdict of the last frame finished, false when none finished.
        bool finish() {
            store();
            return verdict;
        }

    private:
        void store() {
            detector.bandPass = f;
            detector.frameSum = sum;
            detector.frameFill = fill;
        }

        GapDetector& detector;
        FilterParams f;
        int64_t sum;
        uint64_t fill;
        int16_t* buffer;
        uint64_t size;
        bool verdict = false;
    };

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
    static constexpr int kQ13Shift = 13;
    static constexpr float kFullScale16 = 32767.0f;

    // Truncating float-to-int32 conversion as the hardware does it (out of range gives
    // INT32_MIN), then narrowed to the low 16 bits: samples beyond full scale wrap, not clip.
    static int16_t wrapTo16(float v) {
        const int32_t i =
            (v > -2147483648.0f && v < 2147483648.0f) ? static_cast<int32_t>(v) : INT32_MIN;
        return static_cast<int16_t>(i);
    }

    // One sample through the Q13 biquad with 64-bit accumulators; returns the full output.
    // Wrapping arithmetic as the machine does it: only a degenerate design (a zero rate) can
    // overflow, and that must not be undefined behaviour.
    static int64_t filterStep(FilterParams& f, int64_t x) {
        using U = uint64_t;
        const U forward = U(f.b0) * U(x) + U(f.b1) * U(f.x1) + U(f.b2) * U(f.x2);
        const U feedback = U(f.a2) * U(f.y2) + U(f.a1) * U(f.y1);
        const int64_t y = static_cast<int64_t>(forward - feedback) >> kQ13Shift;
        f.x2 = f.x1;
        f.x1 = x;
        f.y2 = f.y1;
        f.y1 = y;
        return y;
    }

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
    std::atomic<bool> albumCountRestart{false};
};

} // namespace Sonra::Audio::Filters
