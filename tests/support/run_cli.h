#pragma once
// Runs kestrel-cli as a child process for end-to-end tests: English messages,
// stdout and stderr into one file, an optional cap on the size of any file it
// writes (as a quota or a full disk would).

#include <sys/resource.h>
#include <sys/wait.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace kestrel::test {

inline pid_t StartCli(const std::string &cli, const std::vector<std::string> &args, const std::string &outputFile,
                      rlim_t fileLimit = 0)
{
    std::vector<std::string> argv{cli};
    argv.insert(argv.end(), args.begin(), args.end());
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int fd = ::open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(fd, 1);
        ::dup2(fd, 2);
        ::setenv("LANG", "C", 1);
        ::unsetenv("LC_ALL");
        ::unsetenv("LC_MESSAGES");
        if (fileLimit > 0) {
            const rlimit limit{fileLimit, fileLimit};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        }
        std::vector<char *> cargs;
        for (auto &a : argv)
            cargs.push_back(a.data());
        cargs.push_back(nullptr);
        ::execv(cargs[0], cargs.data());
        ::_exit(127);
    }
    return pid;
}

// Exit code, or 128 + signal; -1 when it did not end within the time-out (then it is killed).
inline int WaitCli(pid_t pid, std::chrono::seconds timeout = std::chrono::seconds(30))
{
    const auto until = std::chrono::steady_clock::now() + timeout;
    int status = 0;
    while (::waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > until) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

struct CliRun {
    int code = -1;
    std::string out; // standard output and error together
};

// Runs `program args` through bash (args may use quoting and process substitution) in the
// C locale; a time-out of 20 s turns a hang into a failed run, not a stuck suite. Standard
// error joins the output unless withErrors is false (then it is dropped).
inline CliRun RunCapture(const std::string &program, const std::string &args, const std::string &env = {},
                         bool withErrors = true)
{
    const std::string cmd = "exec bash -c \"LANG=C LC_ALL=C " + env + " timeout 20 '" + program + "' " + args +
                            (withErrors ? " 2>&1\"" : " 2>/dev/null\"");
    CliRun r;
    std::FILE *p = popen(cmd.c_str(), "r");
    if (!p)
        return r;
    std::array<char, 4096> buf;
    std::size_t n;
    while ((n = std::fread(buf.data(), 1, buf.size(), p)) > 0)
        r.out.append(buf.data(), n);
    const int status = pclose(p);
    // A crash shows as a signal, never as an ordinary exit code.
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return r;
}

// Wireshark's tshark: the tests that read capture files with it are skipped without it.
inline bool HaveTshark() { return std::system("command -v tshark >/dev/null 2>&1") == 0; }

} // namespace kestrel::test
