// The termios backend over a pseudo-terminal pair: the port opens the slave,
// the test writes into the master what a line would deliver. Pseudo-terminals
// have no modem lines and do not mark errors themselves, so error sequences
// are written pre-encoded (FF 00 b) with PARMRK cleared on the slave.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

#include "ports/parmrk_decoder.h"
#include "ports/port_scan.h"
#include "ports/port_settings.h"
#include "ports/port_support.h"
#include "ports/termios_port.h"
#include "support/note_log.h"
#include "support/pty_pair.h"
#include "support/event_loop.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {

using test::NoteLog;
using test::SpinUntil;

struct TermiosFixture : ::testing::Test {
    test::PtyPair pty;
    NoteLog log;
    TermiosPort port;
    int slaveFd = -1; // the test's own view of the slave settings

    void SetUp() override
    {
        test::TestApp();
        ASSERT_FALSE(pty.slavePath.empty());
        slaveFd = ::open(pty.slavePath.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK);
        ASSERT_GE(slaveFd, 0);
        port.setDevice(pty.slavePath);
        port.setListener(&log);
    }
    void TearDown() override
    {
        port.close();
        if (slaveFd >= 0)
            ::close(slaveFd);
    }
    void openPort(const PortSettings &s = {})
    {
        port.setSettings(s);
        const Result opened = port.open();
        ASSERT_TRUE(opened) << opened.detail;
    }
    termios slaveTermios() const
    {
        termios t{};
        EXPECT_EQ(tcgetattr(slaveFd, &t), 0);
        return t;
    }
    void clearParmrk()
    {
        termios t = slaveTermios();
        t.c_iflag &= ~static_cast<tcflag_t>(PARMRK);
        ASSERT_EQ(tcsetattr(slaveFd, TCSANOW, &t), 0);
    }
};

TEST_F(TermiosFixture, RawReceiveOnlySettingsAreApplied)
{
    // Pseudo-terminals always run 8 data bits and drop parity, so only what they keep is checked here.
    termios t = slaveTermios(); // what another program left on the line must not stay
    t.c_cflag |= HUPCL;
    t.c_iflag |= ICRNL | IXON;
    t.c_lflag |= ICANON | ECHO;
    ASSERT_EQ(tcsetattr(slaveFd, TCSANOW, &t), 0);
    PortSettings s;
    s.baud = 19200;
    s.stopBits = StopBits::Two;
    openPort(s);
    t = slaveTermios();
    EXPECT_EQ(cfgetispeed(&t), static_cast<speed_t>(B19200));
    EXPECT_FALSE(t.c_cflag & HUPCL) << "closing must not drop DTR/RTS";
    EXPECT_TRUE(t.c_iflag & PARMRK);
    EXPECT_FALSE(t.c_iflag & (ISTRIP | IGNPAR | BRKINT | IGNBRK | ICRNL | IXON));
    EXPECT_FALSE(t.c_lflag & (ICANON | ECHO | ISIG | IEXTEN));

    // Changed while open: applied at once, also a rate that is not one of the standard ones.
    s.baud = 250000;
    s.stopBits = StopBits::One;
    port.setSettings(s);
    EXPECT_EQ(detail::GetBaudTermios2(slaveFd), 250000);
}

TEST_F(TermiosFixture, MarkedBytesBecomeLineErrorsBeforeTheirByte)
{
    PortSettings s;
    s.parity = Parity::Even;
    openPort(s);
    clearParmrk();
    pty.send(std::string("ab\xff\x00X", 5));
    ASSERT_TRUE(SpinUntil([&] { return log.bytes.size() >= 3; }));
    // Split across two reads, and a break (a marked zero byte).
    pty.send("\xff");
    SpinUntil([] { return false; }, 30);
    pty.send(std::string("\x00Y\xff\x00\x00", 5));
    ASSERT_TRUE(SpinUntil([&] { return log.bytes.size() >= 5; }));
    EXPECT_EQ(log.bytes, std::string("abXY\0", 5));
    std::vector<std::string> errors;
    for (auto &n : log.notes)
        if (n.rfind("error", 0) == 0)
            errors.push_back(n);
    EXPECT_EQ(errors, (std::vector<std::string>{"error 2", "error 2", "error 12"}));
}

