#include "frames/modbus_rtu.h"

#include <cstdio>

namespace kestrel {

std::uint16_t ModbusCrc16(const std::uint8_t *data, std::size_t size)
{
    std::uint16_t crc = 0xFFFF;
    for (std::size_t i = 0; i < size; ++i) {
        crc ^= data[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? static_cast<std::uint16_t>((crc >> 1) ^ 0xA001) : static_cast<std::uint16_t>(crc >> 1);
    }
    return crc;
}

const char *ModbusFunctionName(std::uint8_t code)
{
    switch (code) {
    case 1: return "Read Coils";
    case 2: return "Read Discrete Inputs";
    case 3: return "Read Holding Registers";
    case 4: return "Read Input Registers";
    case 5: return "Write Single Coil";
    case 6: return "Write Single Register";
    case 7: return "Read Exception Status";
    case 8: return "Diagnostics";
    case 11: return "Get Comm Event Counter";
    case 12: return "Get Comm Event Log";
    case 15: return "Write Multiple Coils";
    case 16: return "Write Multiple Registers";
    case 17: return "Report Server ID";
    case 20: return "Read File Record";
    case 21: return "Write File Record";
    case 22: return "Mask Write Register";
    case 23: return "Read/Write Multiple Registers";
    case 24: return "Read FIFO Queue";
    case 43: return "Encapsulated Interface Transport";
    default: return nullptr;
    }
}

std::optional<ModbusRtuFrame> ParseModbusRtu(const Frame &frame)
{
    const auto &b = frame.bytes;
    if (b.size() < 4)
        return std::nullopt;
    ModbusRtuFrame m;
    m.address = b[0];
    m.function = b[1];
    m.crcFound = static_cast<std::uint16_t>(b[b.size() - 2] | (b[b.size() - 1] << 8));
    m.crcComputed = ModbusCrc16(b.data(), b.size() - 2);
    m.crcGood = m.crcFound == m.crcComputed;
    return m;
}

namespace {

std::string hex4(std::uint16_t v)
{
    char buf[8];
    std::snprintf(buf, sizeof buf, "%04X", v);
    return buf;
}

} // namespace

FrameCheck ModbusRtuChecker::check(const Frame &frame, std::uint64_t number)
{
    FrameCheck out;
    out.fields.push_back({"protocol", "modbus-rtu", false});
    const auto m = ParseModbusRtu(frame);
    const int own = static_cast<int>(frame.circuit);
    if (!m) {
        out.ok = false;
        out.summary = "too short for Modbus RTU (" + std::to_string(frame.bytes.size()) + " bytes)";
        out.fields.push_back({"error", "too short", false});
        return out;
    }
    const std::uint8_t code = m->function & 0x7F;
    const bool exception = (m->function & 0x80) != 0;
    const char *fname = ModbusFunctionName(code);
    out.ok = m->crcGood && m->address <= 247;
    out.fields.push_back({"address", std::to_string(m->address), true});
    out.fields.push_back({"function", std::to_string(code), true});
    if (fname)
        out.fields.push_back({"functionName", fname, false});
    out.fields.push_back({"exception", exception ? "true" : "false", true});
    if (exception && frame.bytes.size() >= 5)
        out.fields.push_back({"exceptionCode", std::to_string(frame.bytes[2]), true});
    out.fields.push_back({"crc", m->crcGood ? "good" : "bad", false});
    out.fields.push_back({"crcFound", hex4(m->crcFound), false});
    out.fields.push_back({"crcComputed", hex4(m->crcComputed), false});

    out.summary = "addr " + std::to_string(m->address) + (m->address == 0 ? " (broadcast)" : "") + ", fn " +
                  std::to_string(code) + (fname ? std::string(" ") + fname : std::string()) +
                  (exception ? ", exception " + (frame.bytes.size() >= 5 ? std::to_string(frame.bytes[2]) : "?") : "") +
                  ", CRC " + (m->crcGood ? "good" : "bad (found " + hex4(m->crcFound) + ", computed " + hex4(m->crcComputed) + ")");
    if (m->address > 247)
        out.summary += ", reserved address";

    // A response answers the other circuit's last request: same address and function, in time.
    std::optional<Request> &other = waiting_[1 - own];
    const bool answers = other && frame.startTime - other->endTime <= timeoutDays_ &&
                         frame.startTime >= other->endTime && other->address == m->address &&
                         other->function == code && m->address != 0;
    if (answers) {
        const double ms = (frame.startTime - other->endTime) * 86400.0 * 1000.0;
        char buf[32];
        std::snprintf(buf, sizeof buf, "%.3f", ms);
        out.fields.push_back({"role", "response", false});
        out.fields.push_back({"replyTo", std::to_string(other->number), true});
        out.fields.push_back({"responseMs", buf, true});
        out.summary += ", response to #" + std::to_string(other->number) + " after " + buf + " ms";
        other.reset();
        return out;
    }
    out.fields.push_back({"role", "request", false});
    out.summary += ", request";
    waiting_[own] = Request{number, frame.endTime, m->address, code};
    return out;
}

std::unique_ptr<FrameChecker> MakeFrameChecker(std::string_view name)
{
    if (name == "modbus-rtu")
        return std::make_unique<ModbusRtuChecker>();
    return nullptr;
}

std::string FrameCheckerNames() { return "modbus-rtu"; }

} // namespace kestrel
