#pragma once
// Reads the pcapng and pcap files Kestrel writes (this machine's byte order),
// checking every block's frame on the way: tests see the packets without
// Wireshark, and a block that is not closed as it was opened fails the read.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kestrel::test {

struct CapturedPacket {
    std::uint32_t interface = 0;
    std::int64_t micros = 0;
    std::string data;
    std::uint32_t flags = 0;
    std::string comment;
    // RTAC serial (interface 0): the header's fields.
    [[nodiscard]] std::uint8_t event() const { return static_cast<std::uint8_t>(data.at(8)); }
    [[nodiscard]] std::uint8_t lines() const { return static_cast<std::uint8_t>(data.at(9)); }
    [[nodiscard]] std::string payload() const { return data.substr(12); }
};

struct CaptureFile {
    std::vector<std::uint16_t> linkTypes;
    std::vector<CapturedPacket> packets;
};

template <class T>
T Get(const std::string &b, std::size_t at)
{
    T v{};
    if (at + sizeof(T) <= b.size())
        std::memcpy(&v, b.data() + at, sizeof(T));
    return v;
}

inline CaptureFile ReadPcapng(const std::string &b)
{
    CaptureFile f;
    std::size_t at = 0;
    while (at < b.size()) {
        const auto type = Get<std::uint32_t>(b, at);
        const auto length = Get<std::uint32_t>(b, at + 4);
        EXPECT_EQ(length % 4, 0u) << "block at " << at;
        EXPECT_GE(length, 12u);
        EXPECT_LE(at + length, b.size()) << "block at " << at;
        if (length < 12 || length % 4 || at + length > b.size())
            return f;
        EXPECT_EQ(Get<std::uint32_t>(b, at + length - 4), length) << "block at " << at;
        if (type == 0x0A0D0D0A) {
            EXPECT_EQ(Get<std::uint32_t>(b, at + 8), 0x1A2B3C4Du);
        } else if (type == 1) {
            f.linkTypes.push_back(Get<std::uint16_t>(b, at + 8));
        } else if (type == 6) {
            CapturedPacket p;
            p.interface = Get<std::uint32_t>(b, at + 8);
            p.micros = static_cast<std::int64_t>((std::uint64_t{Get<std::uint32_t>(b, at + 12)} << 32) |
                                                 Get<std::uint32_t>(b, at + 16));
            const auto captured = Get<std::uint32_t>(b, at + 20);
            p.data = b.substr(at + 28, captured);
            std::size_t opt = at + 28 + ((captured + 3) & ~3u);
            while (opt + 4 <= at + length - 4) {
                const auto code = Get<std::uint16_t>(b, opt);
                const auto size = Get<std::uint16_t>(b, opt + 2);
                if (code == 0)
                    break;
                if (code == 1)
                    p.comment = b.substr(opt + 4, size);
                if (code == 2)
                    p.flags = Get<std::uint32_t>(b, opt + 4);
                opt += 4 + ((size + 3u) & ~3u);
            }
            f.packets.push_back(std::move(p));
        } else {
            ADD_FAILURE() << "unexpected block type " << type;
        }
        at += length;
    }
    return f;
}

inline CaptureFile ReadPcap(const std::string &b)
{
    CaptureFile f;
    EXPECT_EQ(Get<std::uint32_t>(b, 0), 0xA1B2C3D4u);
    f.linkTypes.push_back(static_cast<std::uint16_t>(Get<std::uint32_t>(b, 20)));
    for (std::size_t at = 24; at + 16 <= b.size();) {
        CapturedPacket p;
        p.micros = std::int64_t{Get<std::uint32_t>(b, at)} * 1'000'000 + Get<std::uint32_t>(b, at + 4);
        const auto captured = Get<std::uint32_t>(b, at + 8);
        EXPECT_EQ(Get<std::uint32_t>(b, at + 12), captured);
        p.data = b.substr(at + 16, captured);
        at += 16 + captured;
        EXPECT_LE(at, b.size());
        f.packets.push_back(std::move(p));
    }
    return f;
}

} // namespace kestrel::test
