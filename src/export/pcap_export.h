#pragma once
// A recording as a capture file for Wireshark: pcapng with two interfaces, or
// classic pcap with the first alone.
//
// Interface 0 (link type 250, RTAC serial) carries, in MP order:
//   - every frame (frames/) as one data packet: D1 as "TX start" (event 1,
//     outbound), D2 as "RX start" (event 2, inbound), with the status lines of
//     its first byte and the frame's bytes;
//   - every change of the status lines as a status-change packet (event 0);
//   - every parity error as event 8 and every framing error as event 7 on the
//     circuit that reported it (a recording cannot tell overrun and break from
//     these; the line flag LE is not written);
//   - every system mark (start, append, stop of a recording) as a packet of
//     its own, "capture complete" (event 6) for a stop, a status change for
//     the others, and every trigger mark as a status change, each with the
//     mark as the packet's comment.
// Interface 1 (link type 252, upper PDU), when a dissector is named, carries
// every frame again, tagged for that dissector ("mbrtu", "dnp3", ...).
//
// Status lines: S1 = DTR, S2 = RTS (port B), M1 = DSR, M2 = CTS, M5 = DCD,
// M3 = RI (port A). Time stamps: the MPs' local times in UTC (export/local_time.h).
//
// The stream keeps only the frames still open and the packets that wait for
// them, so it writes recordings of any length in flat memory; the same stream
// serves a live capture (advanceTo closes the frames of a quiet line).

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "export/export_run.h"
#include "export/export_sink.h"
#include "export/local_time.h"
#include "export/pcapng_blocks.h"
#include "frames/frame_splitter.h"
#include "record/record_reader.h"

namespace kestrel {

struct PcapExportOptions {
    bool pcapng = true; // false: classic pcap, interface 0 alone, no comments or directions
    FrameRules rules;
    std::string dissector; // Wireshark's name of the dissector for interface 1; empty: no interface 1
    int langOffset = 10000; // language of the trigger mark texts (English)
    std::string interfaceName = "Kestrel ports A+B";
};

// A dissector name as Wireshark spells them: letters, digits, '.', '_', '-', at most 64.
[[nodiscard]] bool ValidDissectorName(std::string_view name);

// What a stream wrote, by kind.
struct PcapCounts {
    std::array<std::uint64_t, 11> events{}; // packets on interface 0 by event type
    std::uint64_t upperPdu = 0;             // packets on interface 1
    std::uint64_t comments = 0;
};

class PcapStream {
public:
    PcapStream(PcapExportOptions options, ExportSink &sink);

    // Each returns false once a write has failed (error() says why); later calls write nothing.
    bool begin();
    bool add(std::uint64_t index, const MpRecord &mp);
    bool advanceTo(double dateTime);
    bool finish();
    // Hands what is buffered to the sink (a live capture does this after every poll).
    bool flush();

    [[nodiscard]] const PcapCounts &counts() const { return counts_; }
    [[nodiscard]] const std::string &error() const { return error_; }

private:
    struct Pending {
        std::uint64_t mp = 0;
        double time = 0.0;
        std::uint8_t event = 0;
        std::uint8_t lines = 0;
        pcap::Direction direction = pcap::Direction::Unknown;
        std::string comment;
    };
    void queue(std::uint64_t index, const MpRecord &mp);
    void frame(Frame &&f);
    void writeUpTo(std::uint64_t mp, bool inclusive);
    void writeEvent(const Pending &p);
    void packet(double time, std::uint8_t event, std::uint8_t lines, pcap::Direction direction,
                std::string_view body, std::string_view comment);
    bool flushIfFull();
    [[nodiscard]] std::int64_t utc(double time);

    PcapExportOptions options_;
    ExportSink &sink_;
    FrameSplitter splitter_;
    LocalToUtc clock_;
    std::int64_t lastUtc_ = 0;
    std::deque<Pending> pending_;
    std::optional<std::uint8_t> levels_;
    std::string tags_;
    std::string head_;
    std::string out_;
    PcapCounts counts_;
    bool failed_ = false;
    std::string error_;
};

// Walks the range into a capture file through a PcapStream; counts, when given, receives
// what was written.
[[nodiscard]] ExportResult RunPcapExport(const RecordReader &reader, const PcapExportOptions &options,
                                         const ExportRange &range, ExportSink &sink, const ExportHooks &hooks = {},
                                         PcapCounts *counts = nullptr);

// RTAC serial control lines of an MP's status lines (frames/frame.h LevelBit).
[[nodiscard]] std::uint8_t RtacLines(std::uint8_t levels);

} // namespace kestrel
