#pragma once
// Modbus RTU over a monitored line: each frame is address, function code,
// data and the CRC-16 (polynomial 0xA001 reflected, start 0xFFFF, low byte
// first). A frame on one circuit that answers the last unanswered frame of
// the other circuit (same address, same function, or the function with bit 7
// set for an exception) within the response time-out is its response, whatever
// either CRC says (a damaged answer is still the answer); every other frame is
// taken as a request. Broadcasts (address 0) get no response.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "frames/frame_check.h"

namespace kestrel {

[[nodiscard]] std::uint16_t ModbusCrc16(const std::uint8_t *data, std::size_t size);
// The name of a public function code ("Read Holding Registers"), or nullptr.
[[nodiscard]] const char *ModbusFunctionName(std::uint8_t code);

struct ModbusRtuFrame {
    std::uint8_t address = 0;
    std::uint8_t function = 0;  // as on the line (bit 7: exception response)
    bool crcGood = false;
    std::uint16_t crcFound = 0, crcComputed = 0;
};
// Address, function and CRC of a frame of at least four bytes; nothing for a shorter one.
[[nodiscard]] std::optional<ModbusRtuFrame> ParseModbusRtu(const Frame &frame);

class ModbusRtuChecker final : public FrameChecker {
public:
    explicit ModbusRtuChecker(double responseTimeoutSeconds = 1.0) : timeoutDays_(responseTimeoutSeconds / 86400.0) {}
    [[nodiscard]] std::string_view name() const override { return "modbus-rtu"; }
    [[nodiscard]] FrameCheck check(const Frame &frame, std::uint64_t number) override;

private:
    struct Request {
        std::uint64_t number = 0;
        double endTime = 0.0;
        std::uint8_t address = 0, function = 0;
    };
    double timeoutDays_;
    std::optional<Request> waiting_[2]; // the last unanswered request on D1, on D2
};

} // namespace kestrel
