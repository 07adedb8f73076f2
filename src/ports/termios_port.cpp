#include "ports/termios_port.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <mutex>

#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include "ports/port_scan.h"
#include "ports/port_support.h"
#include "ports/ports_log.h"

namespace kestrel {

namespace {

// Interrupts TIOCMIWAIT: close() does not wake a thread waiting in it.
int wakeSignal()
{
    static const int sig = SIGRTMIN + 5;
    static std::once_flag once;
    std::call_once(once, [] {
        struct sigaction sa {};
        sa.sa_handler = [](int) {};
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = 0; // no SA_RESTART: the ioctl must return EINTR
        sigaction(sig, &sa, nullptr);
    });
    return sig;
}

std::uint8_t msrFromTiocm(int bits)
{
    std::uint8_t m = 0;
    if (bits & TIOCM_CTS)
        m |= Msr::Cts;
    if (bits & TIOCM_DSR)
        m |= Msr::Dsr;
    if (bits & TIOCM_RNG)
        m |= Msr::Ri;
    if (bits & TIOCM_CD)
        m |= Msr::Dcd;
    return m;
}

bool notSupported(int err)
{
    return err == ENOTTY || err == EINVAL || err == ENOSYS || err == EOPNOTSUPP;
}

speed_t standardSpeed(long baud)
{
    switch (baud) {
    case 50: return B50; case 75: return B75; case 110: return B110; case 134: return B134;
    case 150: return B150; case 200: return B200; case 300: return B300; case 600: return B600;
    case 1200: return B1200; case 1800: return B1800; case 2400: return B2400; case 4800: return B4800;
    case 9600: return B9600; case 19200: return B19200; case 38400: return B38400; case 57600: return B57600;
    case 115200: return B115200; case 230400: return B230400; case 460800: return B460800;
    case 500000: return B500000; case 576000: return B576000; case 921600: return B921600;
    case 1000000: return B1000000; case 1152000: return B1152000; case 1500000: return B1500000;
    case 2000000: return B2000000; case 2500000: return B2500000; case 3000000: return B3000000;
    case 3500000: return B3500000; case 4000000: return B4000000;
    default: return B0;
    }
}

} // namespace

TermiosPort::TermiosPort(std::string device)
    : device_(std::move(device)), channel_([this](const PortNote &note) {
          if (fd_ >= 0)
              DeliverNote(listener_, *this, note);
      })
{
}

TermiosPort::~TermiosPort()
{
    close();
}

Result TermiosPort::open()
{
    if (fd_ >= 0)
        return Result::Ok();
    Result r = openDevice();
    if (!r)
        qCInfo(lcPorts) << "cannot open" << device_.c_str() << ":" << r.detail.c_str();
    else
        qCDebug(lcPorts) << "opened" << device_.c_str() << "at" << settings_.baud << "baud";
    return r;
}

Result TermiosPort::openDevice()
{
    if (Result valid = ValidPortSettings(settings_); !valid)
        return valid;

    const int fd = ::open(device_.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        const int e = errno;
        return e == ENOENT ? PortFailure(PortTextId::Missing)
             : e == EBUSY  ? PortFailure(PortTextId::Busy)
                           : PortFailure(PortTextId::OpenFailed, std::strerror(e));
    }
    auto fail = [&](Result why) {
        ::close(fd);
        return why;
    };
    if (!isatty(fd))
        return fail(PortFailure(PortTextId::NotSerial));
    if (flock(fd, LOCK_EX | LOCK_NB) != 0)
        return fail(PortFailure(PortTextId::Busy));
    if (IsLockedByLockFile(device_))
        return fail(PortFailure(PortTextId::Busy));
    (void)ioctl(fd, TIOCEXCL); // nobody else opens it while we record

    fd_ = fd;
    if (Result applied = applySettings(); !applied) {
        fd_ = -1;
        (void)ioctl(fd, TIOCNXCL);
        return fail(std::move(applied));
    }
    tcflush(fd_, TCIFLUSH);
    // The kernel raises DTR and RTS when a tty opens; a monitor holds its outputs inactive.
    // Best effort: pseudo-terminals and some adapters have no modem lines to lower.
    int outputs = TIOCM_DTR | TIOCM_RTS;
    (void)ioctl(fd_, TIOCMBIC, &outputs);

    int bits = 0;
    const std::uint8_t initial = ioctl(fd_, TIOCMGET, &bits) == 0 ? msrFromTiocm(bits) : 0;
    channel_.reset(initial);
    decoder_.reset();

    serial_icounter_struct ic{};
    counters_ = LineCounters{};
    counters_.valid = ioctl(fd_, TIOCGICOUNT, &ic) == 0;
    lastOverruns_ = static_cast<std::uint32_t>(ic.overrun + ic.buf_overrun);
    lastParity_ = static_cast<std::uint32_t>(ic.parity);
    lastFrame_ = static_cast<std::uint32_t>(ic.frame);
    lastBrk_ = static_cast<std::uint32_t>(ic.brk);
    lastRing_ = static_cast<std::uint32_t>(ic.rng);

    wakeFd_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    reader_ = std::thread([this] { readerLoop(); });
    startModemThread();
    applyPriority();
    return Result::Ok();
}

Result TermiosPort::applySettings()
{
    termios t{};
    if (tcgetattr(fd_, &t) != 0)
        return PortFailure(PortTextId::NotSerial);
    // Raw input with errors marked in the stream; nothing is sent, nothing is translated.
    t.c_iflag &= ~static_cast<tcflag_t>(IGNBRK | BRKINT | IGNPAR | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF | IXANY | IMAXBEL | IUCLC);
    t.c_iflag |= INPCK | PARMRK;
    t.c_oflag = 0;
    t.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHOE | ECHOK | ECHONL | ISIG | IEXTEN);
    t.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS | HUPCL);
    t.c_cflag |= CREAD | CLOCAL;
    switch (settings_.dataBits) {
    case 5: t.c_cflag |= CS5; break;
    case 6: t.c_cflag |= CS6; break;
    case 7: t.c_cflag |= CS7; break;
    default: t.c_cflag |= CS8; break;
    }
    switch (settings_.parity) {
    case Parity::None: break;
    case Parity::Even: t.c_cflag |= PARENB; break;
    case Parity::Odd: t.c_cflag |= PARENB | PARODD; break;
    case Parity::Mark: t.c_cflag |= PARENB | CMSPAR | PARODD; break;
    case Parity::Space: t.c_cflag |= PARENB | CMSPAR; break;
    }
    // Two stop bits with five data bits are 1.5 on the wire, which is what 1.5 asks for.
    if (settings_.stopBits != StopBits::One)
        t.c_cflag |= CSTOPB;
    parityOn_ = settings_.parity != Parity::None;
    t.c_cc[VMIN] = 1;
    t.c_cc[VTIME] = 0;
    const speed_t std = standardSpeed(settings_.baud);
    if (std != B0) {
        cfsetispeed(&t, std);
        cfsetospeed(&t, std);
    }
    if (tcsetattr(fd_, TCSANOW, &t) != 0)
        return PortFailure(PortTextId::BadSettings, std::string(" (") + std::strerror(errno) + ")");
    if (std == B0 && !detail::SetBaudTermios2(fd_, settings_.baud))
        return PortFailure(PortTextId::BadSettings, " (baud " + std::to_string(settings_.baud) + ")");
    return Result::Ok();
}

