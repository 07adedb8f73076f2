#include "export/pcapng_blocks.h"

#include <cstring>

namespace kestrel::pcap {
namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kInterfaceDescription = 1;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint16_t kOptEnd = 0, kOptComment = 1;
constexpr std::uint16_t kShbUserAppl = 4;
constexpr std::uint16_t kIfName = 2, kIfDescription = 3;
constexpr std::uint16_t kEpbFlags = 2;

template <class T>
void put(std::string &out, T v)
{
    char b[sizeof(T)];
    std::memcpy(b, &v, sizeof(T));
    out.append(b, sizeof(T));
}

void putBe16(std::string &out, std::uint16_t v)
{
    out += static_cast<char>(v >> 8);
    out += static_cast<char>(v & 0xFF);
}

void putBe32(std::string &out, std::uint32_t v)
{
    putBe16(out, static_cast<std::uint16_t>(v >> 16));
    putBe16(out, static_cast<std::uint16_t>(v & 0xFFFF));
}

std::size_t padded(std::size_t n) { return (n + 3) & ~std::size_t{3}; }

void pad(std::string &out, std::size_t n) { out.append(padded(n) - n, '\0'); }

void option(std::string &out, std::uint16_t code, std::string_view value)
{
    put<std::uint16_t>(out, code);
    put<std::uint16_t>(out, static_cast<std::uint16_t>(value.size()));
    out.append(value);
    pad(out, value.size());
}

// Opens a block: its type and a length to fill in; returns where the block starts.
std::size_t begin(std::string &out, std::uint32_t type)
{
    const std::size_t at = out.size();
    put<std::uint32_t>(out, type);
    put<std::uint32_t>(out, 0);
    return at;
}

void end(std::string &out, std::size_t at)
{
    const auto length = static_cast<std::uint32_t>(out.size() - at + 4);
    std::memcpy(out.data() + at + 4, &length, 4);
    put<std::uint32_t>(out, length);
}

void endOptions(std::string &out)
{
    put<std::uint16_t>(out, kOptEnd);
    put<std::uint16_t>(out, 0);
}

std::int64_t floorDiv(std::int64_t a, std::int64_t b) { return a / b - ((a % b) < 0 ? 1 : 0); }

} // namespace

void AppendSectionHeader(std::string &out, std::string_view application)
{
    const std::size_t at = begin(out, kSectionHeader);
    put<std::uint32_t>(out, 0x1A2B3C4D);
    put<std::uint16_t>(out, 1);
    put<std::uint16_t>(out, 0);
    put<std::int64_t>(out, -1);
    option(out, kShbUserAppl, application);
    endOptions(out);
    end(out, at);
}

void AppendInterface(std::string &out, std::uint16_t linkType, std::string_view name, std::string_view description)
{
    const std::size_t at = begin(out, kInterfaceDescription);
    put<std::uint16_t>(out, linkType);
    put<std::uint16_t>(out, 0);
    put<std::uint32_t>(out, 0); // no snapshot length
    option(out, kIfName, name);
    option(out, kIfDescription, description);
    endOptions(out);
    end(out, at);
}

void AppendPacket(std::string &out, std::uint32_t interface, std::int64_t utcMicros, std::string_view head,
                  std::string_view body, Direction direction, std::string_view comment)
{
    const std::size_t at = begin(out, kEnhancedPacket);
    const auto ts = static_cast<std::uint64_t>(utcMicros);
    const auto length = static_cast<std::uint32_t>(head.size() + body.size());
    put<std::uint32_t>(out, interface);
    put<std::uint32_t>(out, static_cast<std::uint32_t>(ts >> 32));
    put<std::uint32_t>(out, static_cast<std::uint32_t>(ts & 0xFFFFFFFF));
    put<std::uint32_t>(out, length);
    put<std::uint32_t>(out, length);
    out.append(head);
    out.append(body);
    pad(out, length);
    if (!comment.empty())
        option(out, kOptComment, comment.substr(0, 65532));
    if (direction != Direction::Unknown) {
        put<std::uint16_t>(out, kEpbFlags);
        put<std::uint16_t>(out, 4);
        put<std::uint32_t>(out, static_cast<std::uint32_t>(direction));
    }
    if (!comment.empty() || direction != Direction::Unknown)
        endOptions(out);
    end(out, at);
}

void AppendPcapHeader(std::string &out, std::uint16_t linkType)
{
    put<std::uint32_t>(out, 0xA1B2C3D4);
    put<std::uint16_t>(out, 2);
    put<std::uint16_t>(out, 4);
    put<std::int32_t>(out, 0);
    put<std::uint32_t>(out, 0);
    put<std::uint32_t>(out, 262144);
    put<std::uint32_t>(out, linkType);
}

void AppendPcapRecord(std::string &out, std::int64_t utcMicros, std::string_view head, std::string_view body)
{
    const auto length = static_cast<std::uint32_t>(head.size() + body.size());
    put<std::uint32_t>(out, static_cast<std::uint32_t>(floorDiv(utcMicros, 1'000'000)));
    put<std::uint32_t>(out, static_cast<std::uint32_t>(utcMicros - floorDiv(utcMicros, 1'000'000) * 1'000'000));
    put<std::uint32_t>(out, length);
    put<std::uint32_t>(out, length);
    out.append(head);
    out.append(body);
}

void AppendRtacHeader(std::string &out, std::int64_t utcMicros, std::uint8_t event, std::uint8_t lines)
{
    const std::int64_t seconds = floorDiv(utcMicros, 1'000'000);
    putBe32(out, static_cast<std::uint32_t>(seconds));
    putBe32(out, static_cast<std::uint32_t>(utcMicros - seconds * 1'000'000));
    out += static_cast<char>(event);
    out += static_cast<char>(lines);
    putBe16(out, 0);
}

std::string UpperPduTags(std::string_view dissector)
{
    constexpr std::uint16_t kTagDissectorName = 12, kTagEnd = 0;
    // The name ends with at least one zero byte and is padded to four bytes; the length counts it all.
    const std::size_t valueSize = padded(dissector.size() + 1);
    std::string out;
    putBe16(out, kTagDissectorName);
    putBe16(out, static_cast<std::uint16_t>(valueSize));
    out.append(dissector);
    out.append(valueSize - dissector.size(), '\0');
    putBe16(out, kTagEnd);
    putBe16(out, 0);
    return out;
}

} // namespace kestrel::pcap
