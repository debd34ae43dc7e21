#pragma once

#include "capture/monitor/AudioBufferList.h"
#include "filters/AudioFilter.h"
#include "filters/GapDetector.h"

#include <atomic>
#include <cstdint>

namespace waxline {

// The one gap detector of the process, or null: the chain then runs without it.
extern std::atomic<Sonra::Audio::Filters::GapDetector*> gapDetector;

// Audio input thread, once per captured buffer, after the input gain and before the buffer is
// monitored: measures the peaks, equalises in place and feeds the gap detector. A list that does
// not hold exactly two buffers is metered on the left and overall cells only.
// Real-time safe: no allocation, lock, logging or system call.
void InputProcCallback(AudioBufferList* buffers, uint32_t frames, int64_t sampleTime);

// Peak cells, in full-scale float units. Written by the input thread, read by the main thread.
void ResetVUMax();
float GetVUMax();  // the overall peak since ResetVUMax, not cleared
float GetVUMaxL(); // read and clear
float GetVUMaxR(); // read and clear
float GetVUMaxL3();
float GetVUMaxR3();

} // namespace waxline
