#include "capture/monitor/PlayThroughRoute.h"

namespace waxline {

PlayThroughTarget choosePlayThroughOutput(platform::AudioSystem& system,
                                          platform::AudioObjectID input,
                                          platform::AudioObjectID output) {
    using platform::Direction;
    if (input == platform::kDefaultDevice)
        input = system.defaultDevice(Direction::Input);
    if (output == platform::kDefaultDevice)
        output = system.defaultDevice(Direction::Output);
    const auto source = system.device(input, Direction::Input);
    if (!source || source->monitorOf == platform::kNoDevice || source->monitorOf != output)
        return {output, PlayThroughRoute::Direct};
    for (const auto& other : system.devices(Direction::Output))
        if (other.id != output && other.channels > 0)
            return {other.id, PlayThroughRoute::OtherOutput};
    return {platform::kNoDevice, PlayThroughRoute::Nowhere};
}

} // namespace waxline
