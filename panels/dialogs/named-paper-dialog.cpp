#include "panels/dialogs/named-paper-dialog.h"

#include "panels/dialogs/named-paper-model_p.h"
#include "panels/dialogs/stock-dialogs.h"
#include "panels/dialogs/stock-popup.h"
#include "toolkit/toolkit.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>

#include <algorithm>
#include <array>
#include <cstdio>

namespace talmo {

namespace {

constexpr uint32_t kLibrarySignature = FourCC("NPap");
constexpr uint32_t kPrefsSignature = FourCC("NPpr");
constexpr uint32_t kEditorSignature = FourCC("NPed");
constexpr uint32_t kCustomNameSignature = FourCC("NPcn");

constexpr const char* kLibraryHelpPage = "paper_output/paper/db_named_paper_d.htm";
constexpr const char* kPreferencesHelpPage = "paper_output/paper/db_preferences_d.htm";
constexpr const char* kCustomNameHelpPage = "paper_output/paper/db_new_custom_size_dm.htm";
constexpr const char* kRefreshPicture = "ButtonGraphic_Refresh.gif";

template <class T> T* find(QWidget* root, uint32_t signature, int32_t id)
{
    return GetControlByID<T>(root, {signature, id});
}

QDialog* loadDialog(const Bundle& bundle, const char* window, QWidget* parent, std::unique_ptr<QWidget>& holder)
{
    holder = CreateWindowFromDescription(bundle, "NamedPaper", window, parent);
    auto* dialog = qobject_cast<QDialog*>(holder.get());
    if (dialog)
        LocalizeDescription(bundle, dialog);
    return dialog;
}

void connectHelp(const Bundle& bundle, QAbstractButton* help, const char* page)
{
    if (help)
        QObject::connect(help, &QAbstractButton::clicked, help,
                         [&bundle, page] { DisplayHelp(bundle, QString::fromUtf8(page), QString()); });
}

// The paper editor of New, Copy and Edit: the name, the paper's attributes through the stock
// pop-up (whose every choice detaches a paper from its name, so the name is kept apart and put
// back on OK), its description and comment.
bool RunModalPaperEditor(QWidget* parent, const Bundle& bundle, Stock& stock)
{
    std::unique_ptr<QWidget> holder;
    QDialog* d = loadDialog(bundle, "Editor", parent, holder);
    auto* name = d ? find<QLineEdit>(d, kEditorSignature, 1) : nullptr;
    auto* nameOnly = d ? find<QCheckBox>(d, kEditorSignature, 2) : nullptr;
    StockPopup* paper = d ? AdoptStockPopup(d, {kEditorSignature, 3}, bundle, kJobContextJob) : nullptr;
    auto* description = d ? find<QLineEdit>(d, kEditorSignature, 12) : nullptr;
    auto* comment = d ? find<QLineEdit>(d, kEditorSignature, 13) : nullptr;
    auto* ok = d ? find<QPushButton>(d, kEditorSignature, 20) : nullptr;
    auto* cancel = d ? find<QPushButton>(d, kEditorSignature, 21) : nullptr;
    if (!name || !nameOnly || !paper || !description || !comment || !ok || !cancel)
        return false;
    paper->setDialogs(MakeStockCommandDialogs(d, bundle, nullptr));
    paper->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    Stock attributes = stock;
    attributes.setCustomName(std::string());
    attributes.setCustomNameOnly(false);
    paper->setStock(attributes);
    name->setText(QString::fromStdString(stock.customName().value_or("")));
    name->setMinimumWidth(name->fontMetrics().averageCharWidth() * 36);
    nameOnly->setChecked(stock.customNameOnly());
    description->setText(QString::fromStdString(stock.description().value_or("")));
    comment->setText(QString::fromStdString(stock.comment().value_or("")));
    description->setMaxLength(kStockDescriptionLimit);
    // "Description..." of the pop-up and the field show the same text.
    QObject::connect(paper, &StockPopup::stockChanged, d, [paper, description] {
        description->setText(QString::fromStdString(paper->stock().description().value_or("")));
    });
    QObject::connect(cancel, &QPushButton::clicked, d, &QDialog::reject);
    QObject::connect(ok, &QPushButton::clicked, d, [d, name] {
        if (name->text().trimmed().isEmpty()) {
            QApplication::beep();
            name->setFocus();
            return;
        }
        d->accept();
    });
    if (d->exec() != QDialog::Accepted)
        return false;
    Stock edited = paper->stock();
    edited.setCustomName(name->text().trimmed().toStdString());
    edited.setCustomNameOnly(nameOnly->isChecked());
    edited.setDescription(description->text().toStdString());
    edited.setComment(comment->text().toStdString());
    stock = edited;
    return true;
}

bool RunModalLibraryPreferences(QWidget* parent, const Bundle& bundle, NamedPaperPreferences& prefs)
{
    std::unique_ptr<QWidget> holder;
    QDialog* d = loadDialog(bundle, "Preferences", parent, holder);
    auto* list = d ? find<QComboBox>(d, kPrefsSignature, 1) : nullptr;
    auto* names = d ? find<QComboBox>(d, kPrefsSignature, 2) : nullptr;
    auto* values = d ? find<QCheckBox>(d, kPrefsSignature, 30) : nullptr;
    auto* attributes = d ? find<QCheckBox>(d, kPrefsSignature, 31) : nullptr;
    auto* ok = d ? find<QPushButton>(d, kPrefsSignature, 40) : nullptr;
    auto* cancel = d ? find<QPushButton>(d, kPrefsSignature, 41) : nullptr;
    if (!list || !names || !values || !attributes || !ok || !cancel)
        return false;
    std::array<QCheckBox*, kNamedPaperOptionalColumns.size()> columns{};
    for (size_t i = 0; i < columns.size(); ++i)
        if (!(columns[i] = find<QCheckBox>(d, kPrefsSignature, int32_t(10 + i))))
            return false;
    list->addItem(LocalizedText(bundle, "My Paper List"));
    list->addItem(LocalizedText(bundle, "Printer Paper List"));
    list->setCurrentIndex(prefs.defaultList);
    names->addItem(LocalizedText(bundle, "Allow Duplicate Names"));
    names->addItem(LocalizedText(bundle, "Force Unique Names"));
    names->setCurrentIndex(prefs.forceUniqueNames ? 1 : 0);
    for (size_t i = 0; i < columns.size(); ++i)
        columns[i]->setChecked(prefs.columnVisible(kNamedPaperOptionalColumns[i]));
    values->setChecked(prefs.showUnsupportedValues);
    attributes->setChecked(prefs.showUnsupportedAttributes);
    connectHelp(bundle, find<QAbstractButton>(d, kPrefsSignature, 42), kPreferencesHelpPage);
    QObject::connect(ok, &QPushButton::clicked, d, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, d, &QDialog::reject);
    if (d->exec() != QDialog::Accepted)
        return false;
    prefs.defaultList = NamedPaperPreferences::List(list->currentIndex() == 1);
    prefs.forceUniqueNames = names->currentIndex() == 1;
    prefs.visibleColumns.clear();
    for (size_t i = 0; i < columns.size(); ++i)
        if (columns[i]->isChecked())
            prefs.visibleColumns.emplace_back(kNamedPaperOptionalColumns[i]);
    prefs.showUnsupportedValues = values->isChecked();
    prefs.showUnsupportedAttributes = attributes->isChecked();
    return true;
}

// The library window and what it shows; lives for one run of the dialog.
class NamedPaperDialog final : public StockLibraryTable {
public:
    NamedPaperDialog(QWidget* parent, const Bundle& bundle, const NamedPaperDialogSources& sources)
        : bundle_(bundle), sources_(sources)
    {
        dialog_ = loadDialog(bundle, "Library", parent, holder_);
        if (!dialog_)
            return;
        listPopup_ = find<QComboBox>(dialog_, kLibrarySignature, 1);
        refresh_ = find<QToolButton>(dialog_, kLibrarySignature, 2);
        message_ = find<QLabel>(dialog_, kLibrarySignature, 3);
        table_ = find<QTableView>(dialog_, kLibrarySignature, 4);
        count_ = find<QLabel>(dialog_, kLibrarySignature, 5);
        for (size_t i = 0; i < buttons_.size(); ++i)
            buttons_[i] = find<QPushButton>(dialog_, kLibrarySignature, int32_t(kNew + i));
    }

