#pragma once
// What a protocol makes of the frames of a line: each protocol checker looks
// at the frames in order (it may pair a request with its response by their
// timing) and says what each one is. Modbus RTU is the first; another
// protocol is another FrameChecker.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frames/frame.h"

namespace kestrel {

struct FrameField {
    std::string name;
    std::string value;
    bool number = false; // a JSON number or true/false rather than a text
};

struct FrameCheck {
    bool ok = true;            // the frame is well formed (a checksum that matches, a known layout)
    std::string summary;       // one line for people
    std::vector<FrameField> fields; // the same, field by field, for machines
};

class FrameChecker {
public:
    virtual ~FrameChecker() = default;
    [[nodiscard]] virtual std::string_view name() const = 0;
    // The frames of a recording in order, numbered from 1.
    [[nodiscard]] virtual FrameCheck check(const Frame &frame, std::uint64_t number) = 0;
};

// The checkers known by name ("modbus-rtu"); nullptr for any other name.
[[nodiscard]] std::unique_ptr<FrameChecker> MakeFrameChecker(std::string_view name);
// The names MakeFrameChecker knows, comma-separated.
[[nodiscard]] std::string FrameCheckerNames();

} // namespace kestrel
