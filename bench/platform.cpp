// The platform pieces every dialog call leans on: reading the bundle's string table and
// reading ticket items (each read is a deep copy).
#include "platform/platform.h"

#include <benchmark/benchmark.h>

using namespace talmo;

static void StringsTableParse(benchmark::State& state)
{
    std::string table;
    for (int i = 0; i < state.range(0); ++i)
        table += formatStringsEntry("Key number " + std::to_string(i),
                                    "Text with \"quotes\" and \\U20AC " + std::to_string(i)) +
                 "\n";
    for (auto _ : state)
        benchmark::DoNotOptimize(parseStringsTable(table));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(table.size()));
}
BENCHMARK(StringsTableParse)->Arg(100)->Arg(2000);

static void TicketGetDictionary(benchmark::State& state)
{
    Ticket t;
    auto list = pl::makeArray();
    for (int i = 0; i < state.range(0); ++i) {
        auto d = pl::makeDict();
        d->setInt("PageFrom", i);
        d->setString("StockName", "Paper " + std::to_string(i));
        list->append(d);
    }
    t.set("com.talmo.print.SpecialPages.InsertList", list, "com.talmo.print");
    for (auto _ : state)
        benchmark::DoNotOptimize(t.get("com.talmo.print.SpecialPages.InsertList"));
}
BENCHMARK(TicketGetDictionary)->Arg(10)->Arg(250);