    bool ready() const
    {
        return dialog_ && listPopup_ && refresh_ && message_ && table_ && count_ &&
               std::all_of(buttons_.begin(), buttons_.end(), [](auto* b) { return b != nullptr; });
    }

    std::optional<Stock> run()
    {
        prefs_ = ReadNamedPaperPreferences();
        markStockStatus(user_, sources_.jobStock, sources_.pageStocks);
        setUp();
        showList(prefs_.defaultList == NamedPaperPreferences::PrinterPaperList);
        stored_ = StoredColumnWidths();
        setColumnWidths(*this);
        if (!showingPrinter_)
            setSelectedRow(*this);
        if (sources_.lastOutcome) {
            if (auto outcome = sources_.lastOutcome())
                takeOutcome(*outcome);
            else
                startFetch(); // nothing asked yet: ask now, the table fills when it answers
        } else {
            showMessage(LocalizedText(bundle_, "NamedPaperCommError"));
        }
        dialog_->exec();
        storeColumnWidths(*this);
        if (const auto uuid = selectedRow(); uuid && !showingPrinter_)
            storeSelectedRow(*uuid);
        return chosen_;
    }

    // StockLibraryTable: hidden columns keep the width they were given.
    std::vector<StockColumnWidth> columnWidths() const override
    {
        std::vector<StockColumnWidth> out;
        for (size_t i = 0; i < kNamedPaperColumns.size(); ++i) {
            int width = table_->isColumnHidden(int(i)) ? 0 : table_->columnWidth(int(i));
            if (width == 0)
                for (const auto& s : stored_)
                    if (s.column == kNamedPaperColumns[i])
                        width = s.width;
            if (width > 0)
                out.push_back({kNamedPaperColumns[i], int16_t(std::min(width, int(INT16_MAX)))});
        }
        return out;
    }
    void setColumnWidth(uint32_t column, int16_t width) override
    {
        if (const int i = NamedPaperColumnIndex(column); i >= 0 && width > 0)
            table_->setColumnWidth(i, width);
    }
    std::optional<std::string> selectedRow() const override
    {
        const QModelIndexList rows = table_->selectionModel()->selectedRows();
        if (rows.size() != 1)
            return std::nullopt;
        return model_->entry(rows.front().row()).uuid();
    }
    void revealRow(const std::string& uuid) override
    {
        const int row = model_->rowOf(uuid);
        if (row < 0)
            return;
        table_->selectRow(row);
        table_->scrollTo(model_->index(row, 1), QAbstractItemView::PositionAtCenter);
    }

private:
    enum Button { kNew = 10, kCopy, kEdit, kDelete, kAdd, kUse, kPreferences, kClose };
    QPushButton* button(Button b) const { return buttons_[size_t(b - kNew)]; }