TEST_F(TermiosFixture, FullBufferHoldsTheReaderBackAndLosesNothing)
{
    log.readBytes = false;
    openPort();
    std::string sent;
    for (int i = 0; i < 12000; ++i)
        sent.push_back(static_cast<char>('a' + i % 26));
    // Write from a thread: the pseudo-terminal blocks the writer while the port holds back.
    std::thread writer([&] {
        std::size_t off = 0;
        while (off < sent.size()) {
            const ssize_t n = ::write(pty.master, sent.data() + off, std::min<std::size_t>(512, sent.size() - off));
            if (n > 0)
                off += static_cast<std::size_t>(n);
        }
    });
    ASSERT_TRUE(SpinUntil([&] { return port.channel().buffered() >= static_cast<std::size_t>(kBufferFull); }));
    SpinUntil([] { return false; }, 50);
    EXPECT_LE(port.channel().buffered(), static_cast<std::size_t>(kReceiveBufferSize));
    std::string got;
    ASSERT_TRUE(SpinUntil([&] {
        while (port.charReady())
            got.push_back(static_cast<char>(port.getChar()));
        return got.size() >= sent.size();
    }, 5000));
    writer.join();
    EXPECT_EQ(got, sent);
}

TEST_F(TermiosFixture, OtherSideClosingIsPortLostOnce)
{
    openPort();
    pty.send("z");
    ASSERT_TRUE(SpinUntil([&] { return log.bytes == "z"; }));
    pty.closeMaster();
    ASSERT_TRUE(SpinUntil([&] { return log.count("lost") >= 1; }));
    SpinUntil([] { return false; }, 50);
    EXPECT_EQ(log.count("lost"), 1);
    EXPECT_TRUE(port.isOpen()); // the owner decides when to close
    port.close();
    EXPECT_FALSE(port.isOpen());
}

TEST_F(TermiosFixture, CloseWhileThreadsAreBlockedDoesNotHang)
{
    // A hang shows as the test's time-out; no wall-clock bound here, the machine may be busy.
    for (int i = 0; i < 20; ++i) {
        openPort();
        port.close();
        ASSERT_FALSE(port.isOpen()) << "round " << i;
    }
    // Closed ports report nothing, even for bytes that were already on their way.
    openPort();
    pty.send("late");
    port.close();
    SpinUntil([] { return false; }, 30);
    EXPECT_EQ(log.count("data"), 0);
}

TEST_F(TermiosFixture, MissingNotSerialAndBusyDevicesRefuseToOpen)
{
    // Each failure names its own reason, as a text ready to show.
    TermiosPort missing("/dev/kestrel-no-such-tty");
    const Result gone = missing.open();
    EXPECT_EQ(gone.code, static_cast<int>(PortTextId::Missing));
    EXPECT_EQ(gone.detail, PortText(PortTextId::Missing));
    TermiosPort notTty("/dev/null");
    EXPECT_EQ(notTty.open().code, static_cast<int>(PortTextId::NotSerial));
    EXPECT_FALSE(notTty.isOpen());

    ASSERT_EQ(flock(slaveFd, LOCK_EX | LOCK_NB), 0); // another program holds it
    EXPECT_EQ(port.open().code, static_cast<int>(PortTextId::Busy));
    EXPECT_FALSE(port.isOpen());
    flock(slaveFd, LOCK_UN);
    const Result opened = port.open();
    EXPECT_TRUE(opened) << opened.detail;

    // Settings no port can take are refused before the device is touched.
    TermiosPort bad("/dev/kestrel-no-such-tty");
    bad.setSettings({0, 8, Parity::None, StopBits::One});
    EXPECT_EQ(bad.open().code, static_cast<int>(PortTextId::BadSettings));
}

TEST(ParmrkDecoder, EverySplitDecodesLikeTheWhole)
{
    const std::string raw("a\xff\xff" "b\xff\x00" "c\xff\x00\x00\xff\x00\xff" "d\xff" "e", 16);
    const std::vector<std::uint8_t> wantOut = {'a', 0xFF, 'b', 'c', 0x00, 0xFF, 'd', 0xFF, 'e'};
    const std::vector<std::size_t> wantMarked = {3, 4, 5};
    for (std::size_t cut1 = 0; cut1 <= raw.size(); ++cut1) {
        for (std::size_t cut2 = cut1; cut2 <= raw.size(); ++cut2) {
            ParmrkDecoder d;
            std::vector<std::uint8_t> out;
            std::vector<std::size_t> marked;
            const auto *p = reinterpret_cast<const std::uint8_t *>(raw.data());
            d.decode(p, cut1, out, marked);
            d.decode(p + cut1, cut2 - cut1, out, marked);
            d.decode(p + cut2, raw.size() - cut2, out, marked);
            ASSERT_EQ(out, wantOut) << cut1 << "," << cut2;
            ASSERT_EQ(marked, wantMarked) << cut1 << "," << cut2;
            EXPECT_FALSE(d.midSequence());
        }
    }
}

