// kestrel-cli extcap: Wireshark's extcap interface. Wireshark (and tshark) list
// "Kestrel: ports A+B" and "Kestrel: simulated line" as capture interfaces and
// run this command to capture: it records through the same recording session
// as kestrel-cli record, follows the record file while it grows, and writes
// its frames, status changes, errors and marks to Wireshark's FIFO as pcapng
// (as kestrel-cli export --format pcapng would). Wireshark ends a capture with
// SIGTERM or by closing the FIFO (seen within a tick, even on a quiet line);
// either stops the recording in good order.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "base/string_table.h"
#include "capture/recording_session.h"
#include "cli_common.h"
#include "cli_line.h"
#include "cli_session.h"
#include "command.h"
#include "export/export_sink.h"
#include "export/pcap_export.h"
#include "ports/port_scan.h"
#include "record/record_reader.h"

namespace kestrel::cli {
namespace {

constexpr const char *kPortsInterface = "kestrel-ports";
constexpr const char *kSimInterface = "kestrel-sim";
constexpr const char *kWrapperName = "kestrel-extcap";
constexpr const char *kWrapperMark = "# Kestrel's entry in Wireshark's extcap folder";

struct ExtcapCommand {
    bool interfaces = false, dlts = false, config = false, capture = false, install = false;
    std::string version, interface, fifo, filter;
    std::string portA, portB, scenario, record;
    FrameOptions frames;
    std::string dissector;
};

void printInterfaces()
{
    std::printf("extcap {version=%s}{display=Kestrel serial line monitor}\n", KESTREL_VERSION);
    std::printf("interface {value=%s}{display=Kestrel: ports A+B}\n", kPortsInterface);
    std::printf("interface {value=%s}{display=Kestrel: simulated line}\n", kSimInterface);
}

// The serial ports found here, as the options dialog lists them; a name that would
// break the extcap syntax is left out (it can still be given on the command line).
std::vector<std::string> ExtcapPortList()
{
    std::vector<std::string> ports;
    for (const std::string &device : AvailablePorts())
        if (device.find_first_of("{}\n") == std::string::npos)
            ports.push_back(device);
    return ports;
}

// A port option: a selector of the ports found, the default one marked; a text field when
// none was found (Wireshark 4.0 has no selector that also takes typed text).
void printPortArg(int number, const char *call, const char *display, const char *tooltip,
                  const std::vector<std::string> &ports, int preferred)
{
    if (ports.empty()) {
        std::printf("arg {number=%d}{call=%s}{display=%s}{type=string}{required=true}"
                    "{tooltip=%s; no serial port was found, e.g. /dev/ttyUSB0}{group=Line}\n",
                    number, call, display, tooltip);
        return;
    }
    std::printf("arg {number=%d}{call=%s}{display=%s}{type=selector}{required=true}{tooltip=%s}{group=Line}\n", number,
                call, display, tooltip);
    for (std::size_t i = 0; i < ports.size(); ++i)
        std::printf("value {arg=%d}{value=%s}{display=%s}{default=%s}\n", number, ports[i].c_str(),
                    PortDisplayName(ports[i]).c_str(), static_cast<int>(i) == preferred ? "true" : "false");
}

void printConfig(const std::string &interface)
{
    int n = 0;
    if (interface == kPortsInterface) {
        const std::vector<std::string> ports = ExtcapPortList();
        const PortChoice choice = ChoosePorts(static_cast<int>(ports.size()), 0, 1);
        printPortArg(n++, "--port-a", "Port A", "Device that receives Rx (D2) and DSR, CTS, DCD, RI", ports, choice.a);
        printPortArg(n++, "--port-b", "Port B", "Device that receives Tx (D1) and DTR, RTS on its DSR and CTS inputs",
                     ports, choice.b);
    } else {
        std::printf("arg {number=%d}{call=--scenario}{display=Scenario}{type=fileselect}{mustexist=true}"
                    "{tooltip=A scenario file (.ksc); empty: the built-in demo line}{group=Line}\n", n++);
    }
    const int baud = n++;
    std::printf("arg {number=%d}{call=--baud}{display=Baud rate}{type=integer}{range=50,20000000}{default=9600}"
                "{group=Line}\n", baud);
    const int bits = n++;
    std::printf("arg {number=%d}{call=--data-bits}{display=Data bits}{type=selector}{group=Line}\n", bits);
    for (const char *v : {"5", "6", "7", "8"})
        std::printf("value {arg=%d}{value=%s}{display=%s}{default=%s}\n", bits, v, v, v[0] == '8' ? "true" : "false");
    const int parity = n++;
    std::printf("arg {number=%d}{call=--parity}{display=Parity}{type=selector}{group=Line}\n", parity);
    for (const auto &[v, d] : {std::pair{"N", "none"}, {"E", "even"}, {"O", "odd"}, {"M", "mark"}, {"S", "space"}})
        std::printf("value {arg=%d}{value=%s}{display=%s}{default=%s}\n", parity, v, d, v[0] == 'N' ? "true" : "false");
    const int stop = n++;
    std::printf("arg {number=%d}{call=--stop-bits}{display=Stop bits}{type=selector}{group=Line}\n", stop);
    for (const char *v : {"1", "1.5", "2"})
        std::printf("value {arg=%d}{value=%s}{display=%s}{default=%s}\n", stop, v, v, v[1] == 0 && v[0] == '1' ? "true" : "false");
    std::printf("arg {number=%d}{call=--gap}{display=Frame gap (character times)}{type=double}"
                "{tooltip=Idle time that ends a frame; empty: 3.5, and at least 1.75 ms above 19200 baud}{group=Frames}\n",
                n++);
    std::printf("arg {number=%d}{call=--end-byte}{display=End byte}{type=string}"
                "{tooltip=A byte that ends a frame as well: hex (0A) or a control name (<ETX>)}{group=Frames}\n", n++);
    std::printf("arg {number=%d}{call=--protocol}{display=Dissector for the frames}{type=string}"
                "{tooltip=The frames again for this Wireshark dissector, e.g. mbrtu}{validation=^[A-Za-z0-9._-]*$}"
                "{group=Frames}\n", n++);
    std::printf("arg {number=%d}{call=--record}{display=Keep the recording in}{type=fileselect}{mustexist=false}"
                "{tooltip=A record file (.ksr) that keeps what was captured; an existing recording is continued. "
                "Empty: a temporary file}{group=Recording}\n", n++);
}

// The record file the capture goes into: the one asked for, or a temporary one removed afterwards.
struct CaptureRecord {
    std::string path;
    bool temporary = false;
    ~CaptureRecord()
    {
        if (temporary)
            ::unlink(path.c_str());
    }
};

// Follows the record file and hands every new MP to the pcapng stream.
class Follower {
public:
    Follower(std::string path, PcapStream &stream) : path_(std::move(path)), stream_(stream), block_(kBlock * kMpSize) {}