    void setUp()
    {
        model_ = new NamedPaperTableModel(bundle_, dialog_);
        table_->setModel(model_);
        table_->verticalHeader()->hide();
        // Fixed row heights: the view never measures 2,000 rows.
        table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + 6);
        table_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Fixed);
        table_->setColumnWidth(0, 24);
        // Starting widths from the titles and a typical cell; stored widths replace them.
        static constexpr std::array<int, 13> kTypicalChars = {0, 18, 16, 9, 10, 8, 10, 12, 10, 12, 8, 18, 18};
        const QFontMetrics header = table_->horizontalHeader()->fontMetrics();
        for (int i = 1; i < int(kTypicalChars.size()); ++i) {
            const int title =
                header.horizontalAdvance(model_->headerData(i, Qt::Horizontal, Qt::DisplayRole).toString()) + 28;
            table_->setColumnWidth(i, std::max(title, table_->fontMetrics().averageCharWidth() * kTypicalChars[i]));
        }
        dialog_->resize(dialog_->sizeHint().expandedTo(QSize(780, 460)));
        table_->horizontalHeader()->setSortIndicator(1, Qt::AscendingOrder);
        table_->setIconSize(QSize(16, 16));
        listPopup_->addItem(LocalizedText(bundle_, "My Paper List"));
        listPopup_->addItem(LocalizedText(bundle_, "Printer Paper List"));
        if (const auto path = bundle_.resourcePath(kRefreshPicture))
            refresh_->setIcon(QIcon(QString::fromStdString(*path)));
        refresh_->setAccessibleName(refresh_->toolTip());
        applyColumns();