TEST(ParmrkDecoder, CountersTellErrorsApart)
{
    LineCounters none;
    EXPECT_EQ(ClassifyMarkedByte('x', true, none), LineError::Parity);
    EXPECT_EQ(ClassifyMarkedByte('x', false, none), LineError::Framing);
    EXPECT_EQ(ClassifyMarkedByte(0, true, none), LineError::Break | LineError::Framing);

    LineCounters c;
    c.valid = true;
    c.parity = 1;
    c.frame = 1;
    c.brk = 1;
    EXPECT_EQ(ClassifyMarkedByte(0, true, c), LineError::Break | LineError::Framing);
    EXPECT_EQ(ClassifyMarkedByte('x', true, c), LineError::Framing);
    EXPECT_EQ(ClassifyMarkedByte('x', false, c), LineError::Parity); // the counter wins over the guess
    EXPECT_EQ(c.parity + c.frame + c.brk, 0u);
    EXPECT_EQ(ClassifyMarkedByte('x', true, c), LineError::Parity); // used up: back to the guess
}

TEST(PortScan, FindsUartsUsbAndStableNamesWithoutTheConsole)
{
    test::TempDir dir;
    namespace fs = std::filesystem;
    const fs::path dev = dir.path() / "dev", sys = dir.path() / "sys", lock = dir.path() / "lock";
    fs::create_directories(dev / "serial" / "by-id");
    fs::create_directories(lock);
    auto touch = [](const fs::path &p, const std::string &text = {}) {
        fs::create_directories(p.parent_path());
        std::ofstream(p) << text;
    };
    for (const char *n : {"ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS10", "ttyUSB0", "ttyACM0", "tty0", "console", "ttyS"})
        touch(dev / n);
    touch(sys / "ttyS0" / "type", "4\n");
    touch(sys / "ttyS1" / "type", "0\n"); // no UART behind it
    touch(sys / "ttyS2" / "type", "4\n");
    touch(sys / "ttyS3" / "type", "4\n"); // the console
    touch(sys / "ttyS10" / "type", "4\n");
    touch(sys / "console" / "active", "tty0 ttyS3\n");
    fs::create_symlink("../../ttyUSB0", dev / "serial" / "by-id" / "usb-FTDI_FT232R-if00-port0");

    const ScanRoots roots{dev.string(), sys.string(), lock.string()};
    const auto ports = ScanSerialPorts(roots);
    EXPECT_EQ(ports, (std::vector<std::string>{(dev / "ttyACM0").string(), (dev / "ttyS0").string(),
                                               (dev / "ttyS2").string(), (dev / "ttyS10").string(),
                                               (dev / "serial/by-id/usb-FTDI_FT232R-if00-port0").string()}));

    // A lock file of a live process hides the port; a stale or our own one does not.
    touch(lock / "LCK..ttyS2", "      " + std::to_string(getppid()) + "\n");
    touch(lock / "LCK..ttyS0", "  999999999\n");
    touch(lock / "LCK..ttyACM0", std::to_string(getpid()) + "\n");
    EXPECT_TRUE(IsLockedByLockFile((dev / "ttyS2").string(), lock.string()));
    const auto available = AvailablePorts(roots);
    EXPECT_EQ(available.size(), 4u);
    EXPECT_EQ(std::count(available.begin(), available.end(), (dev / "ttyS2").string()), 0);

    // A port list shows a stable name with the device it stands for; other paths as they are.
    EXPECT_EQ(PortDisplayName(ports.back()), "usb-FTDI_FT232R-if00-port0  (ttyUSB0)");
    EXPECT_EQ(PortDisplayName(ports.front()), ports.front());
    touch(dev / "serial" / "by-id" / "plain-file");
    EXPECT_EQ(PortDisplayName((dev / "serial/by-id/plain-file").string()), (dev / "serial/by-id/plain-file").string());
    EXPECT_EQ(PortDisplayName("sim A"), "sim A");
}

} // namespace
} // namespace kestrel