    bool poll(RecordingSession &session, bool stopped)
    {
        if (!reader_.isOpen() && !reader_.open(path_))
            return true; // not there yet
        for (;;) {
            const std::uint64_t count = reader_.recordCount();
            if (next_ >= count)
                break;
            const std::uint64_t got = reader_.readRaw(next_, std::min(kBlock, count - next_), block_.data());
            if (got == 0)
                break;
            for (std::uint64_t k = 0; k < got; ++k, ++next_)
                if (!stream_.add(next_, DecodeMp(block_.data() + k * kMpSize)))
                    return false;
        }
        if (stopped)
            return stream_.finish();
        // A quiet line: frames whose gap has passed go out now, not with the next byte.
        return stream_.advanceTo(session.clock().nowDateTime()) && stream_.flush();
    }

private:
    static constexpr std::uint64_t kBlock = 4096;
    std::string path_;
    PcapStream &stream_;
    RecordReader reader_;
    std::uint64_t next_ = 0;
    std::vector<std::uint8_t> block_;
};

int runCapture(ExtcapCommand &cl)
{
    SetGlobalLang(LanguageFromEnvironment()); // the ports' and recorder's messages
    const bool sim = cl.interface == kSimInterface;
    if (!sim && cl.interface != kPortsInterface)
        return UsageError("extcap", "unknown interface '" + Printable(cl.interface) + "' (known: " + kPortsInterface +
                                        ", " + kSimInterface + ")");
    if (cl.fifo.empty())
        return UsageError("extcap", "--capture needs --fifo PATH");
    if (!sim && (cl.portA.empty() || cl.portB.empty()))
        return UsageError("extcap", "the ports interface needs --port-a and --port-b");
    if (!sim && cl.portA == cl.portB)
        return UsageError("extcap", "port A and port B must be different devices");
    if (!cl.filter.empty())
        std::fprintf(stderr, "kestrel-cli extcap: capture filters do not apply to a serial line; '%s' is ignored\n",
                     Printable(cl.filter).c_str());

    SessionRun run;
    run.command = "extcap";
    run.texts = cl.frames.line;
    run.messages = stdout; // Wireshark shows standard error as a failure
    if (sim && !LoadSessionScenario(run, cl.scenario, cl.frames.line.baud != PortComboTexts{}.baud))
        return kExitUsage;
    run.portA = cl.portA;
    run.portB = cl.portB;

    CaptureRecord record;
    if (cl.record.empty()) {
        std::string name = (std::filesystem::temp_directory_path() / "kestrel-extcap-XXXXXX.ksr").string();
        const int fd = ::mkstemps(name.data(), 4);
        if (fd < 0)
            return Fail("extcap", "cannot create a temporary record file in " +
                                      std::filesystem::temp_directory_path().string(), kExitFailure);
        ::close(fd);
        record.path = name;
        record.temporary = true;
        run.mode = RecordMode::Replace; // our own empty file
    } else {
        std::error_code ec;
        record.path = std::filesystem::absolute(cl.record, ec).lexically_normal().string();
        run.mode = RecordMode::Append; // what was recorded before stays
        if (const auto refused = RefuseRecordFile("extcap", record.path, run.mode))
            return *refused;
    }
    run.output = record.path;

    // The reader of the FIFO may go away at any time: a write then fails, it does not kill us.
    std::signal(SIGPIPE, SIG_IGN);
    FileSink fifo;
    if (!fifo.open(cl.fifo))
        return Fail("extcap", fifo.errorText(), kExitFailure);
    PcapExportOptions options;
    options.rules = RulesOf(cl.frames);
    options.dissector = cl.dissector;
    options.interfaceName = sim ? "Kestrel: simulated line" : "Kestrel: ports A+B";
    PcapStream stream(options, fifo);
    if (!stream.begin())
        return Fail("extcap", stream.error(), kExitFailure);
    Follower follower(record.path, stream);
    bool readerGone = false;
    run.tick = [&](RecordingSession &session, bool stopped) {
        // Wireshark stops by closing the FIFO: a quiet line would not notice it at a write.
        readerGone = readerGone || fifo.readerClosed();
        if (readerGone)
            return false;
        readerGone = !follower.poll(session, stopped);
        return !readerGone;
    };
    const int code = RunRecordingSession(run);
    (void)fifo.finish(); // Wireshark may have closed its end already
    return code;
}

// Writes the extcap entry into Wireshark's personal extcap folder.
int install()
{
    const char *xdg = std::getenv("XDG_CONFIG_HOME");
    const char *home = std::getenv("HOME");
    if ((!xdg || !*xdg) && (!home || !*home))
        return Fail("extcap", "neither XDG_CONFIG_HOME nor HOME is set: no personal extcap folder", kExitFailure);
    const std::filesystem::path folder =
        (xdg && *xdg ? std::filesystem::path(xdg) : std::filesystem::path(home) / ".config") / "wireshark" / "extcap";
    const std::filesystem::path entry = folder / kWrapperName;
    std::error_code ec;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec)
        return Fail("extcap", "cannot tell where kestrel-cli lies: " + ec.message(), kExitFailure);
    if (std::filesystem::exists(entry, ec)) {
        std::ifstream old(entry);
        std::string first, second;
        std::getline(old, first);
        std::getline(old, second);
        if (second.rfind(kWrapperMark, 0) != 0)
            return Fail("extcap", entry.string() + " exists and is not Kestrel's; it is left as it is", kExitUsage);
    }
    std::filesystem::create_directories(folder, ec);
    if (ec)
        return Fail("extcap", "cannot create " + folder.string() + ": " + ec.message(), kExitFailure);
    std::string quoted = self.string();
    for (std::size_t at = 0; (at = quoted.find('\'', at)) != std::string::npos; at += 4)
        quoted.replace(at, 1, "'\\''");
    {
        std::ofstream out(entry, std::ios::trunc);
        out << "#!/bin/sh\n"
            << kWrapperMark << " (kestrel-cli extcap --install writes it again)\n"
            << "exec '" << quoted << "' extcap \"$@\"\n";
        if (!out.flush())
            return Fail("extcap", "cannot write " + entry.string(), kExitFailure);
    }
    std::filesystem::permissions(entry, std::filesystem::perms::owner_all | std::filesystem::perms::group_read |
                                            std::filesystem::perms::group_exec | std::filesystem::perms::others_read |
                                            std::filesystem::perms::others_exec,
                                 ec);
    if (ec)
        return Fail("extcap", "cannot make " + entry.string() + " executable: " + ec.message(), kExitFailure);
    std::printf("installed %s: Wireshark lists \"Kestrel: ports A+B\" and \"Kestrel: simulated line\" from its next start\n",
                entry.string().c_str());
    return kExitOk;
}

int runExtcap(ExtcapCommand &cl)
{
    if (cl.install)
        return install();
    if (cl.interfaces) {
        printInterfaces();
        return kExitOk;
    }
    if (cl.interface.empty())
        return UsageError("extcap", "give --extcap-interfaces, --install, or --extcap-interface with --extcap-dlts, "
                                    "--extcap-config or --capture");
    if (cl.interface != kPortsInterface && cl.interface != kSimInterface)
        return UsageError("extcap", "unknown interface '" + Printable(cl.interface) + "' (known: " + kPortsInterface +
                                        ", " + kSimInterface + ")");
    if (cl.dlts) {
        std::printf("dlt {number=%u}{name=RTAC_SERIAL}{display=Serial line (RTAC serial)}\n", pcap::kLinkRtacSerial);
        return kExitOk;
    }
    if (cl.config) {
        printConfig(cl.interface);
        return kExitOk;
    }
    if (cl.capture)
        return runCapture(cl);
    return UsageError("extcap", "give --extcap-dlts, --extcap-config or --capture with --extcap-interface");
}

std::function<int()> declareExtcap(CLI::App &cmd)
{
    auto cl = std::make_shared<ExtcapCommand>();
    cmd.footer("Wireshark's extcap interface (man 4 extcap): Wireshark runs this command to list\n"
               "Kestrel's capture interfaces and to capture from them. Install it once into your\n"
               "personal extcap folder with 'kestrel-cli extcap --install'; tshark -D then lists\n"
               "kestrel-ports (Kestrel: ports A+B) and kestrel-sim (Kestrel: simulated line).");
    cmd.allow_extras(); // options of later Wireshark versions are not ours to refuse
    cmd.add_flag("--install", cl->install, "write the entry into Wireshark's personal extcap folder");
    cmd.add_flag("--extcap-interfaces", cl->interfaces, "list the interfaces");
    cmd.add_option("--extcap-version", cl->version, "Wireshark's version")->type_name("X.Y");
    cmd.add_option("--extcap-interface", cl->interface, "the interface")->type_name("NAME");
    cmd.add_flag("--extcap-dlts", cl->dlts, "list the interface's link types");
    cmd.add_flag("--extcap-config", cl->config, "list the interface's options");
    cmd.add_flag("--capture", cl->capture, "capture into --fifo");
    cmd.add_option("--fifo", cl->fifo, "where the packets go")->type_name("PATH");
    cmd.add_option("--extcap-capture-filter", cl->filter, "(no filter applies to a serial line)")->type_name("FILTER");
    cmd.add_option("--port-a", cl->portA, "device of port A (ports interface)")->type_name("DEV");
    cmd.add_option("--port-b", cl->portB, "device of port B (ports interface)")->type_name("DEV");
    cmd.add_option("--scenario", cl->scenario, "scenario of the simulated line (default: the demo)")->type_name("FILE.ksc");
    cmd.add_option("--record", cl->record, "keep the recording in this file (default: a temporary one)")
        ->type_name("FILE.ksr");
    AddFrameOptions(cmd, cl->frames);
    cmd.add_option_function<std::string>(
           "--protocol",
           [cl](const std::string &name) {
               if (!name.empty() && !ValidDissectorName(name))
                   throw CLI::ValidationError("--protocol", "takes a Wireshark dissector name (mbrtu, ...), not '" +
                                                                Printable(name) + "'");
               cl->dissector = name;
           },
           "the frames again for this Wireshark dissector")
        ->type_name("mbrtu|...");
    return [cl] { return runExtcap(*cl); };
}

const Registration reg({"extcap", "capture into Wireshark (its extcap interface); --install sets it up", declareExtcap});

} // namespace
} // namespace kestrel::cli
