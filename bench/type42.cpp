// Type 42 conversion on real fonts from Debian packages (skipped when absent): the conversion
// in process, and whole processes, `talmo type42` beside `ttftotype42` (lcdf-typetools) on
// the same font, output to /dev/null.
#include "marking/marking.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr const char* kDejaVuSans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr const char* kNotoSerifTangut = "/usr/share/fonts/truetype/noto/NotoSerifTangut-Regular.ttf";

std::vector<uint8_t> readFont(const char* path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void convert(benchmark::State& state, const char* path)
{
    const auto font = readFont(path);
    if (font.empty()) {
        state.SkipWithError("font missing");
        return;
    }
    size_t outputSize = 0;
    for (auto _ : state) {
        std::string out;
        auto result = talmo::convertTTFtoPS42(font, "Bench", out);
        benchmark::DoNotOptimize(result);
        outputSize = out.size();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(font.size()));
    state.counters["output_bytes"] = double(outputSize);
}

// Exit status of the program, run with its output to /dev/null; -1 when it cannot run.
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
        ::dup2(null, 2);
        ::execv(args[0], args.data());
        ::_exit(127);
    }
    int st = 0;
    ::waitpid(pid, &st, 0);
    return WIFEXITED(st) ? WEXITSTATUS(st) : -1;
}

void process(benchmark::State& state, const char* program, const char* font)
{
    if (::access(program, X_OK) != 0 || ::access(font, R_OK) != 0) {
        state.SkipWithError("program or font missing");
        return;
    }
    const std::vector<std::string> argv = std::string(program) == TALMO_CLI
                                              ? std::vector<std::string>{program, "type42", font}
                                              : std::vector<std::string>{program, font};
    for (auto _ : state)
        if (runQuiet(argv) != 0) {
            state.SkipWithError("the conversion failed");
            return;
        }
}

BENCHMARK_CAPTURE(convert, DejaVuSans, kDejaVuSans)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(convert, NotoSerifTangut, kNotoSerifTangut)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(process, TalmoDejaVuSans, TALMO_CLI, kDejaVuSans)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(process, Ttftotype42DejaVuSans, "/usr/bin/ttftotype42", kDejaVuSans)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(process, TalmoNotoSerifTangut, TALMO_CLI, kNotoSerifTangut)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(process, Ttftotype42NotoSerifTangut, "/usr/bin/ttftotype42", kNotoSerifTangut)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
