#pragma once
// The blocks of a pcapng file and the records of a classic pcap file, written
// in this machine's byte order (both formats say which in their header), and
// the packet headers of the two link types Kestrel writes:
//
//   250 (RTAC serial): 12 bytes, big-endian: seconds and microseconds since
//       1970, event type, control lines, two bytes 0; then the data bytes.
//   252 (Wireshark upper PDU): tags (type, length, value, all big-endian; the
//       length counts the value's padding to four bytes), ended by tag 0 of
//       length 0; then the bytes for the dissector that tag 12 names.

#include <cstdint>
#include <string>
#include <string_view>

namespace kestrel::pcap {

inline constexpr std::uint16_t kLinkRtacSerial = 250;
inline constexpr std::uint16_t kLinkUpperPdu = 252;

// Event types of an RTAC serial packet.
namespace Event {
inline constexpr std::uint8_t StatusChange = 0, TxStart = 1, RxStart = 2, TxEnd = 3, RxEnd = 4, DataLost = 5,
                              CaptureComplete = 6, FramingError = 7, ParityError = 8, Break = 9, Overflow = 10;
} // namespace Event

// Control line bits of an RTAC serial packet.
namespace Line {
inline constexpr std::uint8_t CTS = 0x01, DCD = 0x02, DSR = 0x04, RTS = 0x08, DTR = 0x10, RING = 0x20;
} // namespace Line

// Direction flags of an enhanced packet block.
enum class Direction : std::uint32_t { Unknown = 0, Inbound = 1, Outbound = 2 };

inline constexpr std::size_t kRtacHeaderSize = 12;

// Section header block: one section of unknown length.
void AppendSectionHeader(std::string &out, std::string_view application);
// Interface description block; timestamps in microseconds (the default resolution).
void AppendInterface(std::string &out, std::uint16_t linkType, std::string_view name, std::string_view description);

// An enhanced packet block whose data is head followed by body (either may be empty).
void AppendPacket(std::string &out, std::uint32_t interface, std::int64_t utcMicros, std::string_view head,
                  std::string_view body, Direction direction, std::string_view comment = {});

// Classic pcap: the file header for one link type, and one record.
void AppendPcapHeader(std::string &out, std::uint16_t linkType);
void AppendPcapRecord(std::string &out, std::int64_t utcMicros, std::string_view head, std::string_view body);

// The 12-byte RTAC serial header.
void AppendRtacHeader(std::string &out, std::int64_t utcMicros, std::uint8_t event, std::uint8_t lines);
// The tags of an upper-PDU packet that hand the payload to the named dissector.
[[nodiscard]] std::string UpperPduTags(std::string_view dissector);

} // namespace kestrel::pcap
