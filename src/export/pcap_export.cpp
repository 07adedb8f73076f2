#include "export/pcap_export.h"

#include <algorithm>

#include "present/mark_text.h"
#include "record/block_cursor.h"
#include "record/record_summary.h"

namespace kestrel {
namespace {

constexpr std::size_t kFlushBytes = 1u << 20;

std::string frameComment(const Frame &f)
{
    std::string c;
    for (const FrameError &e : f.errors) {
        const std::string at = " before byte " + std::to_string(e.beforeByte);
        if (e.kinds & ErrorBit::PE)
            c += (c.empty() ? "" : "; ") + std::string("parity error") + at;
        if (e.kinds & ErrorBit::FE)
            c += (c.empty() ? "" : "; ") + std::string("framing error") + at;
    }
    if (f.end == FrameEnd::Full)
        c += (c.empty() ? "" : "; ") + std::string("cut at ") + std::to_string(f.bytes.size()) + " bytes";
    return c;
}

} // namespace

bool ValidDissectorName(std::string_view name)
{
    if (name.empty() || name.size() > 64)
        return false;
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
               c == '-';
    });
}

std::uint8_t RtacLines(std::uint8_t levels)
{
    std::uint8_t l = 0;
    if (levels & LevelBit::S1)
        l |= pcap::Line::DTR;
    if (levels & LevelBit::M1)
        l |= pcap::Line::DSR;
    if (levels & LevelBit::S2)
        l |= pcap::Line::RTS;
    if (levels & LevelBit::M2)
        l |= pcap::Line::CTS;
    if (levels & LevelBit::M5)
        l |= pcap::Line::DCD;
    if (levels & LevelBit::M3)
        l |= pcap::Line::RING;
    return l;
}

PcapStream::PcapStream(PcapExportOptions options, ExportSink &sink)
    : options_(std::move(options)), sink_(sink),
      splitter_(options_.rules, [this](Frame &&f) { frame(std::move(f)); })
{
    if (options_.pcapng && !options_.dissector.empty())
        tags_ = pcap::UpperPduTags(options_.dissector);
    out_.reserve(kFlushBytes + 70000);
}

bool PcapStream::begin()
{
    if (options_.pcapng) {
        pcap::AppendSectionHeader(out_, "Kestrel");
        pcap::AppendInterface(out_, pcap::kLinkRtacSerial, options_.interfaceName,
                              "serial line: D1 (Tx, port B) and D2 (Rx, port A) with their status lines");
        if (!tags_.empty())
            pcap::AppendInterface(out_, pcap::kLinkUpperPdu, options_.interfaceName + " (" + options_.dissector + ")",
                                  "the frames of both circuits for the dissector " + options_.dissector);
    } else {
        pcap::AppendPcapHeader(out_, pcap::kLinkRtacSerial);
    }
    return flush();
}

std::int64_t PcapStream::utc(double time)
{
    // A damaged stamp takes the last good one: the packet stays in its place.
    if (const auto us = clock_.micros(time))
        lastUtc_ = *us;
    return lastUtc_;
}

void PcapStream::packet(double time, std::uint8_t event, std::uint8_t lines, pcap::Direction direction,
                        std::string_view body, std::string_view comment)
{
    const std::int64_t us = utc(time);
    head_.clear();
    pcap::AppendRtacHeader(head_, us, event, lines);
    if (options_.pcapng) {
        pcap::AppendPacket(out_, 0, us, head_, body, direction, comment);
        counts_.comments += comment.empty() ? 0 : 1;
    } else {
        pcap::AppendPcapRecord(out_, us, head_, body);
    }
    ++counts_.events[event];
}

void PcapStream::queue(std::uint64_t index, const MpRecord &mp)
{
    if (mp.isSystemMark()) {
        std::string text = "MP " + std::to_string(index) + ": " + SystemMarkName(mp.markCode);
        const std::string mark = MarkText(mp, options_.langOffset);
        if (!mark.empty())
            text += " (" + mark + ")";
        const std::uint8_t event =
            mp.markCode == SystemMark::Stopped ? pcap::Event::CaptureComplete : pcap::Event::StatusChange;
        pending_.push_back({index, mp.time, event, 0, pcap::Direction::Unknown, std::move(text)});
        levels_.reset(); // system marks carry no levels; the next MP's are news
        return;
    }
    const std::uint8_t levels = LevelBits(mp);
    const std::uint8_t lines = RtacLines(levels);
    if (mp.markCode != 0)
        pending_.push_back({index, mp.time, pcap::Event::StatusChange, lines, pcap::Direction::Unknown,
                            "MP " + std::to_string(index) + ": " + MarkText(mp, options_.langOffset)});
    if (levels_ ? *levels_ != levels : levels != 0)
        pending_.push_back({index, mp.time, pcap::Event::StatusChange, lines, pcap::Direction::Unknown, {}});
    levels_ = levels;
    const auto errors = [&](std::uint8_t pe, std::uint8_t fe, pcap::Direction d) {
        if (pe)
            pending_.push_back({index, mp.time, pcap::Event::ParityError, lines, d, {}});
        if (fe)
            pending_.push_back({index, mp.time, pcap::Event::FramingError, lines, d, {}});
    };
    if (mp.peD1 | mp.feD1)
        errors(mp.peD1, mp.feD1, pcap::Direction::Outbound);
    if (mp.peD2 | mp.feD2)
        errors(mp.peD2, mp.feD2, pcap::Direction::Inbound);
}

