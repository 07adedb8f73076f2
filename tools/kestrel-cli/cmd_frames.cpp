// kestrel-cli frames: the frames of a recording (each circuit cut by idle gaps
// or an end byte), optionally checked as a protocol (Modbus RTU).

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "cli_common.h"
#include "cli_line.h"
#include "command.h"
#include "export/export_args.h"
#include "export/export_options.h"
#include "export/export_run.h"
#include "frames/frame_check.h"
#include "frames/frame_splitter.h"
#include "record/block_cursor.h"
#include "record/record_summary.h"
#include "record/recording_check.h"

namespace kestrel::cli {
namespace {

struct FramesCommand {
    std::string input;
    FrameOptions frames;
    std::string protocol;
    std::optional<MpRangeText> range;
    bool json = false;
    int naming = 0;
};

constexpr std::size_t kHexShown = 256; // bytes of a frame written out in the text form

const char *endName(FrameEnd e)
{
    switch (e) {
    case FrameEnd::Gap: return "gap";
    case FrameEnd::EndByte: return "end byte";
    case FrameEnd::Full: return "full";
    case FrameEnd::Interrupt: return "interrupted";
    }
    return "";
}

std::string hexBytes(const std::vector<std::uint8_t> &bytes, std::size_t most, const char *between)
{
    std::string out;
    char buf[4];
    for (std::size_t i = 0; i < bytes.size() && i < most; ++i) {
        std::snprintf(buf, sizeof buf, "%02X", bytes[i]);
        if (i)
            out += between;
        out += buf;
    }
    return out;
}

std::string errorKinds(std::uint8_t kinds, const char *between)
{
    std::string out;
    for (const auto &[bit, name] : {std::pair{ErrorBit::PE, "PE"}, {ErrorBit::FE, "FE"}, {ErrorBit::LE, "LE"}})
        if (kinds & bit)
            out += (out.empty() ? "" : between) + std::string(name);
    return out;
}

// The lines that are on, by the chosen names ("S1 M2" or "DTR CTS").
std::string linesOn(std::uint8_t levels, int naming, const char *between, const char *quote = "")
{
    std::string out;
    for (int k = 0; k < 6; ++k)
        if (levels & (1u << k))
            out += (out.empty() ? "" : between) + std::string(quote) +
                   CircuitName(static_cast<Circuit>(static_cast<int>(Circuit::S1) + k), naming) + quote;
    return out;
}

class FramePrinter {
public:
    FramePrinter(const FramesCommand &cl, FrameChecker *checker) : cl_(cl), checker_(checker) {}

    void frame(const Frame &f)
    {
        ++count_[static_cast<int>(f.circuit)];
        const std::uint64_t number = count_[0] + count_[1];
        std::optional<FrameCheck> check;
        if (checker_)
            check = checker_->check(f, number);
        const char *circuit = CircuitName(f.circuit == FrameCircuit::D1 ? Circuit::D1 : Circuit::D2, cl_.naming);
        if (cl_.json)
            json(f, number, circuit, check);
        else
            text(f, number, circuit, check);
    }

    void begin(const FrameRules &r, const PortSettings &s)
    {
        const double gapMs = r.gapSeconds() * 1000.0;
        if (cl_.json) {
            std::printf("{\n  \"file\": %s,\n  \"baud\": %ld,\n  \"characterMs\": %.6f,\n  \"gapMs\": %.6f,\n"
                        "  \"endByte\": %s,\n  \"frames\": [",
                        JsonString(cl_.input).c_str(), s.baud, r.charSeconds * 1000.0, gapMs,
                        r.endByte ? std::to_string(*r.endByte).c_str() : "null");
            return;
        }
        std::printf("# %ld baud, character %.3f ms, frames end after %.3f ms idle", s.baud, r.charSeconds * 1000.0,
                    gapMs);
        if (r.endByte)
            std::printf(" or after the byte %02X", *r.endByte);
        std::printf("\n");
    }

    void end(const FrameSplitter &s)
    {
        const auto u = [](std::uint64_t v) { return static_cast<unsigned long long>(v); };
        if (cl_.json) {
            std::printf("%s],\n  \"count\": %llu,\n  \"loneErrors\": %llu\n}\n", count_[0] + count_[1] ? "\n  " : "",
                        u(count_[0] + count_[1]), u(s.loneErrors()));
            return;
        }
        std::printf("# %llu frames (%s %llu, %s %llu)", u(count_[0] + count_[1]), CircuitName(Circuit::D1, cl_.naming),
                    u(count_[0]), CircuitName(Circuit::D2, cl_.naming), u(count_[1]));
        if (s.loneErrors())
            std::printf(", %llu line errors outside frames", u(s.loneErrors()));
        std::printf("\n");
    }

private:
    void text(const Frame &f, std::uint64_t number, const char *circuit, const std::optional<FrameCheck> &check)
    {
        std::string line = "#" + std::to_string(number) + " " + circuit + " MP " + std::to_string(f.firstMp) + ".." +
                           std::to_string(f.lastMp) + " " + FormatDateTimeIso(f.startTime) + " " +
                           std::to_string(f.bytes.size()) + (f.bytes.size() == 1 ? " byte: " : " bytes: ") +
                           hexBytes(f.bytes, kHexShown, " ");
        if (f.bytes.size() > kHexShown)
            line += " ...";
        for (const FrameError &e : f.errors)
            line += " [" + errorKinds(e.kinds, "+") + " before byte " + std::to_string(e.beforeByte) + "]";
        for (const SignalChange &c : f.lineChanges)
            line += " [lines at MP " + std::to_string(c.mp) + ": " + (c.levels ? linesOn(c.levels, cl_.naming, " ") : "none") + "]";
        if (f.end != FrameEnd::Gap)
            line += std::string(" (") + endName(f.end) + ")";
        if (check)
            line += std::string(" | ") + (check->ok ? "" : "BAD ") + check->summary;
        std::printf("%s\n", line.c_str());
    }