void TermiosPort::setSettings(const PortSettings &settings)
{
    settings_ = settings;
    if (fd_ < 0)
        return;
    // tcsetattr can switch the UART's modem interrupts off under a waiting thread.
    stopModemThread();
    // The port stays open with what it had; the next open reports the refusal.
    if (const Result applied = applySettings(); !applied)
        qCInfo(lcPorts) << device_.c_str() << "refused new settings:" << applied.detail.c_str();
    startModemThread();
}

void TermiosPort::close()
{
    if (fd_ < 0)
        return;
    channel_.stop();
    if (wakeFd_ >= 0) {
        const std::uint64_t one = 1;
        (void)!write(wakeFd_, &one, sizeof one);
    }
    if (reader_.joinable())
        reader_.join();
    stopModemThread();
    (void)ioctl(fd_, TIOCNXCL);
    ::close(fd_); // HUPCL is clear: DTR and RTS stay low
    fd_ = -1;
    if (wakeFd_ >= 0)
        ::close(wakeFd_);
    wakeFd_ = -1;
}

void TermiosPort::flushInput()
{
    if (fd_ >= 0)
        tcflush(fd_, TCIFLUSH);
    channel_.flush();
}

void TermiosPort::readerLoop()
{
    std::uint8_t buf[kReceiveBufferSize];
    for (;;) {
        if (!channel_.waitForRoom())
            return; // stopped
        pollfd fds[2] = {{fd_, POLLIN, 0}, {wakeFd_, POLLIN, 0}};
        const int r = poll(fds, 2, -1);
        if (r < 0) {
            if (errno == EINTR)
                continue;
            lose(PortText(PortTextId::ReadFailed) + std::strerror(errno));
            return;
        }
        if (fds[1].revents != 0)
            return;
        if (fds[0].revents == 0)
            continue;
        const std::size_t room = channel_.freeSpace();
        if (room == 0)
            continue;
        const ssize_t n = ::read(fd_, buf, std::min(room, sizeof buf));
        if (n > 0) {
            process(buf, static_cast<std::size_t>(n));
            continue;
        }
        if (n < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        // End of file or EIO: the other side closed, or the adapter was unplugged.
        if (n == 0 || errno == EIO || errno == ENXIO || errno == ENODEV)
            lose(PortText(PortTextId::OtherSideClosed));
        else
            lose(PortText(PortTextId::ReadFailed) + std::strerror(errno));
        return;
    }
}

void TermiosPort::lose(const std::string &reason)
{
    qCInfo(lcPorts) << device_.c_str() << "lost:" << reason.c_str();
    channel_.pushLost(reason);
}

void TermiosPort::process(const std::uint8_t *data, std::size_t size)
{
    if (counters_.valid) {
        serial_icounter_struct ic{};
        if (ioctl(fd_, TIOCGICOUNT, &ic) == 0) {
            const auto overruns = static_cast<std::uint32_t>(ic.overrun + ic.buf_overrun);
            if (overruns != lastOverruns_)
                channel_.pushLineError(LineError::Overrun); // lost bytes never show in the stream
            lastOverruns_ = overruns;
            counters_.parity += static_cast<std::uint32_t>(ic.parity) - lastParity_;
            counters_.frame += static_cast<std::uint32_t>(ic.frame) - lastFrame_;
            counters_.brk += static_cast<std::uint32_t>(ic.brk) - lastBrk_;
            lastParity_ = static_cast<std::uint32_t>(ic.parity);
            lastFrame_ = static_cast<std::uint32_t>(ic.frame);
            lastBrk_ = static_cast<std::uint32_t>(ic.brk);
        }
    }
    std::vector<std::uint8_t> out;
    std::vector<std::size_t> marked;
    out.reserve(size);
    decoder_.decode(data, size, out, marked);
    std::size_t from = 0;
    for (std::size_t at : marked) {
        if (at > from)
            (void)channel_.pushBytes(out.data() + from, at - from);
        channel_.pushLineError(ClassifyMarkedByte(out[at], parityOn_, counters_));
        from = at;
    }
    if (out.size() > from)
        (void)channel_.pushBytes(out.data() + from, out.size() - from);
    if (!decoder_.midSequence()) {
        // Counts without a marked byte (a driver that does not mark) must not tag later bytes.
        counters_.parity = counters_.frame = counters_.brk = 0;
    }
}

void TermiosPort::startModemThread()
{
    if (fd_ < 0 || modem_.joinable())
        return;
    (void)wakeSignal();
    stopModem_ = false;
    modemDone_ = false;
    modem_ = std::thread([this] {
        modemLoop();
        modemDone_ = true;
    });
}

void TermiosPort::stopModemThread()
{
    if (!modem_.joinable())
        return;
    stopModem_ = true;
    {
        std::lock_guard lock(modemMutex_);
        modemCv_.notify_all();
    }
    // The signal may land just before the thread enters the ioctl: repeat until it has left.
    while (!modemDone_) {
        pthread_kill(modem_.native_handle(), wakeSignal());
        std::unique_lock lock(modemMutex_);
        modemCv_.wait_for(lock, std::chrono::milliseconds(2), [this] { return modemDone_.load(); });
    }
    modem_.join();
}

void TermiosPort::modemLoop()
{
    bool waits = true;
    int bits = 0;
    if (ioctl(fd_, TIOCMGET, &bits) != 0)
        return; // no modem lines at all (pseudo-terminals)
    std::uint8_t previous = msrFromTiocm(bits);
    while (!stopModem_) {
        if (waits) {
            if (ioctl(fd_, TIOCMIWAIT, TIOCM_CTS | TIOCM_DSR | TIOCM_RNG | TIOCM_CD) != 0) {
                const int e = errno;
                if (e == EINTR)
                    continue;
                if (!notSupported(e))
                    return; // the device is gone; the reader reports it
                waits = false;
            }
        }
        modemWaits_ = waits;
        if (!waits) {
            std::unique_lock lock(modemMutex_);
            modemCv_.wait_for(lock, std::chrono::milliseconds(3), [this] { return stopModem_.load(); });
            if (stopModem_)
                break;
        }
        if (ioctl(fd_, TIOCMGET, &bits) != 0)
            return;
        const std::uint8_t now = msrFromTiocm(bits);
        if (counters_.valid) {
            // A ring shorter than one look would be missed: the ring counter still tells.
            serial_icounter_struct ic{};
            if (ioctl(fd_, TIOCGICOUNT, &ic) == 0) {
                const auto rings = static_cast<std::uint32_t>(ic.rng);
                if (rings != lastRing_ && !(previous & Msr::Ri) && !(now & Msr::Ri))
                    channel_.pushModemState(static_cast<std::uint8_t>(previous | Msr::Ri));
                lastRing_ = rings;
            }
        }
        channel_.pushModemState(now);
        previous = now;
    }
}

void TermiosPort::setDispatcherPriority(bool timeCritical, int boost)
{
    timeCritical_ = timeCritical;
    boost_ = boost;
    applyPriority();
}

void TermiosPort::applyPriority()
{
    if (!timeCritical_ || !reader_.joinable())
        return;
    // Real-time scheduling needs a privilege most users lack; then a lower nice value is the best we get.
    sched_param p{};
    p.sched_priority = std::min(sched_get_priority_max(SCHED_FIFO), 10 + boost_);
    if (pthread_setschedparam(reader_.native_handle(), SCHED_FIFO, &p) != 0) {
        // Without the privilege the receive side stays at normal priority; the large
        // receive buffer is what keeps bytes from being lost then.
    }
}

} // namespace kestrel