void PcapStream::writeEvent(const Pending &p)
{
    packet(p.time, p.event, p.lines, p.direction, {}, p.comment);
}

void PcapStream::writeUpTo(std::uint64_t mp, bool inclusive)
{
    while (!pending_.empty() && (pending_.front().mp < mp || (inclusive && pending_.front().mp == mp))) {
        writeEvent(pending_.front());
        pending_.pop_front();
    }
}

void PcapStream::frame(Frame &&f)
{
    // What happened up to the frame's first byte goes before it.
    writeUpTo(f.firstMp, true);
    const bool tx = f.circuit == FrameCircuit::D1;
    const auto direction = tx ? pcap::Direction::Outbound : pcap::Direction::Inbound;
    const std::string_view body(reinterpret_cast<const char *>(f.bytes.data()), f.bytes.size());
    packet(f.startTime, tx ? pcap::Event::TxStart : pcap::Event::RxStart, RtacLines(f.levelsAtStart), direction, body,
           frameComment(f));
    if (!tags_.empty()) {
        pcap::AppendPacket(out_, 1, utc(f.startTime), tags_, body, direction);
        ++counts_.upperPdu;
    }
}

bool PcapStream::flushIfFull() { return out_.size() < kFlushBytes || flush(); }

bool PcapStream::add(std::uint64_t index, const MpRecord &mp)
{
    if (failed_)
        return false;
    queue(index, mp);
    splitter_.add(index, mp);
    if (const auto from = splitter_.pendingFrom())
        writeUpTo(*from, false);
    else
        writeUpTo(UINT64_MAX, true);
    return flushIfFull();
}

bool PcapStream::advanceTo(double dateTime)
{
    if (failed_)
        return false;
    splitter_.advanceTo(dateTime);
    if (!splitter_.pendingFrom())
        writeUpTo(UINT64_MAX, true);
    return flushIfFull();
}

bool PcapStream::finish()
{
    if (failed_)
        return false;
    splitter_.finish();
    writeUpTo(UINT64_MAX, true);
    return flush();
}

bool PcapStream::flush()
{
    if (failed_)
        return false;
    if (out_.empty())
        return true;
    if (!sink_.write(out_)) {
        failed_ = true;
        error_ = sink_.errorText().empty() ? "the capture file could not be written" : sink_.errorText();
        return false;
    }
    out_.clear();
    return true;
}

namespace {

ExportResult walk(const RecordReader &reader, PcapStream &stream, const ExportRange &range, ExportSink &sink,
                  const ExportHooks &hooks)
{
    ExportResult result;
    auto failed = [&](std::string error) {
        result.status = ExportStatus::WriteFailed;
        result.error = std::move(error);
        return result;
    };
    if (!stream.begin())
        return failed(stream.error());
    BlockCursor cursor(reader, 16384);
    const std::uint64_t total = range.last - range.first + 1;
    std::uint64_t untilPump = 0;
    for (std::uint64_t n = range.first; n <= range.last; ++n) {
        if (untilPump == 0) {
            untilPump = hooks.pumpInterval ? hooks.pumpInterval : 1;
            if (hooks.progress)
                hooks.progress(static_cast<int>((n - range.first) * 100 / total));
            if (hooks.stop && hooks.stop->load(std::memory_order_relaxed)) {
                if (!stream.finish())
                    return failed(stream.error());
                if (!sink.finish())
                    return failed(sink.errorText());
                result.status = ExportStatus::Stopped;
                return result;
            }
        }
        --untilPump;
        const std::uint8_t *raw = cursor.at(n, 1);
        if (!raw)
            break; // the file was cut while we read it: what is there has been written
        if (!stream.add(n, DecodeMp(raw)))
            return failed(stream.error());
        ++result.exported;
    }
    if (!stream.finish())
        return failed(stream.error());
    if (!sink.finish())
        return failed(sink.errorText());
    if (hooks.progress)
        hooks.progress(100);
    return result;
}

} // namespace

ExportResult RunPcapExport(const RecordReader &reader, const PcapExportOptions &options, const ExportRange &range,
                           ExportSink &sink, const ExportHooks &hooks, PcapCounts *counts)
{
    ExportResult result;
    if (!ValidateRange(reader, range, result.error)) {
        result.status = ExportStatus::BadRange;
        return result;
    }
    PcapStream stream(options, sink);
    result = walk(reader, stream, range, sink, hooks);
    if (counts)
        *counts = stream.counts();
    return result;
}

} // namespace kestrel
