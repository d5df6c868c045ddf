// Type 42 conversion speed on real fonts from Debian packages (skipped when absent).
#include "marking/marking.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <vector>

namespace {

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

BENCHMARK_CAPTURE(convert, DejaVuSans, "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(convert, NotoSerifTangut, "/usr/share/fonts/truetype/noto/NotoSerifTangut-Regular.ttf")
    ->Unit(benchmark::kMillisecond);

} // namespace
