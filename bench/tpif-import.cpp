// TPIF import speed: documents of 1,000 and 10,000 page overrides (written by the writer), each
// imported in full beside a bare xmlReadFile of the same file in the same run; the goal is an
// import within 3x of the parse alone, growing linearly. Then every hostile file of
// tests/tpif/data/malformed/: time per refusal and the growth of the process's peak memory
// (these run first, before any large document raises the peak).
#include "device/device.h"
#include "tpif/tpif.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <sys/resource.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace {

using namespace talmo;

void loadProfile()
{
    static const bool loaded = TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist");
    if (!loaded)
        std::abort();
}

long peakKiB()
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

// A ticket of `pages` exception ranges, each with a stock, colour options and an image shift.
std::string writeDocument(int pages)
{
    auto t = pl::makeDict();
    auto options = pl::makeDict();
    options->setBool("TPIFOptionAll", true);
    t->set("com.talmo.print.TPIFOptions", options);
    t->setString("com.talmo.print.JobNotesJobName", "Catalogue 2027");
    auto exceptions = pl::makeArray();
    for (int i = 0; i < pages; ++i) {
        auto stock = pl::makeDict();
        stock->setInt("Size", 4);
        stock->setInt("Type", 1);
        stock->setInt("Color", 1 + i % 13);
        stock->setInt("Weight", 90 + i % 5 * 30);
        stock->setString("Description", "Coated stock #" + std::to_string(i));
        stock->setInt("SidesCoated", 3);
        stock->setInt("kCoatingType", 2);
        auto color = pl::makeDict();
        color->setInt("FCLightness", i % 21 - 10);
        color->setInt("FCTrapping", 1);
        color->setString("FCTRC", "Press curve");
        auto shift = pl::makeDict();
        shift->setInt("X1", i % 100);
        shift->setInt("Y1", -(i % 50));
        auto e = pl::makeDict();
        e->setInt("StartPage", 2 * i + 1);
        e->setInt("EndPage", 2 * i + 2);
        e->setInt("SidesImaged", 2);
        e->set("Stock", stock);
        e->set("FullColorOptionsPage", color);
        e->set("com.talmo.print.ImageShiftOptionsPage", shift);
        exceptions->append(e);
    }
    t->set("com.talmo.print.SpecialPages.ExceptionList", exceptions);
    const auto path = std::filesystem::temp_directory_path() / ("bench-tpif-import-" + std::to_string(pages) + ".tpif");
    FILE* f = std::fopen(path.c_str(), "w");
    std::FILE* quiet = std::fopen("/dev/null", "w");
    tpif_errfp = quiet;
    WriteTPIF(f, t);
    tpif_errfp = nullptr;
    tpif_ofp = nullptr;
    std::fclose(quiet);
    std::fclose(f);
    return path.string();
}

const std::string& document(int pages)
{
    static std::map<int, std::string> paths;
    auto it = paths.find(pages);
    if (it == paths.end())
        it = paths.emplace(pages, writeDocument(pages)).first;
    return it->second;
}

void BM_HostileFile(benchmark::State& state, std::string path)
{
    loadProfile();
    const long before = peakKiB();
    for (auto _ : state) {
        auto d = pl::makeDict();
        if (TPIFImportFileAtPath(path, d) != kImportFileFailed)
            state.SkipWithError("a hostile file was not refused");
    }
    state.counters["peak_growth_KiB"] = static_cast<double>(peakKiB() - before);
}

void BM_ParseOnly(benchmark::State& state)
{
    const std::string& path = document(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadFile(path.c_str(), nullptr, 0);
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(std::filesystem::file_size(path)));
}

void BM_Import(benchmark::State& state)
{
    loadProfile();
    const std::string& path = document(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto d = pl::makeDict();
        if (TPIFImportFileAtPath(path, d) != noErr)
            state.SkipWithError("import failed");
        benchmark::DoNotOptimize(d);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(std::filesystem::file_size(path)));
}

const bool registered = [] {
    std::vector<std::string> files;
    for (const auto& e :
         std::filesystem::directory_iterator(std::string(TALMO_SOURCE_DIR) + "/tests/tpif/data/malformed"))
        files.push_back(e.path().string());
    std::sort(files.begin(), files.end());
    for (const auto& f : files)
        benchmark::RegisterBenchmark(("BM_HostileFile/" + std::filesystem::path(f).stem().string()).c_str(),
                                     BM_HostileFile, f)
            ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_ParseOnly", BM_ParseOnly)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_Import", BM_Import)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
