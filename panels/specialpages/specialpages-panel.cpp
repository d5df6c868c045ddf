// The SpecialPages panel: covers, inserts and exception pages.
#include "panels/panel-module.h"
#include "panels/specialpages/specialpages-dialogs.h"
#include "panels/specialpages/specialpages-model.h"
#include "toolkit/toolkit.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>

namespace talmo::specialpages {

// The panel's controls: signature "SPgs", 1 the list, 2-10 the command buttons.
inline constexpr uint32_t kPanelSignature = FourCC("SPgs");

enum Command : uint32_t {
    kAddCoversCommand = FourCC("SPac"),
    kAddInsertsCommand = FourCC("SPai"),
    kAddExceptionsCommand = FourCC("SPae"),
    kEditCommand = FourCC("SPed"),
    kDeleteCommand = FourCC("SPdl"),
    kDeleteAllCommand = FourCC("SPda"),
    kMoveUpCommand = FourCC("SPup"),
    kMoveDownCommand = FourCC("SPdn"),
    kUndoCommand = FourCC("SPun"),
};

struct SpecialPagesContext : panels::PanelContext {
    SpecialPagesState state;
    StockTextSource texts;
    QPointer<QTableView> list;
    QPointer<SpecialPagesModel> model;
    struct Button {
        QPointer<QPushButton> button;
        Command command;
    };
    std::vector<Button> buttons;
    // The printer's paper list for the paper pop-ups' library, made when a dialog first needs it.
    std::shared_ptr<PrinterPaperFetcher> fetcher;

