// The inserts dialog's "5-": one insert after every page from 5 to 99999. Parsing the text,
// making the inserts, adding them to the list and writing the list to the ticket must grow as
// n log n; items_per_second stays about flat across the sizes when it does. Also a random
// order batch of exception ranges through the list's overlap walk.
#include "ticket/ticket.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>

namespace {

using namespace talmo;

// Arg: number of inserts. 99,995 is "5-" itself; the others are "5-N" texts of that size.
void BM_InsertsDialogToTicket(benchmark::State& state)
{
    const auto n = static_cast<int32_t>(state.range(0));
    InsertsDialogInput input = InsertsDialogDefaults();
    input.pageText = n == 99995 ? std::string("5-") : "5-" + std::to_string(4 + n);
    for (auto _ : state) {
        SpecialPagesState pages;
        const OSStatus status = InsertsDialogOK(&pages, DialogMode::Add, nullptr, input);
        Ticket ticket;
        WriteSpecialPagesToTicket(&pages, &ticket);
        if (status != noErr || pages.inserts.count() != n)
            state.SkipWithError("wrong insert count");
        benchmark::DoNotOptimize(ticket);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_InsertsDialogToTicket)->Arg(1000)->Arg(10000)->Arg(99995)->Unit(benchmark::kMillisecond);

// The same batch read back from the ticket: every dictionary rebuilt and added in one batch.
void BM_InsertsFromTicket(benchmark::State& state)
{
    const auto n = static_cast<int32_t>(state.range(0));
    SpecialPagesState pages;
    InsertsDialogInput input = InsertsDialogDefaults();
    input.pageText = n == 99995 ? std::string("5-") : "5-" + std::to_string(4 + n);
    InsertsDialogOK(&pages, DialogMode::Add, nullptr, input);
    Ticket ticket;
    WriteSpecialPagesToTicket(&pages, &ticket);
    for (auto _ : state) {
        SpecialPagesState read;
        ReadSpecialPagesFromTicket(&read, &ticket);
        benchmark::DoNotOptimize(read.inserts.count());
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_InsertsFromTicket)->Arg(1000)->Arg(10000)->Arg(99995)->Unit(benchmark::kMillisecond);

// Arg: number of ranges, each 1-20 pages long at a random start in 1..10n (the same density of
// overlaps at every size; 10,000 ranges span the whole 1..99999), added in one batch in random
// order; later ranges trim, split and replace earlier ones.
void BM_ExceptionRandomAdd(benchmark::State& state)
{
    const auto n = static_cast<size_t>(state.range(0));
    std::mt19937 rng(7);
    std::uniform_int_distribution<int32_t> start(1, static_cast<int32_t>(10 * n));
    std::uniform_int_distribution<int32_t> length(1, 20);
    std::vector<std::unique_ptr<ExceptionPage>> ranges;
    for (size_t i = 0; i < n; ++i) {
        auto p = std::make_unique<ExceptionPage>();
        p->setStartPage(start(rng));
        p->setEndPage(p->startPage() + length(rng) - 1);
        p->setPlex(int32_t(i % 3) + 1);
        ranges.push_back(std::move(p));
    }
    for (auto _ : state) {
        ExceptionPageList list;
        list.add(ranges);
        benchmark::DoNotOptimize(list.count());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_ExceptionRandomAdd)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// The same ranges added one per call, as the exceptions dialog adds them.
void BM_ExceptionRandomAddOneByOne(benchmark::State& state)
{
    const auto n = static_cast<size_t>(state.range(0));
    std::mt19937 rng(7);
    std::uniform_int_distribution<int32_t> start(1, static_cast<int32_t>(10 * n));
    std::uniform_int_distribution<int32_t> length(1, 20);
    std::vector<std::unique_ptr<ExceptionPage>> ranges;
    for (size_t i = 0; i < n; ++i) {
        auto p = std::make_unique<ExceptionPage>();
        p->setStartPage(start(rng));
        p->setEndPage(p->startPage() + length(rng) - 1);
        ranges.push_back(std::move(p));
    }
    for (auto _ : state) {
        ExceptionPageList list;
        for (const auto& p : ranges)
            list.add(std::vector<const SpecialPage*>{p.get()});
        benchmark::DoNotOptimize(list.count());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_ExceptionRandomAddOneByOne)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace
