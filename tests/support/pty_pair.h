#pragma once
// A pseudo-terminal pair: the port under test opens the slave, the test writes
// into the master what a line would deliver.

#include <gtest/gtest.h>

#include <string>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace kestrel::test {

struct PtyPair {
    int master = -1;
    std::string slavePath;

    PtyPair()
    {
        master = ::posix_openpt(O_RDWR | O_NOCTTY);
        ::fcntl(master, F_SETFD, FD_CLOEXEC); // a child kestrel-cli must not hold our end open
        if (master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0)
            slavePath = ::ptsname(master);
    }
    ~PtyPair() { closeMaster(); }
    PtyPair(const PtyPair &) = delete;
    PtyPair &operator=(const PtyPair &) = delete;

    // The other side goes away: the port sees a hang-up.
    void closeMaster()
    {
        if (master >= 0)
            ::close(master);
        master = -1;
    }
    void send(const std::string &bytes) const
    {
        ASSERT_EQ(::write(master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
};

} // namespace kestrel::test
