#include "frames/frame_rules.h"

namespace kestrel {

double CharacterSeconds(long baud, double bitsPerCharacter)
{
    return baud > 0 ? bitsPerCharacter / static_cast<double>(baud) : 0.0;
}

FrameRules ModbusRtuRules(long baud, double bitsPerCharacter, std::optional<double> gapChars)
{
    FrameRules r;
    r.charSeconds = CharacterSeconds(baud, bitsPerCharacter);
    r.gapChars = gapChars.value_or(3.5);
    // Above 19,200 baud the character time is too short for a receiver's timer to
    // follow: the rule then asks for a fixed 1.75 ms.
    r.minGapSeconds = !gapChars && baud > 19200 ? 0.00175 : 0.0;
    return r;
}

} // namespace kestrel
