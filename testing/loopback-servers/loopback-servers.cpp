#include "testing/loopback-servers/loopback-servers.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>

namespace talmo::test {

namespace {

using namespace std::chrono_literals;

bool bindLoopback(int family, int port)
{
    const int fd = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    bool ok;
    if (family == AF_INET) {
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_port = htons(static_cast<uint16_t>(port));
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ok = ::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
    } else {
        sockaddr_in6 a{};
        a.sin6_family = AF_INET6;
        a.sin6_port = htons(static_cast<uint16_t>(port));
        a.sin6_addr = in6addr_loopback;
        ok = ::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
    }
    ::close(fd);
    return ok;
}

bool unixSocketAccepts(const char* path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    sockaddr_un a{};
    a.sun_family = AF_UNIX;
    std::strncpy(a.sun_path, path, sizeof a.sun_path - 1);
    const bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
    ::close(fd);
    return ok;
}

template <class F> bool waitFor(F ready, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end) {
        if (ready())
            return true;
        std::this_thread::sleep_for(50ms);
    }
    return ready();
}

bool hasProgram(const char* path) { return ::access(path, X_OK) == 0; }

} // namespace

int FreeLoopbackPort()
{
    for (int attempt = 0; attempt < 50; ++attempt) {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        ::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len);
        ::close(fd);
        const int port = ntohs(a.sin_port);
        if (port > 0 && bindLoopback(AF_INET6, port))
            return port;
    }
    return 0;
}

bool PortAccepts(int port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
    ::close(fd);
    return ok;
}

// --- child processes ---

ChildProcess::ChildProcess(const std::vector<std::string>& argv, const std::string& logPath)
{
    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        if (log >= 0) {
            ::dup2(log, 1);
            ::dup2(log, 2);
        }
        ::setpgid(0, 0);
        // A parent that dies without stopping us (killed, crashed) must not leave a server behind.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (::getppid() != parent)
            ::_exit(0);
        ::execv(args[0], args.data());
        ::_exit(127);
    }
    pid_ = pid;
}

ChildProcess& ChildProcess::operator=(ChildProcess&& o) noexcept
{
    if (this != &o) {
        stop();
        pid_ = o.pid_;
        o.pid_ = -1;
    }
    return *this;
}

ChildProcess::~ChildProcess() { stop(); }

bool ChildProcess::running()
{
    if (pid_ <= 0)
        return false;
    int st = 0;
    if (::waitpid(pid_, &st, WNOHANG) == pid_) {
        pid_ = -1;
        return false;
    }
    return true;
}

void ChildProcess::stop()
{
    if (pid_ <= 0)
        return;
    ::kill(pid_, SIGTERM);
    const auto end = std::chrono::steady_clock::now() + 3s;
    int st = 0;
    while (::waitpid(pid_, &st, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > end) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, &st, 0);
            break;
        }
        std::this_thread::sleep_for(20ms);
    }
    pid_ = -1;
}

// --- ippeveprinter ---

IppEvePrinter::~IppEvePrinter()
{
    printer_.stop();
    avahi_.stop();
    dbus_.stop();
    if (lockFd_ >= 0)
        ::close(lockFd_);
    if (counted_)
        --*counted_;
    if (!folder_.empty()) {
        std::error_code ec;
        std::filesystem::remove_all(folder_, ec);
    }
}

// ippeveprinter advertises itself through the service-discovery daemon, which needs the system
// bus; without them it refuses to start.
std::string IppEvePrinter::ensureDaemons()
{
    static constexpr const char* kBus = "/run/dbus/system_bus_socket";
    static constexpr const char* kAvahi = "/run/avahi-daemon/socket";
    if (!unixSocketAccepts(kBus)) {
        if (::geteuid() != 0)
            return "the system bus is not running and only root may start it";
        if (!hasProgram("/usr/bin/dbus-daemon"))
            return "dbus-daemon is not installed";
        std::filesystem::create_directories("/run/dbus");
        dbus_ = ChildProcess({"/usr/bin/dbus-daemon", "--system", "--nofork", "--nopidfile"}, folder_ + "/dbus.log");
        if (!waitFor([] { return unixSocketAccepts(kBus); }, 5s))
            return "the system bus did not start";
    }
    if (!unixSocketAccepts(kAvahi)) {
        if (::geteuid() != 0)
            return "avahi-daemon is not running and only root may start it";
        if (!hasProgram("/usr/sbin/avahi-daemon"))
            return "avahi-daemon is not installed (scripts/install-deps.sh)";
        avahi_ = ChildProcess({"/usr/sbin/avahi-daemon", "--no-drop-root", "--no-rlimits", "--no-chroot"},
                              folder_ + "/avahi.log");
        if (!waitFor([] { return unixSocketAccepts(kAvahi); }, 5s))
            return "avahi-daemon did not start";
    }
    return {};
}