    void json(const Frame &f, std::uint64_t number, const char *circuit, const std::optional<FrameCheck> &check)
    {
        std::string o = (number > 1 ? ",\n    {" : "\n    {");
        o += "\"number\": " + std::to_string(number) + ", \"circuit\": \"" + circuit + "\", \"firstMp\": " +
             std::to_string(f.firstMp) + ", \"lastMp\": " + std::to_string(f.lastMp) + ", \"start\": " +
             JsonTime(f.startTime) + ", \"startText\": \"" + FormatDateTimeIso(f.startTime) + "\", \"end\": " +
             JsonTime(f.endTime) + ", \"length\": " + std::to_string(f.bytes.size()) + ", \"bytes\": \"" +
             hexBytes(f.bytes, f.bytes.size(), "") + "\", \"endedBy\": \"" + endName(f.end) + "\", \"errors\": [";
        for (std::size_t i = 0; i < f.errors.size(); ++i)
            o += std::string(i ? ", " : "") + "{\"mp\": " + std::to_string(f.errors[i].mp) + ", \"beforeByte\": " +
                 std::to_string(f.errors[i].beforeByte) + ", \"kinds\": [\"" + errorKinds(f.errors[i].kinds, "\", \"") +
                 "\"]}";
        o += "], \"lineChanges\": [";
        for (std::size_t i = 0; i < f.lineChanges.size(); ++i)
            o += std::string(i ? ", " : "") + "{\"mp\": " + std::to_string(f.lineChanges[i].mp) + ", \"on\": [" +
                 linesOn(f.lineChanges[i].levels, cl_.naming, ", ", "\"") + "]}";
        o += "]";
        if (check) {
            o += std::string(", \"check\": {\"ok\": ") + (check->ok ? "true" : "false") + ", \"summary\": " +
                 JsonString(check->summary);
            for (const FrameField &field : check->fields)
                o += ", " + JsonString(field.name) + ": " + (field.number ? field.value : JsonString(field.value));
            o += "}";
        }
        o += "}";
        std::fputs(o.c_str(), stdout);
    }

    const FramesCommand &cl_;
    FrameChecker *checker_;
    std::uint64_t count_[2] = {};
};

int runFrames(const FramesCommand &cl)
{
    std::unique_ptr<FrameChecker> checker;
    if (!cl.protocol.empty()) {
        checker = MakeFrameChecker(cl.protocol);
        if (!checker)
            return UsageError("frames", "unknown protocol '" + cl.protocol + "' (known: " + FrameCheckerNames() + ")");
    }
    std::string error;
    RecordReader reader;
    if (!OpenRecording(reader, cl.input, error))
        return Fail("frames", error, kExitFailure);
    ExportRange range = FullRange(reader);
    if (cl.range) {
        range.first = cl.range->first.value_or(0);
        range.last = cl.range->last.value_or(reader.recordCount() - 1);
    }
    if (!ValidateRange(reader, range, error))
        return Fail("frames", error, kExitUsage);

    PortSettings settings;
    const FrameRules rules = RulesOf(cl.frames, &settings);
    FramePrinter printer(cl, checker.get());
    printer.begin(rules, settings);
    FrameSplitter splitter(rules, [&](Frame &&f) { printer.frame(f); });
    BlockCursor cursor(reader);
    for (std::uint64_t n = range.first; n <= range.last; ++n) {
        const std::uint8_t *raw = cursor.at(n, 1);
        if (!raw)
            break; // cut while we read: what was there has been walked
        splitter.add(n, DecodeMp(raw));
    }
    splitter.finish();
    printer.end(splitter);
    if (splitter.crowdedBytes() * 10 > splitter.followingBytes() && splitter.followingBytes() >= 10)
        std::fprintf(stderr,
                     "kestrel-cli frames: %llu of %llu bytes followed the one before by less than half a character "
                     "at %ld baud: the line ran faster; give the recording's --baud\n",
                     static_cast<unsigned long long>(splitter.crowdedBytes()),
                     static_cast<unsigned long long>(splitter.followingBytes()), settings.baud);
    return kExitOk;
}

std::function<int()> declareFrames(CLI::App &cmd)
{
    auto cl = std::make_shared<FramesCommand>();
    cmd.footer("Lists the frames of a recording: each circuit's bytes up to an idle gap of --gap\n"
               "character times (Modbus RTU's 3.5 by default, never less than 1.75 ms above\n"
               "19200 baud), or up to and including --end-byte. The record file does not keep the\n"
               "line settings: give those the recording was made with (default 9600 8N1).\n"
               "--protocol modbus-rtu checks address, function and CRC of each frame and pairs\n"
               "requests with their responses.");
    cmd.add_option("FILE.ksr", cl->input, "the recording")->required()->type_name("");
    AddFrameOptions(cmd, cl->frames);
    cmd.add_option("--protocol", cl->protocol, "check the frames as this protocol")->type_name("modbus-rtu");
    AddParsed(cmd, "--range", cl->range, ParseMpRange, "MPs to walk (FIRST: or :LAST leave an end open)")
        ->type_name("FIRST:LAST");
    cmd.add_flag("--json", cl->json, "print the frames as one JSON object");
    AddNaming(cmd, cl->naming);
    return [cl] { return runFrames(*cl); };
}

const Registration reg({"frames", "list the frames of a recording, optionally checked as Modbus RTU", declareFrames});

} // namespace
} // namespace kestrel::cli
