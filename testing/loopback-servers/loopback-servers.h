// Loopback servers for tests and benchmarks: a real IPP printer (ippeveprinter, with the system bus
// and the service-discovery daemon it needs started when they are not running), and scripted
// HTTP servers that misbehave on purpose. Every process started here is stopped by its PID.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>

namespace talmo::test {

// A free TCP port on 127.0.0.1 and ::1 (free when asked; the caller binds it soon after).
int FreeLoopbackPort();
// True when something accepts connections on 127.0.0.1:port.
bool PortAccepts(int port);

// A child process, stopped (SIGTERM, then SIGKILL after 3 s) when the object goes.
class ChildProcess {
public:
    ChildProcess() = default;
    ChildProcess(const std::vector<std::string>& argv, const std::string& logPath);
    ~ChildProcess();
    ChildProcess(ChildProcess&& o) noexcept : pid_(o.pid_) { o.pid_ = -1; }
    ChildProcess& operator=(ChildProcess&& o) noexcept;
    pid_t pid() const { return pid_; }
    bool running();
    void stop();

private:
    pid_t pid_ = -1;
};

// ippeveprinter on a loopback port with an attributes file. start() answers "" on success,
// else why the printer cannot run here.
class IppEvePrinter {
public:
    ~IppEvePrinter();
    std::string start(const std::string& attributesFile);
    int port() const { return port_; }
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    std::string ensureDaemons();
    std::string folder_;
    int lockFd_ = -1;
    std::atomic<int>* counted_ = nullptr;
    int port_ = 0;
    ChildProcess dbus_, avahi_, printer_;
};

// A scripted HTTP server on 127.0.0.1: each accepted connection is handed to `serve` with
// its socket, on the server's thread. Stopping closes the listener and every connection.
class ScriptedServer {
public:
    enum class Kind {
        Serve,     // accept, then run the script
        BlackHole, // a full accept queue: connects never complete
    };
    using Script = std::function<void(int fd, const std::atomic<bool>& stopping)>;

    explicit ScriptedServer(Script serve, Kind kind = Kind::Serve);
    ~ScriptedServer();
    int port() const { return port_; }
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
    int connections() const { return connections_.load(); }

private:
    int listenFd_ = -1;
    int port_ = 0;
    std::vector<int> fillers_;
    std::atomic<bool> stopping_{false};
    std::atomic<int> connections_{0};
    std::thread thread_;
};

// Reads one HTTP request (headers, a "100 Continue" when asked for, then the body); false when
// the peer goes away or `stopping` is set.
bool ReadHttpRequest(int fd, const std::atomic<bool>& stopping, std::string* body = nullptr);
// Writes everything; false when the peer is gone.
bool WriteAll(int fd, const std::string& bytes);
// An HTTP response with the given status line text, content type and body.
std::string HttpResponse(const std::string& status, const std::string& body, bool withLength = true);

// Scripts: answer each request with `response`; take the request and never answer (a tarpit);
// answer one byte per `perByte`, so that no single read waits long (a drip).
ScriptedServer::Script Answer(std::string response);
void Tarpit(int fd, const std::atomic<bool>& stopping);
ScriptedServer::Script Drip(std::string response, std::chrono::milliseconds perByte);

} // namespace talmo::test
