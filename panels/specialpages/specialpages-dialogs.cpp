#include "panels/specialpages/specialpages-dialogs.h"

#include "panels/dialogs/full-color-dialog.h"
#include "panels/dialogs/image-shift-dialog.h"
#include "panels/dialogs/stock-dialogs.h"
#include "panels/dialogs/stock-popup.h"
#include "toolkit/toolkit.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QValidator>

#include <functional>

namespace talmo::specialpages {

namespace {

constexpr char kTRCHistory[] = "TRCInputHistory"; // shared with the Image Options panel
constexpr int32_t kTRCHistoryLimit = 10;
constexpr int32_t kMaxInsertSheets = 99999;

// Keeps only the characters a page list is made of; anything else typed or pasted is dropped.
class PageListFilter final : public QValidator {
public:
    using QValidator::QValidator;
    State validate(QString& input, int& pos) const override
    {
        static const QString allowed = QStringLiteral("0123456789, -");
        QString kept;
        kept.reserve(input.size());
        int newPos = pos;
        for (int i = 0; i < input.size(); ++i) {
            if (allowed.contains(input[i]))
                kept += input[i];
            else if (i < pos)
                --newPos;
        }
        input = kept;
        pos = newPos;
        return Acceptable;
    }
};

// What every dialog has: the window from its description and its three buttons.
struct DialogFrame {
    std::unique_ptr<QWidget> window;
    QDialog* dialog = nullptr;
    QPushButton* revert = nullptr;
    QPushButton* cancel = nullptr;
    QPushButton* ok = nullptr;
};

bool loadDialog(const Bundle& bundle, const char* name, uint32_t signature, const char* titleKey, QWidget* parent,
                DialogFrame* frame)
{
    OSStatus status = noErr;
    frame->window = CreateWindowFromDescription(bundle, "SpecialPages", name, parent, &status);
    frame->dialog = qobject_cast<QDialog*>(frame->window.get());
    if (!frame->dialog)
        return false;
    LocalizeDescription(bundle, frame->dialog);
    SetLocalizedWindowTitle(bundle, titleKey, frame->dialog);
    frame->revert = GetControlByID<QPushButton>(frame->dialog, {signature, kDialogRevertID});
    frame->cancel = GetControlByID<QPushButton>(frame->dialog, {signature, kDialogCancelID});
    frame->ok = GetControlByID<QPushButton>(frame->dialog, {signature, kDialogOKID});
    if (!frame->revert || !frame->cancel || !frame->ok)
        return false;
    frame->ok->setDefault(true);
    QObject::connect(frame->cancel, &QPushButton::clicked, frame->dialog, &QDialog::reject);
    return true;
}

// OK closes the dialog only when the rules accept the values; a page-list error is reported
// and the field is selected for correction.
void finishOK(const Bundle& bundle, DialogFrame& frame, OSStatus status, QLineEdit* field)
{
    if (status == noErr) {
        frame.dialog->accept();
        return;
    }
    if (PageRangeErrorTitleKey(status))
        SpecialPagesUserNotification(status, bundle, frame.dialog);
    else
        QApplication::beep();
    if (field && field->isEnabled()) {
        field->setFocus();
        field->selectAll();
    }
}

OSStatus runDialog(QDialog* dialog) { return dialog->exec() == QDialog::Accepted ? noErr : userCanceledErr; }

// What the library dialog marks as in use: the job's paper and every special page's paper, read
// when the dialog opens.
NamedPaperDialogSources paperSources(const SpecialPagesState& state, const PrinterPaperSource& printerPapers)
{
    NamedPaperDialogSources sources = printerPapers;
    sources.jobStock = state.jobStock.get();
    sources.pageStocks.clear();
    sources.pageStocks.reserve(static_cast<size_t>(SpecialPageRowCount(state)));
    for (const SpecialPageList* list :
         {static_cast<const SpecialPageList*>(&state.inserts), static_cast<const SpecialPageList*>(&state.exceptions)})
        for (long i = 0; i < list->count(); ++i)
            sources.pageStocks.push_back(&list->pageAtIndex(i)->stock());
    for (const Cover* cover : {state.frontCover.get(), state.backCover.get()})
        if (cover)
            sources.pageStocks.push_back(&cover->stock());
    return sources;
}

// The paper of one record: the stock pop-up in the record's context, with the job's paper as
// its reference and the library behind "Named Paper..."; every change goes to `apply`.
StockPopup* findStockPopup(QWidget* dialog, ControlID id, const Bundle& bundle, JobContext context,
                           const SpecialPagesState& state, const PrinterPaperSource& printerPapers,
                           std::function<void(const Stock&)> apply)
{
    StockPopup* popup = AdoptStockPopup(dialog, id, bundle, context);
    if (!popup)
        return nullptr;
    StockCommandDialogs dialogs = MakeStockCommandDialogs(dialog, bundle, nullptr, context);
    dialogs.library = MakeNamedPaperLibraryCommand(
        dialog, bundle, [&state, printerPapers] { return paperSources(state, printerPapers); });
    popup->setDialogs(std::move(dialogs));
    popup->setReferenceStock(state.jobStock.get());
    QObject::connect(popup, &StockPopup::stockChanged, dialog,
                     [popup, apply = std::move(apply)] { apply(popup->stock()); });
    return popup;
}

void showPopup(QComboBox* popup, int32_t value)
{
    if (!SetPopupButtonToTicketValue(popup, value))
        SetPopupButtonToTicketValue(popup, kNotSet);
}

} // namespace

StockTextSource SpecialPagesTexts(const Bundle* bundle)
{
    return bundle ? MakeStockTextSource(*bundle) : StockTextSource{};
}

void SpecialPagesUserNotification(OSStatus code, const Bundle& bundle, QWidget* parent)
{
    const char* title = PageRangeErrorTitleKey(code);
    const char* message = PageRangeErrorMessageKey(code);
    if (!title || !message)
        return;
    QMessageBox box(QMessageBox::Critical, LocalizedText(bundle, title), LocalizedText(bundle, message),
                    QMessageBox::Ok, parent);
    box.exec();
}

// --- Covers ---------------------------------------------------------------------------------

namespace {

struct CoversDialog {
    DialogFrame frame;
    QComboBox* option = nullptr;
    QComboBox* printing[2] = {};
    QWidget* group[2] = {};
    StockPopup* stock[2] = {};
    std::unique_ptr<Cover> working[2]; // front, back
};

void showCovers(CoversDialog& d)
{
    const int32_t option = GetPopupButtonTicketValue(d.option);
    const bool frontOn = option == kFrontCoverOnly || option == kSameCovers || option == kDifferentCovers;
    const bool backOn = option == kBackCoverOnly || option == kDifferentCovers;
    d.group[0]->setEnabled(frontOn);
    d.group[1]->setEnabled(backOn);
    // With the same covers the back shows what the front holds.
    const Cover& back = option == kSameCovers ? *d.working[0] : *d.working[1];
    for (int i = 0; i < 2; ++i) {
        const Cover& shown = i == 0 ? *d.working[0] : back;
        showPopup(d.printing[i], shown.sidesImaged());
        d.stock[i]->setStock(shown.stock());
    }
}

void revertCovers(CoversDialog& d)
{
    d.working[0] = MakeNewCover();
    d.working[1] = MakeNewCover();
    showPopup(d.option, kNoCovers);
    showCovers(d);
}

} // namespace

OSStatus RunModalCoversDialog(const Bundle& bundle, DialogMode mode, SpecialPagesState* state, QWidget* parent,
                              const PrinterPaperSource& printerPapers)
{
    if (!state)
        return kPMNoContext;
    CoversDialog d;
    const char* title = mode == DialogMode::Add ? kCoversDialogTitleAddKey : kCoversDialogTitleEditKey;
    if (!loadDialog(bundle, "Covers", kCoversSignature, title, parent, &d.frame))
        return kPMNoContext;
    QDialog* dialog = d.frame.dialog;
    d.option = GetControlByID<QComboBox>(dialog, {kCoversSignature, 1});
    for (int i = 0; i < 2; ++i) {
        d.printing[i] = GetControlByID<QComboBox>(dialog, {kCoversSignature, 2 + i * 3});
        d.group[i] = GetControlByID(dialog, {kCoversSignature, 3 + i * 3});
        if (!d.printing[i] || !d.group[i] ||
            !(d.stock[i] = findStockPopup(dialog, {kCoversSignature, 4 + i * 3}, bundle, kJobContextCovers, *state,
                                          printerPapers, [&d, i](const Stock& stock) {
                                              d.working[i]->stock() = stock;
                                              showCovers(d);
                                          })))
            return kPMNoContext;
        PopulatePopupButtonFromMap(bundle, d.printing[i], _CoverSidesImagedMap, kJobContextCovers, 0);
    }
    if (!d.option)
        return kPMNoContext;
    PopulatePopupButtonFromMap(bundle, d.option, _CoverOptionMap, kJobContextCovers, 0);

    const Cover* covers[2] = {state->frontCover.get(), state->backCover.get()};
    for (int i = 0; i < 2; ++i)
        d.working[i] = covers[i] ? std::make_unique<Cover>(*covers[i]) : MakeNewCover();
    showPopup(d.option, CoverOptionForCovers(covers[0], covers[1]));
    showCovers(d);

    QObject::connect(d.option, &QComboBox::activated, dialog, [&d] { showCovers(d); });
    for (int i = 0; i < 2; ++i)
        QObject::connect(d.printing[i], &QComboBox::activated, dialog, [&d, i] {
            d.working[i]->setSidesImaged(GetPopupButtonTicketValue(d.printing[i]));
            showCovers(d);
        });
    QObject::connect(d.frame.revert, &QPushButton::clicked, dialog, [&d] { revertCovers(d); });
    QObject::connect(d.frame.ok, &QPushButton::clicked, dialog, [&] {
        const int32_t option = GetPopupButtonTicketValue(d.option);
        finishOK(bundle, d.frame, CoversDialogOK(state, option, d.working[0].get(), d.working[1].get()), nullptr);
    });
    return runDialog(dialog);
}

// --- Inserts --------------------------------------------------------------------------------

namespace {

struct InsertsDialog {
    const Bundle* bundle = nullptr;
    DialogFrame frame;
    QComboBox* placement = nullptr;
    QLabel* pagesLabel = nullptr;
    QLineEdit* pages = nullptr;
    SpinControl* quantity = nullptr;
    StockPopup* stock = nullptr;
    PageListFilter* filter = nullptr; // off while the field shows the fixed text, which it would cut
    InsertsDialogInput input;
};

void enableInsertsOK(InsertsDialog& d)
{
    const bool on = InsertsDialogCanAccept(d.input);
    d.frame.ok->setEnabled(on);
    d.frame.ok->setToolTip(on ? QString() : LocalizedText(*d.bundle, "InsertsOKOffTip"));
}

void readInserts(InsertsDialog& d)
{
    d.input.placement = GetPopupButtonTicketValue(d.placement);
    if (d.input.placement == kInsertAfterPages)
        d.input.pageText = d.pages->text().toStdString();
    d.input.quantity = d.quantity->value();
}

void showInserts(InsertsDialog& d)
{
    const bool before = d.input.placement == kInsertBeforePage1;
    showPopup(d.placement, d.input.placement);
    QSignalBlocker block(d.pages);
    d.pages->setValidator(before ? nullptr : d.filter);
    d.pages->setText(before ? LocalizedText(*d.bundle, kInsertBeforePage1TextKey)
                            : QString::fromStdString(d.input.pageText));
    d.pages->setEnabled(!before);
    d.pagesLabel->setEnabled(!before);
    d.quantity->setValue(d.input.quantity);
    d.stock->setStock(d.input.stock);
    enableInsertsOK(d);
}

} // namespace

OSStatus RunModalInsertsDialog(const Bundle& bundle, DialogMode mode, SpecialPagesState* state, const Insert* edited,
                               QWidget* parent, const PrinterPaperSource& printerPapers)
{
    if (!state)
        return kPMNoContext;
    if (mode == DialogMode::Edit && state->inserts.indexOfPage(edited) < 0)
        return paramErr;
    InsertsDialog d;
    d.bundle = &bundle;
    const char* title = mode == DialogMode::Add ? kInsertsDialogTitleAddKey : kInsertsDialogTitleEditKey;
    if (!loadDialog(bundle, "Inserts", kInsertsSignature, title, parent, &d.frame))
        return kPMNoContext;
    QDialog* dialog = d.frame.dialog;
    d.placement = GetControlByID<QComboBox>(dialog, {kInsertsSignature, 1});
    d.pagesLabel = GetControlByID<QLabel>(dialog, {kInsertsSignature, 2});
    d.pages = GetControlByID<QLineEdit>(dialog, {kInsertsSignature, 3});
    d.quantity = AdoptControl<SpinControl>(dialog, {kInsertsSignature, 4});
    if (!d.placement || !d.pagesLabel || !d.pages || !d.quantity ||
        !(d.stock = findStockPopup(dialog, {kInsertsSignature, 5}, bundle, kJobContextInserts, *state, printerPapers,
                                   [&d](const Stock& stock) { d.input.stock = stock; })))
        return kPMNoContext;
    PopulatePopupButtonFromMap(bundle, d.placement, _InsertOptionMap, kJobContextInserts, 0);
    d.quantity->setRange(1, kMaxInsertSheets);
    d.filter = new PageListFilter(d.pages);

    d.input = InsertsDialogDefaults();
    if (edited) {
        d.input.placement = edited->startPage() == 0 ? kInsertBeforePage1 : kInsertAfterPages;
        if (edited->startPage() != 0)
            d.input.pageText = std::to_string(edited->startPage());
        d.input.quantity = edited->quantity();
        d.input.stock = edited->stock();
    }
    showInserts(d);

    QObject::connect(d.placement, &QComboBox::activated, dialog, [&d] {
        readInserts(d);
        showInserts(d);
    });
    QObject::connect(d.pages, &QLineEdit::textChanged, dialog, [&d](const QString& text) {
        d.input.pageText = text.toStdString();
        enableInsertsOK(d);
    });
    QObject::connect(d.frame.revert, &QPushButton::clicked, dialog, [&d] {
        d.input = InsertsDialogDefaults();
        showInserts(d);
    });
    QObject::connect(d.frame.ok, &QPushButton::clicked, dialog, [&] {
        readInserts(d);
        const Insert* target = mode == DialogMode::Edit ? edited : nullptr;
        finishOK(bundle, d.frame, InsertsDialogOK(state, mode, target, d.input), d.pages);
    });
    return runDialog(dialog);
}

// --- Exceptions -----------------------------------------------------------------------------

namespace {

struct ExceptionsDialog {
    const Bundle* bundle = nullptr;
    DialogFrame frame;
    QLineEdit* pages = nullptr;
    QComboBox* plex = nullptr;
    QComboBox* outputColor = nullptr;
    QComboBox* halftone = nullptr;
    QComboBox* antialiasing = nullptr;
    HistoryComboBox* trc = nullptr;
    StaticTextControl* colorSummary = nullptr;
    QPushButton* colorSetup = nullptr;
    StaticTextControl* shiftSummary = nullptr;
    QPushButton* shiftSetup = nullptr;
    StockPopup* stock = nullptr;
    LabelLookup localized;
    ExceptionsDialogInput input;
    // What each pop-up showed: a value the pop-up does not offer (an imported one) shows as
    // "use job setting" and is kept unless the user chooses another item.
    int32_t shown[4] = {};
};

QComboBox* popupAt(ExceptionsDialog& d, int i)
{
    QComboBox* popups[] = {d.plex, d.outputColor, d.halftone, d.antialiasing};
    return popups[i];
}

using ExceptionSetter = void (ExceptionPage::*)(int32_t);
constexpr ExceptionSetter kPopupSetters[] = {&ExceptionPage::setPlex, &ExceptionPage::setOutputColor,
                                             &ExceptionPage::setHalftoneScreen, &ExceptionPage::setAntialiasing};

// The pop-ups and the TRC box into the working record; a TRC map row means the job's curve.
void readExceptions(ExceptionsDialog& d)
{
    ExceptionPage& w = d.input.working;
    for (int i = 0; i < 4; ++i)
        if (const int32_t value = GetPopupButtonTicketValue(popupAt(d, i)); value != d.shown[i]) {
            // Called through a copy: GCC's bounds check misreads a member function pointer
            // taken straight from the array as an index far out of range.
            const ExceptionSetter set = kPopupSetters[i];
            (w.*set)(value);
        }
    d.input.pageText = d.pages->text().toStdString();
    const HistoryComboBox::Value trc = d.trc->value();
    const QString* name = std::get_if<QString>(&trc);
    d.input.trcText = name ? std::optional<std::string>(name->toStdString()) : std::nullopt;
    w.colorOptions().setTRC(d.input.trcText);
}

void showSummaries(ExceptionsDialog& d)
{
    const LabelLookup& localize = d.localized;
    std::string color;
    ShowFullColorSummary(d.input.working.colorOptions(), kJobContextExceptions, localize, &color);
    d.colorSummary->setText(QString::fromStdString(color));
    d.shiftSummary->setText(QString::fromStdString(
        GenerateImageShiftSummary(*d.input.working.imageShift(), kJobContextExceptions, localize)));
    d.stock->setStock(d.input.working.stock());
}

void showExceptions(ExceptionsDialog& d)
{
    const ExceptionPage& w = d.input.working;
    d.pages->setText(QString::fromStdString(d.input.pageText));
    const int32_t values[] = {w.plex(), w.outputColor(), w.halftoneScreen(), w.antialiasing()};
    for (int i = 0; i < 4; ++i) {
        showPopup(popupAt(d, i), values[i]);
        d.shown[i] = GetPopupButtonTicketValue(popupAt(d, i));
    }
    FullColorOptions::Name trc;
    w.colorOptions().trc(&trc);
    if (trc) {
        d.trc->setText(QString::fromStdString(*trc));
    } else {
        SetPopupButtonToTicketValue(d.trc, kNotSet);
        d.trc->setEditText(d.trc->itemText(d.trc->currentIndex()));
    }
    showSummaries(d);
}

std::string pagesOf(const ExceptionPage& page)
{
    if (page.startPage() == page.endPage())
        return std::to_string(page.startPage());
    return std::to_string(page.startPage()) + "-" + std::to_string(page.endPage());
}

} // namespace

OSStatus RunModalExceptionsDialog(const Bundle& bundle, DialogMode mode, SpecialPagesState* state,
                                  const ExceptionPage* edited, QWidget* parent, const PrinterPaperSource& printerPapers)
{
    if (!state)
        return kPMNoContext;
    if (mode == DialogMode::Edit && state->exceptions.indexOfPage(edited) < 0)
        return paramErr;
    ExceptionsDialog d;
    d.bundle = &bundle;
    const char* title = mode == DialogMode::Add ? kExceptionsDialogTitleAddKey : kExceptionsDialogTitleEditKey;
    if (!loadDialog(bundle, "Exceptions", kExceptionsSignature, title, parent, &d.frame))
        return kPMNoContext;
    QDialog* dialog = d.frame.dialog;
    auto id = [](int32_t n) { return ControlID{kExceptionsSignature, n}; };
    d.pages = GetControlByID<QLineEdit>(dialog, id(1));
    d.plex = GetControlByID<QComboBox>(dialog, id(2));
    d.outputColor = GetControlByID<QComboBox>(dialog, id(3));
    d.halftone = GetControlByID<QComboBox>(dialog, id(4));
    d.antialiasing = GetControlByID<QComboBox>(dialog, id(5));
    d.trc = AdoptControl<HistoryComboBox>(dialog, id(6));
    d.colorSummary = AdoptControl<StaticTextControl>(dialog, id(7));
    d.colorSetup = GetControlByID<QPushButton>(dialog, id(8));
    d.shiftSummary = AdoptControl<StaticTextControl>(dialog, id(9));
    d.shiftSetup = GetControlByID<QPushButton>(dialog, id(10));
    if (!d.pages || !d.plex || !d.outputColor || !d.halftone || !d.antialiasing || !d.trc || !d.colorSummary ||
        !d.colorSetup || !d.shiftSummary || !d.shiftSetup ||
        !(d.stock = findStockPopup(dialog, {kExceptionsSignature, 11}, bundle, kJobContextExceptions, *state,
                                   printerPapers, [&d](const Stock& stock) { d.input.working.stock() = stock; })))
        return kPMNoContext;
    PopulatePopupButtonFromMap(bundle, d.plex, _PlexMap, kJobContextExceptions, 0);
    PopulatePopupButtonFromMap(bundle, d.outputColor, _OutputColorMap, kJobContextExceptions, 0);
    PopulatePopupButtonFromMap(bundle, d.halftone, _HalftoneScreenMap, kJobContextExceptions, 0);
    PopulatePopupButtonFromMap(bundle, d.antialiasing, _AntialiasingMap, kJobContextExceptions, 0);
    d.localized = [&bundle](std::string_view key) { return bundle.localizedString(key); };
    d.trc->populate(bundle, _TRCMap, kJobContextExceptions, kTRCHistory, kTRCHistoryLimit, 1);
    d.pages->setValidator(new PageListFilter(d.pages));

    d.input = ExceptionsDialogDefaults();
    if (edited) {
        d.input.working = *edited;
        d.input.pageText = pagesOf(*edited);
    }
    showExceptions(d);

    QObject::connect(d.colorSetup, &QPushButton::clicked, dialog, [&] {
        readExceptions(d);
        bool accepted = false;
        RunModalFullColorSetup(bundle, mode, kJobContextExceptions, d.input.working.colorOptions(), &accepted, dialog);
        if (accepted)
            showExceptions(d); // the colour dialog may have changed the TRC too
    });
    QObject::connect(d.shiftSetup, &QPushButton::clicked, dialog, [&] {
        bool accepted = false;
        RunModalImageShiftDialog(bundle, mode, kJobContextExceptions, *d.input.working.imageShift(), &accepted, dialog);
        if (accepted)
            showSummaries(d);
    });
    QObject::connect(d.frame.revert, &QPushButton::clicked, dialog, [&d] {
        d.input = ExceptionsDialogDefaults();
        showExceptions(d);
    });
    QObject::connect(d.frame.ok, &QPushButton::clicked, dialog, [&] {
        readExceptions(d);
        const ExceptionPage* target = mode == DialogMode::Edit ? edited : nullptr;
        finishOK(bundle, d.frame, ExceptionsDialogOK(state, mode, target, &d.input), d.pages);
    });
    return runDialog(dialog);
}

} // namespace talmo::specialpages