        QObject::connect(listPopup_, &QComboBox::activated, dialog_, [this](int i) { showList(i == 1); });
        QObject::connect(refresh_, &QToolButton::clicked, dialog_, [this] { startFetch(); });
        QObject::connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, dialog_,
                         [this] { updateButtons(); });
        QObject::connect(table_, &QTableView::doubleClicked, dialog_, [this] {
            if (!showingPrinter_)
                edit(false);
        });
        QObject::connect(button(kNew), &QPushButton::clicked, dialog_, [this] { newPaper(); });
        QObject::connect(button(kCopy), &QPushButton::clicked, dialog_, [this] { edit(true); });
        QObject::connect(button(kEdit), &QPushButton::clicked, dialog_, [this] { edit(false); });
        QObject::connect(button(kDelete), &QPushButton::clicked, dialog_, [this] { deleteSelected(); });
        QObject::connect(button(kAdd), &QPushButton::clicked, dialog_, [this] { addPrinterPaper(); });
        QObject::connect(button(kUse), &QPushButton::clicked, dialog_, [this] { useInJob(); });
        QObject::connect(button(kPreferences), &QPushButton::clicked, dialog_, [this] { preferences(); });
        QObject::connect(button(kClose), &QPushButton::clicked, dialog_, &QDialog::reject);
        connectHelp(bundle_, find<QAbstractButton>(dialog_, kLibrarySignature, 18), kLibraryHelpPage);
    }

    void applyColumns()
    {
        for (size_t i = 0; i < kNamedPaperOptionalColumns.size(); ++i)
            table_->setColumnHidden(int(i + 2), !prefs_.columnVisible(kNamedPaperOptionalColumns[i]));
    }

    void showList(bool printer)
    {
        showingPrinter_ = printer;
        listPopup_->setCurrentIndex(printer ? 1 : 0);
        for (Button b : {kNew, kCopy, kEdit, kDelete})
            button(b)->setVisible(!printer);
        button(kAdd)->setVisible(printer);
        refresh_->setVisible(printer);
        refill();
    }

    void refill(const std::string& reveal = {})
    {
        if (showingPrinter_)
            model_->fill(printer_.get());
        else
            model_->fill(&user_, !prefs_.showUnsupportedValues, !prefs_.showUnsupportedAttributes);
        if (!reveal.empty())
            revealRow(reveal);
        message_->setVisible(showingPrinter_ && !message_->text().isEmpty());
        updateButtons();
    }

    void updateButtons()
    {
        const int selected = int(table_->selectionModel()->selectedRows().size());
        const QString why = selected == 1 ? QString() : LocalizedText(bundle_, "Named Paper Select Tip");
        for (Button b : {kCopy, kEdit, kAdd, kUse}) {
            button(b)->setEnabled(selected == 1);
            button(b)->setToolTip(why);
        }
        button(kDelete)->setEnabled(selected > 0);
        button(kDelete)->setToolTip(selected > 0 ? QString() : LocalizedText(bundle_, "Named Paper Select Some Tip"));
        count_->setText(FormatLocalized("%d %@/%d %@", {selected, LocalizedText(bundle_, "Selected"),
                                                        model_->rowCount(), LocalizedText(bundle_, "Items")}));
    }

    std::optional<StockLibrary> selectedEntry() const
    {
        const QModelIndexList rows = table_->selectionModel()->selectedRows();
        if (rows.size() != 1)
            return std::nullopt;
        return model_->entry(rows.front().row());
    }

    bool confirmReplace()
    {
        QMessageBox box(QMessageBox::Question, dialog_->windowTitle(),
                        LocalizedText(bundle_, "Replace Named Paper Message"), QMessageBox::NoButton, dialog_);
        QPushButton* replace = box.addButton(LocalizedText(bundle_, "Replace"), QMessageBox::AcceptRole);
        box.setDefaultButton(box.addButton(LocalizedText(bundle_, "Cancel"), QMessageBox::RejectRole));
        box.exec();
        return box.clickedButton() == replace;
    }

    void store(const StockLibrary& entry, const std::string& editing = {})
    {
        const NamedPaperStore outcome = StoreNamedPaper(
            user_, entry, prefs_.forceUniqueNames, [this] { return confirmReplace(); }, editing);
        if (outcome == NamedPaperStore::Cancelled)
            return;
        // Show where the paper went, found by its paper (a replaced entry keeps its own key).
        const std::optional<std::string> uuid = user_.findMatch(entry.stock());
        if (showingPrinter_)
            showList(false);
        refill(uuid.value_or(editing));
    }

    void newPaper()
    {
        Stock stock;
        DefaultStock(stock, kJobContextJob);
        if (RunModalPaperEditor(dialog_, bundle_, stock)) {
            StockLibrary entry;
            entry.setStock(stock);
            store(entry);
        }
    }

    void edit(bool copy)
    {
        auto entry = selectedEntry();
        if (!entry)
            return;
        Stock stock = entry->stock();
        if (!RunModalPaperEditor(dialog_, bundle_, stock))
            return;
        StockLibrary edited;
        edited.setStock(stock);
        edited.setStatus(copy ? kStockEntryPlain : entry->status());
        store(edited, copy ? std::string() : entry->uuid());
    }

    void deleteSelected()
    {
        std::vector<std::string> uuids;
        for (const QModelIndex& i : table_->selectionModel()->selectedRows())
            uuids.push_back(model_->entry(i.row()).uuid());
        for (const std::string& uuid : uuids)
            user_.remove(uuid);
        refill();
    }

    void addPrinterPaper()
    {
        if (auto entry = selectedEntry()) {
            StockLibrary copy;
            copy.setStock(entry->stock());
            store(copy);
        }
    }

    void useInJob()
    {
        auto entry = selectedEntry();
        if (!entry)
            return;
        Stock stock = entry->stock();
        validateAndFixStockEntry(stock);
        // A paper that still stands for its library entry moves to the front of the paper menus.
        if (!showingPrinter_ && stock == entry->stock())
            StockLibraryOrderList().updateOrderList(entry->uuid());
        chosen_ = stock;
        dialog_->accept();
    }

    void preferences()
    {
        NamedPaperPreferences prefs = prefs_;
        if (!RunModalLibraryPreferences(dialog_, bundle_, prefs))
            return;
        prefs_ = prefs;
        WriteNamedPaperPreferences(prefs_);
        applyColumns();
        refill();
    }

    void showMessage(const QString& text)
    {
        message_->setText(text);
        message_->setVisible(showingPrinter_ && !text.isEmpty());
    }

    void startFetch()
    {
        if (!sources_.refresh || fetching_)
            return;
        fetching_ = true;
        refresh_->setEnabled(false);
        showMessage(LocalizedText(bundle_, "Retrieving Printer Paper List"));
        sources_.refresh(dialog_, [this](const PrinterPaperOutcome& outcome) { takeOutcome(outcome); });
    }

    void takeOutcome(const PrinterPaperOutcome& outcome)
    {
        fetching_ = false;
        refresh_->setEnabled(bool(sources_.refresh));
        // A failed fetch keeps what an earlier one brought.
        if (outcome.status == noErr || !printer_)
            printer_ = MakePrinterPaperList(outcome.stocks ? *outcome.stocks : std::vector<Stock>{});
        showMessage(outcome.status == noErr ? QString() : LocalizedText(bundle_, "NamedPaperCommError"));
        if (showingPrinter_)
            refill();
    }

    const Bundle& bundle_;
    const NamedPaperDialogSources& sources_;
    std::unique_ptr<QWidget> holder_;
    QDialog* dialog_ = nullptr;
    QComboBox* listPopup_ = nullptr;
    QToolButton* refresh_ = nullptr;
    QLabel* message_ = nullptr;
    QTableView* table_ = nullptr;
    QLabel* count_ = nullptr;
    std::array<QPushButton*, kClose - kNew + 1> buttons_{};
    NamedPaperTableModel* model_ = nullptr;
    NamedPaperPreferences prefs_;
    StockLibraryList user_;
    std::unique_ptr<StockLibraryList> printer_;
    std::vector<StockColumnWidth> stored_;
    bool showingPrinter_ = false;
    bool fetching_ = false;
    std::optional<Stock> chosen_;
};

} // namespace

