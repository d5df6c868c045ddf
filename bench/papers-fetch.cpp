// Whole-process time of fetching a printer's paper list: `talmo papers fetch` against
// `ipptool` sending the same Get-Printer-Attributes, both from a loopback ippeveprinter
// declaring 31 and 500 papers. Output goes to /dev/null; each iteration is one process.
#include "testing/loopback-servers/loopback-servers.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using talmo::test::IppEvePrinter;

// One printer per attributes file, started on first use and stopped at exit.
IppEvePrinter* printerFor(const std::string& conf)
{
    static std::map<std::string, std::unique_ptr<IppEvePrinter>> printers;
    auto& p = printers[conf];
    if (!p) {
        p = std::make_unique<IppEvePrinter>();
        const std::string why = p->start(std::string(TALMO_SOURCE_DIR) + "/tests/paperlib/data/" + conf);
        if (!why.empty()) {
            std::fprintf(stderr, "no printer: %s\n", why.c_str());
            p.reset();
            return nullptr;
        }
    }
    return p.get();
}

int runQuiet(std::vector<std::string> argv)
{
    std::vector<char*> args;
    for (auto& a : argv)
        args.push_back(a.data());
    args.push_back(nullptr);
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
    return WIFEXITED(st) ? WEXITSTATUS(st) : -1;
}

// The same request as the fetch, for ipptool.
const std::string& ipptoolTest()
{
    static const std::string path = [] {
        const std::string p = "/tmp/talmo-bench-papers-" + std::to_string(::getpid()) + ".test";
        if (FILE* f = std::fopen(p.c_str(), "w")) {
            std::fputs("{\nOPERATION Get-Printer-Attributes\nGROUP operation-attributes-tag\n"
                       "ATTR charset attributes-charset utf-8\nATTR naturalLanguage attributes-natural-language en\n"
                       "ATTR uri printer-uri $uri\nATTR mimeMediaType document-format application/octet-stream\n"
                       "ATTR keyword requested-attributes media-col-database\nSTATUS successful-ok\n}\n",
                       f);
            std::fclose(f);
        }
        std::atexit([] { std::remove(ipptoolTest().c_str()); });
        return p;
    }();
    return path;
}

void fetchWith(benchmark::State& state, const std::string& conf, bool talmo)
{
    IppEvePrinter* printer = printerFor(conf);
    if (!printer) {
        state.SkipWithError("ippeveprinter cannot run here");
        return;
    }
    const std::vector<std::string> argv =
        talmo ? std::vector<std::string>{TALMO_CLI, "papers", "fetch", printer->address()}
              : std::vector<std::string>{"/usr/bin/ipptool", "-T", "15", "ipp://" + printer->address() + "/",
                                         ipptoolTest()};
    // ipptool also checks the answer against RFC 8011 and exits 1 for the "media-key" keywords
    // with blanks that printers send; it has read the whole answer by then.
    const int accepted = talmo ? 0 : 1;
    for (auto _ : state)
        if (const int rc = runQuiet(argv); rc != 0 && rc != accepted) {
            state.SkipWithError("the fetch failed");
            return;
        }
}

void BM_TalmoFetch30(benchmark::State& s) { fetchWith(s, "papers-30.conf", true); }
void BM_IpptoolFetch30(benchmark::State& s) { fetchWith(s, "papers-30.conf", false); }
void BM_TalmoFetch500(benchmark::State& s) { fetchWith(s, "papers-500.conf", true); }
void BM_IpptoolFetch500(benchmark::State& s) { fetchWith(s, "papers-500.conf", false); }

BENCHMARK(BM_TalmoFetch30)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_IpptoolFetch30)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TalmoFetch500)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_IpptoolFetch500)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
