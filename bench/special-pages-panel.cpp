// The inserts dialog's "5-" (99,995 inserts) from OK to the print settings ticket, beside the same
// inserts added straight to an InsertList and written the same way: the dialog's share should stay
// under the model's own cost (goal: at most twice the direct path). Then the list view over those
// 99,995 rows: shown, scrolled to the end and repainted (goal: under 200 ms).
#include "panels/specialpages/specialpages-dialogs.h"
#include "panels/specialpages/specialpages-model.h"
#include "toolkit/toolkit.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

#include <cstdlib>

namespace {

using namespace talmo;
using namespace talmo::specialpages;

constexpr long kPages = 99995; // "5-": pages 5 to 99999

const Bundle& bundle()
{
    static const std::optional<Bundle> b = Bundle::open(TALMO_BUNDLE_PATH);
    if (!b) {
        std::fprintf(stderr, "cannot open the bundle %s\n", TALMO_BUNDLE_PATH);
        std::exit(1);
    }
    return *b;
}

// Types "5-" into the dialog's page field and presses OK, as a user does.
void BM_InsertsDialogOKToTicket(benchmark::State& st)
{
    for (auto _ : st) {
        SpecialPagesState state;
        Ticket ticket;
        QTimer::singleShot(0, [] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            GetControlByID<QLineEdit>(dialog, {kInsertsSignature, 3})->insert("5-");
            GetControlByID<QPushButton>(dialog, {kInsertsSignature, kDialogOKID})->click();
        });
        const OSStatus status = RunModalInsertsDialog(bundle(), DialogMode::Add, &state, nullptr);
        SyncSpecialPages(&state, &ticket, false);
        if (status != noErr || state.inserts.count() != kPages)
            st.SkipWithError("the dialog did not add 99,995 inserts");
        benchmark::DoNotOptimize(ticket);
    }
    st.SetItemsProcessed(st.iterations() * kPages);
}
BENCHMARK(BM_InsertsDialogOKToTicket)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same inserts made one by one and added to the list in one batch.
void BM_InsertListDirectToTicket(benchmark::State& st)
{
    for (auto _ : st) {
        SpecialPagesState state;
        Ticket ticket;
        std::vector<std::unique_ptr<Insert>> made;
        made.reserve(kPages);
        Insert insert;
        DefaultStock(insert.stock(), kJobContextInserts);
        for (int32_t page = 5; page <= 99999; ++page) {
            insert.setStartPage(page);
            made.push_back(std::make_unique<Insert>(insert));
        }
        state.inserts.add(made);
        SyncSpecialPages(&state, &ticket, false);
        benchmark::DoNotOptimize(ticket);
    }
    st.SetItemsProcessed(st.iterations() * kPages);
}
BENCHMARK(BM_InsertListDirectToTicket)->Unit(benchmark::kMillisecond)->UseRealTime();

// A new view over the 99,995 rows shown and painted, then scrolled to the last row and painted.
void BM_ShowLongList(benchmark::State& st)
{
    SpecialPagesState state;
    InsertsDialogInput input = InsertsDialogDefaults();
    input.pageText = "5-";
    InsertsDialogOK(&state, DialogMode::Add, nullptr, input);
    const StockTextSource texts = SpecialPagesTexts(&bundle());
    for (auto _ : st) {
        QTableView view;
        view.resize(540, 360);
        auto* model = new SpecialPagesModel(&state, texts, &view);
        view.verticalHeader()->hide();
        view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        view.horizontalHeader()->setStretchLastSection(true);
        view.setModel(model);
        view.show();
        QCoreApplication::processEvents();
        view.viewport()->repaint();
        view.scrollToBottom();
        QCoreApplication::processEvents();
        view.viewport()->repaint();
        if (model->rowCount() != kPages)
            st.SkipWithError("wrong row count");
    }
}
BENCHMARK(BM_ShowLongList)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
