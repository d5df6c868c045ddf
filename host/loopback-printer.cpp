// The loopback IPP printer: ippeveprinter with an attributes file, plus the system bus and
// the service-discovery daemon it refuses to start without.
#include "host/print-job.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/prctl.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace talmo::host {

namespace {

using namespace std::chrono_literals;

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

bool portAccepts(int port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool ok = fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
    if (fd >= 0)
        ::close(fd);
    return ok;
}

// A port free on 127.0.0.1 when asked; the printer binds it moments later.
int freeLoopbackPort()
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return 0;
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    int port = 0;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len) == 0)
        port = ntohs(a.sin_port);
    ::close(fd);
    return port;
}

template <class F> bool waitFor(F ready, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end) {
        if (ready())
            return true;
        std::this_thread::sleep_for(20ms);
    }
    return ready();
}

bool hasProgram(const char* path) { return ::access(path, X_OK) == 0; }

std::string head(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str().substr(0, 600);
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& argv, const std::string& logPath)
{
    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
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
        std::this_thread::sleep_for(10ms);
    }
    pid_ = -1;
}

LoopbackIppPrinter::~LoopbackIppPrinter()
{
    printer_.stop();
    avahi_.stop();
    dbus_.stop();
    if (!folder_.empty()) {
        std::error_code ec;
        std::filesystem::remove_all(folder_, ec);
    }
}

std::string LoopbackIppPrinter::ensureDaemons()
{
    static constexpr const char* kBus = "/run/dbus/system_bus_socket";
    static constexpr const char* kAvahi = "/run/avahi-daemon/socket";
    if (!unixSocketAccepts(kBus)) {
        if (::geteuid() != 0)
            return "the system bus is not running (start dbus, or run once as root)";
        if (!hasProgram("/usr/bin/dbus-daemon"))
            return "dbus-daemon is not installed";
        std::error_code ec;
        std::filesystem::create_directories("/run/dbus", ec);
        dbus_ = ChildProcess({"/usr/bin/dbus-daemon", "--system", "--nofork", "--nopidfile"}, folder_ + "/dbus.log");
        if (!waitFor([] { return unixSocketAccepts(kBus); }, 5s))
            return "the system bus did not start";
    }
    if (!unixSocketAccepts(kAvahi)) {
        if (::geteuid() != 0)
            return "avahi-daemon is not running (start it, or run once as root)";
        if (!hasProgram("/usr/sbin/avahi-daemon"))
            return "avahi-daemon is not installed";
        avahi_ = ChildProcess({"/usr/sbin/avahi-daemon", "--no-drop-root", "--no-rlimits", "--no-chroot"},
                              folder_ + "/avahi.log");
        if (!waitFor([] { return unixSocketAccepts(kAvahi); }, 5s))
            return "avahi-daemon did not start";
    }
    return {};
}

std::string LoopbackIppPrinter::start(const std::string& attributesFile, const std::string& name, bool keepFiles)
{
    static constexpr const char* kProgram = "/usr/sbin/ippeveprinter";
    if (!hasProgram(kProgram))
        return "ippeveprinter is not installed (cups-ipp-utils)";
    const char* tmp = std::getenv("TMPDIR");
    std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/talmo-printer-XXXXXX";
    if (!::mkdtemp(templ.data()))
        return "no temporary folder";
    folder_ = templ;
    if (std::string why = ensureDaemons(); !why.empty())
        return why;
    // Another process may take the port between our probe and the printer's bind: try again.
    for (int attempt = 0; attempt < 3; ++attempt) {
        port_ = freeLoopbackPort();
        // "-n localhost" binds the loopback addresses only.
        std::vector<std::string> argv = {
            kProgram, "-p", std::to_string(port_), "-n", "localhost", "-a", attributesFile, "-d", folder_};
        if (keepFiles)
            argv.push_back("-k");
        // Nothing to drive: a document is done once received, instead of a simulated print
        // that keeps the printer busy for seconds.
        if (hasProgram("/bin/true"))
            argv.insert(argv.end(), {"-c", "/bin/true"});
        argv.push_back(name);
        printer_ = ChildProcess(argv, folder_ + "/printer.log");
        if (waitFor([this] { return !printer_.running() || portAccepts(port_); }, 10s) && printer_.running())
            return {};
    }
    return "ippeveprinter did not start: " + head(folder_ + "/printer.log");
}

} // namespace talmo::host
