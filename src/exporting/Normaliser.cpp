#include "exporting/Normaliser.h"

#include <sndfile.h>

#include <filesystem>
#include <vector>

namespace waxline::exporting {

namespace {
constexpr float kNormalisationTarget = 0.97f;
constexpr size_t kReadBytes = 8192;
} // namespace

float normalisationGain(float peak) {
    return peak > 0 ? kNormalisationTarget / peak : 1.0f;
}

NormaliseResult normaliseTrack(const std::string& wavPath, float gain) {
    namespace fs = std::filesystem;
    NormaliseResult result;
    result.path = (fs::path(wavPath).parent_path() / "normalized.wav").string();

    SF_INFO inInfo{};
    SNDFILE* in = sf_open(wavPath.c_str(), SFM_READ, &inInfo);
    if (!in) {
        result.problem = {ExportProblem::Kind::NormaliseCannotRead, wavPath, sf_strerror(nullptr)};
        return result;
    }
    std::error_code ec;
    fs::remove(result.path, ec);
    SF_INFO outInfo{};
    outInfo.samplerate = inInfo.samplerate;
    outInfo.channels = inInfo.channels;
    outInfo.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* out = sf_open(result.path.c_str(), SFM_WRITE, &outInfo);
    if (!out) {
        result.problem = {ExportProblem::Kind::NormaliseCannotCreate, result.path,
                          sf_strerror(nullptr)};
        sf_close(in);
        return result;
    }

    const size_t channels = static_cast<size_t>(inInfo.channels);
    const auto framesPerRead = static_cast<sf_count_t>(kReadBytes / (sizeof(float) * channels));
    std::vector<float> input(static_cast<size_t>(framesPerRead) * channels);
    std::vector<float> output(input.size());
    bool ok = true;
    for (;;) {
        const sf_count_t frames = sf_readf_float(in, input.data(), framesPerRead);
        if (frames <= 0)
            break;
        const size_t samples = static_cast<size_t>(frames) * channels;
        for (size_t i = 0; i < samples; ++i)
            output[i] = input[i] * gain;
        if (sf_writef_float(out, output.data(), frames) != frames) {
            result.problem = {ExportProblem::Kind::NormaliseCannotWrite, result.path,
                              sf_strerror(out)};
            ok = false;
            break;
        }
    }
    sf_close(in);
    if (sf_close(out) != 0 && ok) {
        result.problem = {ExportProblem::Kind::NormaliseCannotFinish, result.path};
        ok = false;
    }
    result.ok = ok;
    return result;
}

} // namespace waxline::exporting
