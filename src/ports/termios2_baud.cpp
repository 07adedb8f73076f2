// Arbitrary baud rates through termios2 (BOTHER). Kept apart: <asm/termbits.h>
// clashes with <termios.h>.
#include <asm/termbits.h>
#include <sys/ioctl.h>

#include "ports/termios_port.h"

namespace kestrel::detail {

bool SetBaudTermios2(int fd, long baud)
{
    struct termios2 t {};
    if (ioctl(fd, TCGETS2, &t) != 0)
        return false;
    t.c_cflag &= ~static_cast<tcflag_t>(CBAUD);
    t.c_cflag |= BOTHER;
    t.c_cflag &= ~static_cast<tcflag_t>(CBAUD << IBSHIFT);
    t.c_cflag |= static_cast<tcflag_t>(BOTHER << IBSHIFT);
    t.c_ispeed = static_cast<speed_t>(baud);
    t.c_ospeed = static_cast<speed_t>(baud);
    return ioctl(fd, TCSETS2, &t) == 0;
}

long GetBaudTermios2(int fd)
{
    struct termios2 t {};
    if (ioctl(fd, TCGETS2, &t) != 0)
        return -1;
    return static_cast<long>(t.c_ispeed);
}

} // namespace kestrel::detail
