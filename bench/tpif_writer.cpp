// TPIF writer throughput on a large job: 10,000 exception pages (each with a stock, colour
// options and an image shift) and 10,000 inserts, written to /dev/null through the real sink.
// The bound is the same byte count written with plain fputs of lines of the same average size.
#include "tpif/tpif.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

namespace {

using namespace talmo;

pl::DictPtr bigTicket()
{
    auto t = pl::makeDict();
    auto options = pl::makeDict();
    options->setBool("TPIFOptionAll", true);
    t->set("com.talmo.print.TPIFOptions", options);
    t->setString("com.talmo.print.JobNotesJobName", "Catalogue 2027 & price list");
    auto exceptions = pl::makeArray();
    auto inserts = pl::makeArray();
    for (int i = 0; i < 10000; ++i) {
        auto stock = pl::makeDict();
        stock->setInt("Size", 4);
        stock->setInt("Type", 1);
        stock->setInt("Color", 1 + i % 13);
        stock->setInt("Weight", 90 + i % 5 * 30);
        stock->setString("Description", "Coated <silk> stock #" + std::to_string(i));
        stock->setInt("SidesCoated", 3);
        stock->setInt("kCoatingType", 2);

        auto color = pl::makeDict();
        color->setInt("FCLightness", i % 21 - 10);
        color->setInt("FCContrast", 5);
        color->setInt("FCTrapping", 1);
        color->setInt("FCTrappingFastDirection", 4);
        color->setString("FCTRC", "Press curve & proof");
        color->setInt("RGBImagesProfile", 4);
        color->setInt("CMYKTextAndGraphicsProfile", 2);
        color->setInt("ImageRendering", 4);

        auto shift = pl::makeDict();
        shift->setInt("Option", 1);
        shift->setInt("Inches", 1);
        shift->setBool("FullPrecision", true);
        shift->setInt("X1", 254);
        shift->setInt("Y1", -127);

        auto page = pl::makeDict();
        page->setInt("StartPage", i * 3 + 1);
        page->set("Stock", stock);
        page->setInt("EndPage", i * 3 + 2);
        page->set("com.talmo.print.ImageShiftOptionsPage", shift);
        page->setInt("SidesImaged", 2);
        page->set("FullColorOptionsPage", color);
        page->setInt("HalftoneScreen", 7);
        exceptions->append(page);

        auto insert = pl::makeDict();
        insert->setInt("StartPage", i * 3);
        insert->set("Stock", pl::deepCopy(stock));
        insert->setInt("Quantity", 1);
        inserts->append(insert);
    }
    t->set("com.talmo.print.SpecialPages.ExceptionList", exceptions);
    t->set("com.talmo.print.SpecialPages.InsertList", inserts);
    return t;
}

struct Fixture {
    pl::DictPtr ticket = bigTicket();
    FILE* devnull = std::fopen("/dev/null", "w");
    size_t bytes = 0;
    size_t lines = 0;
    Fixture()
    {
        tpif_errfp = devnull;
        std::string doc;
        writeData sink{&doc, [](void* c, const char* text, size_t) { *static_cast<std::string*>(c) += text; }};
        WriteTPIFToSink(&sink, ticket);
        bytes = doc.size();
        for (char c : doc)
            lines += c == '\n';
    }
};

Fixture& fixture()
{
    static Fixture f;
    return f;
}

void BM_WriteTPIF(benchmark::State& state)
{
    Fixture& f = fixture();
    for (auto _ : state)
        WriteTPIF(f.devnull, f.ticket);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.bytes));
    state.counters["doc_bytes"] = static_cast<double>(f.bytes);
}
BENCHMARK(BM_WriteTPIF)->Unit(benchmark::kMillisecond);

// The bound: the same number of bytes as fputs of equal-sized lines.
void BM_FputsBound(benchmark::State& state)
{
    Fixture& f = fixture();
    const size_t lineSize = f.bytes / f.lines;
    const std::string line(lineSize - 1, 'x');
    const std::string text = line + "\n";
    for (auto _ : state)
        for (size_t i = 0; i < f.lines; ++i)
            std::fputs(text.c_str(), f.devnull);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.lines * text.size()));
}
BENCHMARK(BM_FputsBound)->Unit(benchmark::kMillisecond);

} // namespace
