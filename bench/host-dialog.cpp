// Whole-process time of the dialog host saving a ticket (load the bundle, build the panels,
// open, sync, write the ticket, close) against a Qt program that only shows and closes a bare
// print dialog. Each iteration runs both, one after the other, so load on the machine falls on
// both alike; the iteration time is talmo-print's, the counters give both means.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

double runSeconds(std::vector<std::string> argv)
{
    std::vector<char*> args;
    for (auto& a : argv)
        args.push_back(a.data());
    args.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, 1);
        if (!std::getenv("TALMO_BENCH_VERBOSE"))
            ::dup2(null, 2);
        ::execv(args[0], args.data());
        ::_exit(127);
    }
    int st = 0;
    ::waitpid(pid, &st, 0);
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return WIFEXITED(st) && WEXITSTATUS(st) == 0 ? s : -1;
}

void SaveTicketBesideBareDialog(benchmark::State& state)
{
    char home[] = "/tmp/talmo-bench-host-XXXXXX";
    if (!::mkdtemp(home)) {
        state.SkipWithError("no temporary folder");
        return;
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("HOME", home, 1);
    ::setenv("XDG_CONFIG_HOME", (std::string(home) + "/config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (std::string(home) + "/data").c_str(), 1);
    const std::string out = std::string(home) + "/saved.plist";
    const std::vector<std::string> host = {
        TALMO_PRINT,     "--printer", "demo", "--ticket", TALMO_SOURCE_DIR "/examples/settings.plist",
        "--save-ticket", out};
    double hostTotal = 0, bareTotal = 0;
    for (auto _ : state) {
        const double h = runSeconds(host);
        const double b = runSeconds({BARE_DIALOG});
        if (h < 0 || b < 0) {
            state.SkipWithError("a program failed (TALMO_BENCH_VERBOSE=1 shows why)");
            break;
        }
        state.SetIterationTime(h);
        hostTotal += h;
        bareTotal += b;
    }
    const double n = double(state.iterations());
    state.counters["talmo_print_ms"] = n > 0 ? 1000 * hostTotal / n : 0;
    state.counters["bare_dialog_ms"] = n > 0 ? 1000 * bareTotal / n : 0;
    std::system(("rm -rf " + std::string(home)).c_str());
}
BENCHMARK(SaveTicketBesideBareDialog)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

} // namespace