struct PrinterPaperFetcher::Channel {
    std::atomic<int> cancel{0};
    PrinterPaperFetcher* owner = nullptr; // main thread only; null once the fetcher is gone
};

PrinterPaperFetcher::PrinterPaperFetcher(std::string address, PrinterStockFetchLimits limits)
    : address_(std::move(address)), limits_(limits), channel_(std::make_shared<Channel>())
{
    channel_->owner = this;
}

std::shared_ptr<PrinterPaperFetcher> PrinterPaperFetcher::forDeviceURI(std::string_view deviceURI)
{
    return std::make_shared<PrinterPaperFetcher>(PrinterHostFromDeviceURI(deviceURI).value_or(std::string()));
}

PrinterPaperFetcher::~PrinterPaperFetcher()
{
    channel_->owner = nullptr;
    channel_->cancel = 1;
    if (worker_.joinable())
        worker_.join();
}

void PrinterPaperFetcher::fetch(QObject* receiver, std::function<void(const PrinterPaperOutcome&)> done)
{
    receiver_ = receiver;
    done_ = std::move(done);
    if (running_)
        return;
    if (worker_.joinable())
        worker_.join(); // it posted its outcome and is ending
    running_ = true;
    worker_ = std::thread([channel = channel_, address = address_, limits = limits_] {
        const OSStatus status = address.empty() ? kPrinterStockNoConnectionErr
                                                : RetrievePrinterStockLibrary(address, limits, &channel->cancel);
        PrinterPaperOutcome outcome{status, PrinterStockList()};
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [channel, outcome] {
                if (channel->owner)
                    channel->owner->finish(outcome);
            },
            Qt::QueuedConnection);
    });
}