std::string IppEvePrinter::start(const std::string& attributesFile)
{
    if (!hasProgram("/usr/sbin/ippeveprinter"))
        return "ippeveprinter is not installed (cups-ipp-utils)";
    const char* tmp = std::getenv("TMPDIR");
    std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/talmo-ippeve-XXXXXX";
    if (!::mkdtemp(templ.data()))
        return "no temporary folder";
    folder_ = templ;
    // Test processes run in parallel; one at a time owns the daemons it may have started. A
    // second printer of the same process shares its first printer's turn.
    static std::atomic<int> printersHere{0};
    if (printersHere++ == 0) {
        lockFd_ = ::open("/tmp/talmo-ippeveprinter.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (lockFd_ >= 0)
            ::flock(lockFd_, LOCK_EX);
    }
    counted_ = &printersHere;
    if (std::string why = ensureDaemons(); !why.empty())
        return why;
    port_ = FreeLoopbackPort();
    // "-n localhost" binds 127.0.0.1 and ::1 only.
    printer_ = ChildProcess({"/usr/sbin/ippeveprinter", "-p", std::to_string(port_), "-n", "localhost", "-a",
                             attributesFile, "-d", folder_, "Talmo Test " + std::to_string(::getpid())},
                            folder_ + "/printer.log");
    if (!waitFor([this] { return !printer_.running() || PortAccepts(port_); }, 10s) || !printer_.running()) {
        std::string log;
        std::error_code ec;
        if (FILE* f = std::fopen((folder_ + "/printer.log").c_str(), "r")) {
            char buf[512];
            const size_t n = std::fread(buf, 1, sizeof buf, f);
            log.assign(buf, n);
            std::fclose(f);
        }
        return "ippeveprinter did not start: " + log;
    }
    return {};
}

// --- scripted servers ---

ScriptedServer::ScriptedServer(Script serve, Kind kind)
{
    listenFd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    ::bind(listenFd_, reinterpret_cast<sockaddr*>(&a), sizeof a);
    ::getsockname(listenFd_, reinterpret_cast<sockaddr*>(&a), &len);
    port_ = ntohs(a.sin_port);
    if (kind == Kind::BlackHole) {
        // A backlog of 0 holds one pending connection; fill it and further handshakes are
        // dropped, so a connect waits as for a host that never answers.
        ::listen(listenFd_, 0);
        for (int i = 0; i < 3; ++i) {
            const int c = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            ::connect(c, reinterpret_cast<sockaddr*>(&a), sizeof a);
            fillers_.push_back(c);
        }
        std::this_thread::sleep_for(100ms);
        return;
    }
    ::listen(listenFd_, 16);
    thread_ = std::thread([this, serve = std::move(serve)] {
        std::vector<std::thread> workers;
        while (!stopping_) {
            pollfd p{listenFd_, POLLIN, 0};
            if (::poll(&p, 1, 50) <= 0)
                continue;
            const int fd = ::accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
            if (fd < 0)
                continue;
            ++connections_;
            workers.emplace_back([fd, &serve, this] {
                serve(fd, stopping_);
                ::close(fd); // a close-delimited answer ends here
            });
        }
        for (std::thread& w : workers)
            w.join();
    });
}

ScriptedServer::~ScriptedServer()
{
    stopping_ = true;
    if (thread_.joinable())
        thread_.join();
    for (int fd : fillers_)
        ::close(fd);
    ::close(listenFd_);
}

bool WriteAll(int fd, const std::string& bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::send(fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (n <= 0)
            return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

bool ReadHttpRequest(int fd, const std::atomic<bool>& stopping, std::string* body)
{
    std::string data;
    size_t headerEnd = std::string::npos;
    size_t length = 0;
    bool continued = false;
    char buf[8192];
    for (;;) {
        if (headerEnd == std::string::npos) {
            headerEnd = data.find("\r\n\r\n");
            if (headerEnd != std::string::npos) {
                const std::string head = data.substr(0, headerEnd);
                std::string lower;
                for (char c : head)
                    lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                if (const size_t at = lower.find("content-length:"); at != std::string::npos)
                    length = std::strtoul(lower.c_str() + at + 15, nullptr, 10);
                if (lower.find("expect: 100-continue") != std::string::npos && !continued) {
                    continued = true;
                    if (!WriteAll(fd, "HTTP/1.1 100 Continue\r\n\r\n"))
                        return false;
                }
            }
        }
        if (headerEnd != std::string::npos && data.size() - (headerEnd + 4) >= length) {
            if (body)
                *body = data.substr(headerEnd + 4, length);
            return true;
        }
        pollfd p{fd, POLLIN, 0};
        const int r = ::poll(&p, 1, 50);
        if (stopping)
            return false;
        if (r <= 0)
            continue;
        const ssize_t n = ::recv(fd, buf, sizeof buf, 0);
        if (n <= 0)
            return false;
        data.append(buf, static_cast<size_t>(n));
    }
}

std::string HttpResponse(const std::string& status, const std::string& body, bool withLength)
{
    std::string r = "HTTP/1.1 " + status + "\r\nContent-Type: application/ipp\r\n";
    if (withLength)
        r += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    else
        r += "Connection: close\r\n";
    return r + "\r\n" + body;
}

ScriptedServer::Script Answer(std::string response)
{
    return [response = std::move(response)](int fd, const std::atomic<bool>& stopping) {
        if (ReadHttpRequest(fd, stopping))
            WriteAll(fd, response);
    };
}

void Tarpit(int fd, const std::atomic<bool>& stopping)
{
    ReadHttpRequest(fd, stopping);
    while (!stopping) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 50) > 0) {
            char buf[4096];
            if (::recv(fd, buf, sizeof buf, 0) <= 0)
                return;
        }
    }
}

ScriptedServer::Script Drip(std::string response, std::chrono::milliseconds perByte)
{
    return [response = std::move(response), perByte](int fd, const std::atomic<bool>& stopping) {
        if (!ReadHttpRequest(fd, stopping))
            return;
        for (char c : response) {
            if (stopping || !WriteAll(fd, std::string(1, c)))
                return;
            // Short naps, so that stopping the server never waits a whole byte.
            const auto next = std::chrono::steady_clock::now() + perByte;
            while (!stopping && std::chrono::steady_clock::now() < next)
                std::this_thread::sleep_for(std::min<std::chrono::milliseconds>(perByte, 100ms));
        }
    };
}

} // namespace talmo::test