    QPushButton* button(Command command) const
    {
        for (const Button& b : buttons)
            if (b.command == command)
                return b.button;
        return nullptr;
    }
};

namespace {

const panels::PanelDescription kPanel{"SpecialPagesPanel", "SpecialPagesPanel", "com.talmo.print.pde.specialpageskind"};

SpecialPagesContext* asContext(PMPDEContext context)
{
    return static_cast<SpecialPagesContext*>(static_cast<panels::PanelContext*>(context));
}

panels::PanelContext* makeContext() { return new (std::nothrow) SpecialPagesContext; }

std::vector<long> selectedRows(const SpecialPagesContext* c)
{
    std::vector<long> rows;
    if (!c->list || !c->list->selectionModel())
        return rows;
    for (const QModelIndex& index : c->list->selectionModel()->selectedRows())
        rows.push_back(index.row());
    return rows;
}

void UpdateSpecialPagesCommandButtons(SpecialPagesContext* c)
{
    const std::vector<long> rows = selectedRows(c);
    const CommandState state = specialpages::UpdateSpecialPagesCommandButtons(c->state, std::span<const long>(rows));
    // A disabled command says why in its tool tip.
    const struct {
        Command command;
        bool on;
        const char* whyOff;
    } enabling[] = {
        {kEditCommand, state.edit, "SpecialPagesEditOffTip"},
        {kDeleteCommand, state.remove, "SpecialPagesDeleteOffTip"},
        {kDeleteAllCommand, state.removeAll, "SpecialPagesDeleteAllOffTip"},
        {kMoveUpCommand, state.moveUp, "SpecialPagesMoveUpOffTip"},
        {kMoveDownCommand, state.moveDown, "SpecialPagesMoveDownOffTip"},
        {kUndoCommand, state.undo, "SpecialPagesUndoOffTip"},
    };
    const Bundle* bundle = ExtensionBundle();
    for (const auto& e : enabling)
        if (QPushButton* b = c->button(e.command)) {
            b->setEnabled(e.on);
            b->setToolTip(e.on || !bundle ? QString() : LocalizedText(*bundle, e.whyOff));
        }
}

// The state changed: the list asks again, `select` (a row, or -1) is selected and shown.
void refresh(SpecialPagesContext* c, long select = -1)
{
    if (!c->model || !c->list)
        return;
    c->model->reload();
    if (select >= 0 && select < SpecialPageRowCount(c->state)) {
        const QModelIndex index = c->model->index(static_cast<int>(select), 0);
        c->list->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        c->list->setCurrentIndex(index);
        c->list->scrollTo(index);
    }
    UpdateSpecialPagesCommandButtons(c);
}

// Yes or No; the snapshot was taken before on purpose, so a No still replaces it.
bool confirm(const Bundle& bundle, QWidget* parent, const char* messageKey)
{
    QMessageBox box(QMessageBox::Warning, LocalizedText(bundle, "Delete Special Pages Title"),
                    LocalizedText(bundle, messageKey), QMessageBox::NoButton, parent);
    QPushButton* yes = box.addButton(LocalizedText(bundle, "Yes Command"), QMessageBox::YesRole);
    QPushButton* no = box.addButton(LocalizedText(bundle, "No Command"), QMessageBox::NoRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}

void DeleteSelectedSpecialPages(SpecialPagesContext* c, const Bundle& bundle)
{
    const std::vector<long> rows = selectedRows(c);
    if (rows.empty())
        return;
    SaveUndoState(&c->state);
    if (confirm(bundle, c->content, "Delete Selected Special Pages"))
        DeleteSpecialPageRows(&c->state, rows);
    refresh(c);
}

void DeleteAllSpecialPages(SpecialPagesContext* c, const Bundle& bundle)
{
    if (SpecialPageRowCount(c->state) == 0)
        return;
    SaveUndoState(&c->state);
    if (confirm(bundle, c->content, "Delete All Special Pages"))
        DeleteAllSpecialPageRecords(&c->state);
    refresh(c);
}

PrinterPaperSource printerPapers(SpecialPagesContext* c)
{
    PrinterPaperSource source;
    if (!c->session)
        return source;
    if (!c->fetcher)
        c->fetcher = PrinterPaperFetcher::forDeviceURI(c->session->printer().deviceURI);
    AttachPrinterPapers(c->fetcher, source);
    return source;
}

void editSelected(SpecialPagesContext* c, const Bundle& bundle)
{
    const std::vector<long> rows = selectedRows(c);
    if (rows.size() != 1)
        return;
    const Row row = SpecialPageRowAt(c->state, rows.front());
    OSStatus status = userCanceledErr;
    switch (row.kind) {
    case RowKind::FrontCover:
    case RowKind::BackCover:
        status = RunModalCoversDialog(bundle, DialogMode::Edit, &c->state, c->content, printerPapers(c));
        break;
    case RowKind::Insert:
        status = RunModalInsertsDialog(bundle, DialogMode::Edit, &c->state, static_cast<const Insert*>(row.page),
                                       c->content, printerPapers(c));
        break;
    case RowKind::Exception:
        status = RunModalExceptionsDialog(bundle, DialogMode::Edit, &c->state,
                                          static_cast<const ExceptionPage*>(row.page), c->content, printerPapers(c));
        break;
    }
    if (status == noErr)
        refresh(c);
}

bool SpecialPagesPanelEventHandler(SpecialPagesContext* c, uint32_t command)
{
    const Bundle* bundle = ExtensionBundle();
    if (!bundle)
        return false;
    OSStatus status = userCanceledErr;
    switch (command) {
    case kAddCoversCommand:
        status = RunModalCoversDialog(*bundle, DialogMode::Add, &c->state, c->content, printerPapers(c));
        break;
    case kAddInsertsCommand:
        status = RunModalInsertsDialog(*bundle, DialogMode::Add, &c->state, nullptr, c->content, printerPapers(c));
        break;
    case kAddExceptionsCommand:
        status = RunModalExceptionsDialog(*bundle, DialogMode::Add, &c->state, nullptr, c->content, printerPapers(c));
        break;
    case kEditCommand:
        editSelected(c, *bundle);
        return true;
    case kDeleteCommand:
        DeleteSelectedSpecialPages(c, *bundle);
        return true;
    case kDeleteAllCommand:
        DeleteAllSpecialPages(c, *bundle);
        return true;
    case kMoveUpCommand:
    case kMoveDownCommand: {
        const std::vector<long> rows = selectedRows(c);
        const SpecialPage* moved = rows.size() == 1 ? SpecialPageRowAt(c->state, rows.front()).page : nullptr;
        if (moved && MoveSpecialPageRow(&c->state, rows.front(), command == kMoveUpCommand))
            refresh(c, SpecialPageRowOf(c->state, moved));
        return true;
    }
    case kUndoCommand:
        PerformUndo(&c->state);
        refresh(c);
        return true;
    default:
        return false;
    }
    if (status == noErr)
        refresh(c);
    return true;
}

OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* kind, std::string* title, uint32_t* maxH,
                  uint32_t* maxV)
{
    const OSStatus status = panels::PanelPrologue(kPanel, context, creator, kind, title, maxH, maxV, &makeContext);
    if (status == noErr)
        asContext(*context)->texts = SpecialPagesTexts(ExtensionBundle());
    return status;
}

OSStatus Initialize(PMPDEContext context, PMPDEFlags*, PMPDERef, ControlRef pane, PMPrintSession session)
{
    const OSStatus status = panels::PanelInitialize(context, pane, session);
    SpecialPagesContext* c = asContext(context);
    if (status != noErr || !c->content)
        return status;
    QWidget* root = c->content;
    c->list = GetControlByID<QTableView>(root, {kPanelSignature, 1});
    if (!c->list)
        return kPMNoContext;
    const Command commands[] = {kAddCoversCommand, kAddInsertsCommand, kAddExceptionsCommand,
                                kEditCommand,      kDeleteCommand,     kDeleteAllCommand,
                                kMoveUpCommand,    kMoveDownCommand,   kUndoCommand};
    for (int i = 0; i < 9; ++i) {
        auto* button = GetControlByID<QPushButton>(root, {kPanelSignature, 2 + i});
        if (!button)
            return kPMNoContext;
        const Command command = commands[i];
        QObject::connect(button, &QPushButton::clicked, button,
                         [c, command] { SpecialPagesPanelEventHandler(c, command); });
        c->buttons.push_back({button, command});
    }

    c->model = new SpecialPagesModel(&c->state, c->texts, c->list);
    c->list->setModel(c->model);
    // Fixed row heights and no per-row sizing: a long list costs what is on screen.
    c->list->verticalHeader()->hide();
    c->list->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    c->list->verticalHeader()->setDefaultSectionSize(c->list->fontMetrics().height() + 6);
    QHeaderView* header = c->list->horizontalHeader();
    header->setSectionResizeMode(SpecialPagesModel::KindColumn, QHeaderView::Interactive);
    header->setSectionResizeMode(SpecialPagesModel::PagesColumn, QHeaderView::Interactive);
    header->setStretchLastSection(true);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->resizeSection(SpecialPagesModel::KindColumn, 90);
    header->resizeSection(SpecialPagesModel::PagesColumn, 80);
    QObject::connect(c->list->selectionModel(), &QItemSelectionModel::selectionChanged, c->list,
                     [c] { UpdateSpecialPagesCommandButtons(c); });
    QObject::connect(c->list, &QTableView::doubleClicked, c->list,
                     [c] { SpecialPagesPanelEventHandler(c, kEditCommand); });
    refresh(c);
    return noErr;
}

OSStatus Sync(PMPDEContext context, PMPrintSession session, bool reinitializePlugIn)
{
    SpecialPagesContext* c = asContext(context);
    if (!c)
        return kPMNoContext;
    panels::TracePanelCall(context, "Sync", reinitializePlugIn);
    Ticket* ticket = nullptr;
    if (session)
        if (const OSStatus status = GetTicketFromSession(session, kPMPrintSettingsTicket, &ticket); status != noErr)
            return status;
    const OSStatus status = SyncSpecialPages(&c->state, ticket, reinitializePlugIn);
    if (reinitializePlugIn)
        refresh(c);
    return status;
}

OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray)
{
    SpecialPagesContext* c = asContext(context);
    if (!c)
        return kPMNoContext;
    if (!titleArray || !summaryArray)
        return paramErr;
    panels::MakeSummaryArrays(titleArray, summaryArray);
    for (auto& [title, text] : UpdateSpecialPagesSummary(c->state, c->texts))
        panels::AppendSummaryLine(titleArray, summaryArray, std::move(title), std::move(text));
    return noErr;
}

OSStatus Terminate(PMPDEContext context, OSStatus) { return panels::PanelTerminate(context); }

} // namespace

OSStatus CreatePanelInterface(PlugInIntf** intf)
{
    return panels::MakePanelInterface(intf, {nullptr, nullptr, nullptr, &Prologue, &Initialize, &Sync, &GetSummaryText,
                                             &panels::PanelOpen, &panels::PanelClose, &Terminate});
}

} // namespace talmo::specialpages

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetSpecialPagesPanelInterface(talmo::PlugInIntf** intf)
{
    return talmo::specialpages::CreatePanelInterface(intf);
}
