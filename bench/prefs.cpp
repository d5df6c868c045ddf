// The preferences store's costs: serialising and reading a paper library of realistic size,
// and the atomic replacement of its file (which is dominated by the two flushes to disk).
#include "settings/settings.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

using namespace talmo;

pl::DictPtr stockLibrary(int entries)
{
    auto library = pl::makeDict();
    auto order = pl::makeArray();
    for (int i = 0; i < entries; ++i) {
        auto stock = pl::makeDict();
        const std::string name = "Cover 80 lb <" + std::to_string(i) + "> & gloss";
        stock->setString("Name", name);
        stock->setInt("Weight", 216 + i);
        stock->setInt("WidthHmm", 21000);
        stock->setInt("HeightHmm", 29700);
        stock->setReal("Opacity", 0.93);
        stock->setBool("Coated", i % 2 == 0);
        stock->setString("Notes", std::string(200, 'n'));
        library->set(name, stock);
        order->append(pl::makeString(name));
    }
    auto root = pl::makeDict();
    root->set("StockLibrary", library);
    root->set("StockLibraryOrder", order);
    return root;
}

void BM_WritePlist(benchmark::State& state)
{
    const auto root = stockLibrary(static_cast<int>(state.range(0)));
    size_t bytes = 0;
    for (auto _ : state) {
        std::string xml = pl::writePlist(root);
        bytes = xml.size();
        benchmark::DoNotOptimize(xml);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_WritePlist)->Arg(10)->Arg(500);

void BM_ReadPlist(benchmark::State& state)
{
    const std::string xml = pl::writePlist(stockLibrary(static_cast<int>(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(pl::readPlist(xml));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * xml.size()));
}
BENCHMARK(BM_ReadPlist)->Arg(10)->Arg(500);

void BM_WriteFileAtomically(benchmark::State& state)
{
    const std::string xml = pl::writePlist(stockLibrary(static_cast<int>(state.range(0))));
    std::string folder = (std::filesystem::temp_directory_path() / "talmo-bench-XXXXXX").string();
    if (!::mkdtemp(folder.data())) {
        state.SkipWithError("no temporary folder");
        return;
    }
    const std::string path = folder + "/com.talmo.print.stocklibrary";
    for (auto _ : state)
        if (!WriteFileAtomically(path, xml, 0600))
            state.SkipWithError("write failed");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * xml.size()));
    std::filesystem::remove_all(folder);
}
BENCHMARK(BM_WriteFileAtomically)->Arg(10)->Arg(500)->Unit(benchmark::kMillisecond);

} // namespace