void PrinterPaperFetcher::finish(const PrinterPaperOutcome& outcome)
{
    running_ = false;
    last_ = outcome;
    auto done = std::move(done_);
    done_ = nullptr;
    if (done && receiver_)
        done(outcome);
}

void PrinterPaperFetcher::attach(const std::shared_ptr<PrinterPaperFetcher>& fetcher, NamedPaperDialogSources& sources)
{
    sources.lastOutcome = [fetcher] { return fetcher->lastOutcome(); };
    sources.refresh = [fetcher](QObject* receiver, std::function<void(const PrinterPaperOutcome&)> done) {
        fetcher->fetch(receiver, std::move(done));
    };
}

namespace {
HostPrinterPaperProvider& hostPrinterPaperProvider()
{
    static HostPrinterPaperProvider provider;
    return provider;
}
} // namespace

void SetHostPrinterPaperProvider(HostPrinterPaperProvider provider)
{
    hostPrinterPaperProvider() = std::move(provider);
}

void AttachPrinterPapers(const std::shared_ptr<PrinterPaperFetcher>& fallback, NamedPaperDialogSources& sources)
{
    if (const HostPrinterPaperProvider& host = hostPrinterPaperProvider(); host && host(sources))
        return;
    if (fallback)
        PrinterPaperFetcher::attach(fallback, sources);
}

std::optional<Stock> RunModalNamedPaperDialog(QWidget* parent, const Bundle& bundle,
                                              const NamedPaperDialogSources& sources)
{
    NamedPaperDialog dialog(parent, bundle, sources);
    if (!dialog.ready()) {
        std::fprintf(stderr, "RunModalNamedPaperDialog: the description NamedPaper/Library does not load\n");
        return std::nullopt;
    }
    return dialog.run();
}

std::function<bool(Stock&)> MakeNamedPaperLibraryCommand(QWidget* parent, const Bundle& bundle,
                                                         std::function<NamedPaperDialogSources()> sources)
{
    QPointer<QWidget> guard(parent);
    return [guard, bundle, sources = std::move(sources)](Stock& stock) {
        const NamedPaperDialogSources current = sources ? sources() : NamedPaperDialogSources{};
        std::optional<Stock> chosen = RunModalNamedPaperDialog(guard, bundle, current);
        if (chosen)
            stock = *chosen;
        return chosen.has_value();
    };
}

bool RunModalCustomNameDialog(QWidget* parent, const Bundle& bundle, Stock& stock)
{
    std::unique_ptr<QWidget> holder;
    QDialog* d = loadDialog(bundle, "CustomName", parent, holder);
    auto* field = d ? find<QLineEdit>(d, kCustomNameSignature, 1) : nullptr;
    auto* nameOnly = d ? find<QCheckBox>(d, kCustomNameSignature, 2) : nullptr;
    auto* ok = d ? find<QPushButton>(d, kCustomNameSignature, 5) : nullptr;
    auto* cancel = d ? find<QPushButton>(d, kCustomNameSignature, 6) : nullptr;
    if (!field || !nameOnly || !ok || !cancel)
        return false;
    field->setText(QString::fromStdString(stock.customName().value_or("")));
    field->setMinimumWidth(field->fontMetrics().averageCharWidth() * 32);
    field->selectAll();
    nameOnly->setChecked(stock.customNameOnly());
    connectHelp(bundle, find<QAbstractButton>(d, kCustomNameSignature, 7), kCustomNameHelpPage);
    QObject::connect(ok, &QPushButton::clicked, d, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, d, &QDialog::reject);
    if (d->exec() != QDialog::Accepted)
        return false;
    stock.setCustomName(field->text().trimmed().toStdString());
    // A paper asked for by name alone needs a name.
    stock.setCustomNameOnly(nameOnly->isChecked() && !field->text().trimmed().isEmpty());
    return true;
}

} // namespace talmo
