// The library table with 2,000 papers: every entry rebuilt from its dictionary (and validated)
// is the baseline; filling the model adds the cell texts and the sort, showing adds one paint of
// the visible rows. The model's cost should stay a small multiple of the baseline, and the paint
// should not grow with the row count.
#include "panels/dialogs/named-paper-model_p.h"
#include "toolkit/toolkit.h"

#include <QApplication>
#include <QHeaderView>
#include <QTableView>

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

using namespace talmo;

// A detached list of `n` named papers with varied attributes, as a large shop keeps them.
std::unique_ptr<StockLibraryList> papers(int n)
{
    auto list = std::make_unique<StockLibraryList>(true);
    constexpr int32_t sizes[] = {1, 2, 3, 4, 5, 15, 18};
    constexpr int32_t colors[] = {1, 2, 3, 4, 5, 9, 11, 12};
    for (int i = 0; i < n; ++i) {
        Stock s;
        s.setCustomName("Paper " + std::to_string((i * 7919) % n));
        s.setSize(sizes[i % 7]);
        s.setColor(colors[i % 8]);
        s.setType(1 + i % 3);
        s.setWeight(60 + (i * 13) % 260);
        s.setSidesCoated(1 + i % 3);
        s.setDescription("Shelf " + std::to_string(i % 40));
        StockLibrary e;
        e.setStock(s);
        e.setName(*s.customName());
        list->add(&e);
    }
    return list;
}

const Bundle& bundle()
{
    static const Bundle b = *Bundle::open(TALMO_BUNDLE_PATH);
    return b;
}

void BM_BuildEntries(benchmark::State& state)
{
    const auto list = papers(int(state.range(0)));
    for (auto _ : state) {
        int64_t sum = 0;
        for (const auto& [uuid, value] : *list->stockList()) {
            const StockLibrary entry(pl::as<pl::Dictionary>(value));
            sum += entry.status();
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BuildEntries)->Arg(2000)->Unit(benchmark::kMillisecond);

void BM_FillTable(benchmark::State& state)
{
    const auto list = papers(int(state.range(0)));
    NamedPaperTableModel model(bundle());
    for (auto _ : state)
        model.fill(list.get());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FillTable)->Arg(2000)->Unit(benchmark::kMillisecond);

void BM_FillAndShowTable(benchmark::State& state)
{
    const auto list = papers(int(state.range(0)));
    NamedPaperTableModel model(bundle());
    QTableView view;
    view.setModel(&model);
    view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view.resize(780, 360);
    view.show();
    for (auto _ : state) {
        model.fill(list.get());
        view.viewport()->repaint();
        QApplication::processEvents();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FillAndShowTable)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond);

// A click on the weight column's title: 2,000 rows sorted by "90 g/m²" texts by value.
void BM_SortByWeight(benchmark::State& state)
{
    const auto list = papers(int(state.range(0)));
    NamedPaperTableModel model(bundle());
    model.fill(list.get());
    int order = 0;
    for (auto _ : state)
        model.sort(NamedPaperColumnIndex(kStockColumnWeight), (order++ & 1) ? Qt::DescendingOrder : Qt::AscendingOrder);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SortByWeight)->Arg(2000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
