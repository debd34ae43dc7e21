#pragma once

#include "platform/AudioSystem.h"

namespace waxline {

// Where the play-through plays. Recording the monitor of the output it plays into would feed
// the recording back into itself: the level climbs, gaps vanish and the side never ends.
enum class PlayThroughRoute {
    Direct,      // into the output device
    OtherOutput, // the input monitors the output device: into another output instead
    Nowhere,     // the input monitors the output device and there is no other output
};

struct PlayThroughTarget {
    platform::AudioObjectID output = platform::kNoDevice; // kNoDevice: plays nowhere
    PlayThroughRoute route = PlayThroughRoute::Direct;
};

// The output the monitor of `input` may play into, given the output device it would normally
// use (either may be platform::kDefaultDevice). Main thread.
PlayThroughTarget choosePlayThroughOutput(platform::AudioSystem& system,
                                          platform::AudioObjectID input,
                                          platform::AudioObjectID output);

} // namespace waxline
