// Modbus RTU checks on frames: the CRC-16, the fields of a frame, and the
// pairing of a request with its response by circuit, address, function and time.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "frames/modbus_rtu.h"

namespace kestrel {
namespace {

Frame frame(FrameCircuit c, std::vector<std::uint8_t> payload, double startMs, bool withCrc = true)
{
    Frame f;
    f.circuit = c;
    f.bytes = std::move(payload);
    if (withCrc) {
        const std::uint16_t crc = ModbusCrc16(f.bytes.data(), f.bytes.size());
        f.bytes.push_back(static_cast<std::uint8_t>(crc & 0xFF));
        f.bytes.push_back(static_cast<std::uint8_t>(crc >> 8));
    }
    f.startTime = 45000.5 + startMs / 86400e3;
    f.endTime = f.startTime + static_cast<double>(f.bytes.size()) / 86400e3; // 1 ms a byte
    return f;
}

std::map<std::string, std::string> fields(const FrameCheck &c)
{
    std::map<std::string, std::string> m;
    for (const auto &f : c.fields)
        m[f.name] = f.value;
    return m;
}

TEST(ModbusRtu, Crc16OfKnownFrames)
{
    const std::uint8_t read10[] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x0A};
    EXPECT_EQ(ModbusCrc16(read10, sizeof read10), 0xCDC5); // sent as C5 CD
    const std::uint8_t read1[] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x01};
    EXPECT_EQ(ModbusCrc16(read1, sizeof read1), 0x0A84); // sent as 84 0A
    const std::uint8_t check[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(ModbusCrc16(check, sizeof check), 0x4B37); // CRC-16/MODBUS check value
}

TEST(ModbusRtu, FieldsAndCrcOfGoodDamagedAndShortFrames)
{
    ModbusRtuChecker checker;
    Frame good = frame(FrameCircuit::D1, {0x11, 0x03, 0x00, 0x6B, 0x00, 0x03}, 0);
    FrameCheck c = checker.check(good, 1);
    EXPECT_TRUE(c.ok);
    auto f = fields(c);
    EXPECT_EQ(f["address"], "17");
    EXPECT_EQ(f["function"], "3");
    EXPECT_EQ(f["functionName"], "Read Holding Registers");
    EXPECT_EQ(f["crc"], "good");
    EXPECT_EQ(f["role"], "request");
    EXPECT_NE(c.summary.find("CRC good"), std::string::npos) << c.summary;

    Frame damaged = good;
    damaged.bytes[3] ^= 0x10;
    c = checker.check(damaged, 2);
    EXPECT_FALSE(c.ok);
    f = fields(c);
    EXPECT_EQ(f["crc"], "bad");
    EXPECT_EQ(f["crcFound"], fields(checker.check(good, 3))["crcFound"]);
    EXPECT_NE(f["crcFound"], f["crcComputed"]);
    EXPECT_NE(c.summary.find("CRC bad"), std::string::npos) << c.summary;

    c = checker.check(frame(FrameCircuit::D2, {0x11, 0x03, 0x00}, 0, false), 4);
    EXPECT_FALSE(c.ok);
    EXPECT_EQ(fields(c)["error"], "too short");

    c = checker.check(frame(FrameCircuit::D1, {0xF8, 0x03, 0x00, 0x00}, 0), 5);
    EXPECT_FALSE(c.ok) << "addresses 248 to 255 are reserved";
}

TEST(ModbusRtu, AResponseIsPairedWithTheOtherCircuitsRequestByAddressFunctionAndTime)
{
    ModbusRtuChecker checker(0.1);
    EXPECT_EQ(fields(checker.check(frame(FrameCircuit::D1, {0x01, 0x03, 0x00, 0x00, 0x00, 0x01}, 0), 1))["role"],
              "request");
    // Answered 5 ms after the request's last byte.
    auto f = fields(checker.check(frame(FrameCircuit::D2, {0x01, 0x03, 0x02, 0x00, 0x2A}, 13), 2));
    EXPECT_EQ(f["role"], "response");
    EXPECT_EQ(f["replyTo"], "1");
    EXPECT_EQ(f["responseMs"], "5.000");

    // An exception answers too; a damaged answer is still the answer.
    (void)checker.check(frame(FrameCircuit::D1, {0x02, 0x06, 0x00, 0x01, 0x00, 0x03}, 100), 3);
    f = fields(checker.check(frame(FrameCircuit::D2, {0x02, 0x86, 0x02}, 110), 4));
    EXPECT_EQ(f["role"], "response");
    EXPECT_EQ(f["exception"], "true");
    EXPECT_EQ(f["exceptionCode"], "2");
    (void)checker.check(frame(FrameCircuit::D1, {0x02, 0x06, 0x00, 0x01, 0x00, 0x03}, 200), 5);
    Frame damaged = frame(FrameCircuit::D2, {0x02, 0x06, 0x00, 0x01, 0x00, 0x03}, 210);
    damaged.bytes[5] = 0x04;
    f = fields(checker.check(damaged, 6));
    EXPECT_EQ(f["crc"], "bad");
    EXPECT_EQ(f["replyTo"], "5");

    // Too late, another address, another function, a broadcast, the same circuit: no pairs.
    (void)checker.check(frame(FrameCircuit::D1, {0x01, 0x04, 0x00, 0x00, 0x00, 0x01}, 300), 7);
    EXPECT_EQ(fields(checker.check(frame(FrameCircuit::D2, {0x01, 0x04, 0x02, 0x00, 0x01}, 500), 8))["role"],
              "request");
    (void)checker.check(frame(FrameCircuit::D1, {0x01, 0x04, 0x00, 0x00, 0x00, 0x01}, 600), 9);
    EXPECT_EQ(fields(checker.check(frame(FrameCircuit::D2, {0x05, 0x04, 0x02, 0x00, 0x01}, 610), 10))["role"],
              "request");
    (void)checker.check(frame(FrameCircuit::D1, {0x01, 0x04, 0x00, 0x00, 0x00, 0x01}, 700), 11);
    EXPECT_EQ(fields(checker.check(frame(FrameCircuit::D2, {0x01, 0x03, 0x02, 0x00, 0x01}, 710), 12))["role"],
              "request");
    (void)checker.check(frame(FrameCircuit::D1, {0x00, 0x06, 0x00, 0x01, 0x00, 0x03}, 800), 13);
    EXPECT_EQ(fields(checker.check(frame(FrameCircuit::D2, {0x00, 0x06, 0x00, 0x01, 0x00, 0x03}, 810), 14))["role"],
              "request");
    (void)checker.check(frame(FrameCircuit::D1, {0x03, 0x01, 0x00, 0x01, 0x00, 0x08}, 900), 15);
    EXPECT_EQ(fields(checker.check(frame(FrameCircuit::D1, {0x03, 0x01, 0x01, 0xFF}, 910), 16))["role"], "request");
}

TEST(ModbusRtu, CheckersAreFoundByName)
{
    EXPECT_NE(MakeFrameChecker("modbus-rtu"), nullptr);
    EXPECT_EQ(MakeFrameChecker("modbus"), nullptr);
}

} // namespace
} // namespace kestrel
