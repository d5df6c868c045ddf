#include "panels/dialogs/stock-dialogs.h"

#include "panels/dialogs/stock-popup.h" // MakeStockTextSource
#include "toolkit/toolkit.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>

#include <cmath>

namespace talmo {

namespace {

constexpr uint32_t kSignature = FourCC("StkD");
constexpr int32_t kCancelID = 91;
constexpr int32_t kOKID = 92;

// "Entry": an optional text row and an optional number row.
constexpr int32_t kTextLabelID = 1;
constexpr int32_t kTextFieldID = 2;
constexpr int32_t kNumberLabelID = 3;
constexpr int32_t kNumberFieldID = 4;
constexpr int32_t kNumberRangeID = 5;
constexpr int32_t kEntryMessageID = 6;

// "CustomSize".
constexpr int32_t kWidthFieldID = 1;
constexpr int32_t kLengthFieldID = 2;
constexpr int32_t kInchesID = 3;
constexpr int32_t kMillimetresID = 4;
constexpr int32_t kWidthRangeID = 5;
constexpr int32_t kLengthRangeID = 6;
constexpr int32_t kSizeMessageID = 7;

constexpr double kHmmPerPoint = 2540.0 / 72.0;
constexpr double kHmmPerInch = 2540.0;
constexpr int32_t kLargestSheetHmm = 1'000'000; // 10 m: beyond any press, far within int32

template <class T> T* control(QWidget* w, int32_t id) { return GetControlByID<T>(w, {kSignature, id}); }

// A refused value: the message says why, the field is tinted and selected for retyping.
void markField(QLineEdit* field, QLabel* message, const QString& why)
{
    QPalette tinted = field->palette();
    tinted.setColor(QPalette::Base, QColor(255, 226, 226));
    tinted.setColor(QPalette::Text, Qt::black);
    field->setPalette(tinted);
    field->setAccessibleDescription(why);
    message->setText(why);
    message->show();
    field->setFocus();
    field->selectAll();
    QApplication::beep();
}

void clearMark(QLineEdit* field, QLabel* message)
{
    field->setPalette(QPalette());
    field->setAccessibleDescription(QString());
    message->hide();
}

std::unique_ptr<QDialog> loadDialog(const Bundle& bundle, const char* window, QWidget* parent)
{
    OSStatus status = noErr;
    std::unique_ptr<QWidget> made = CreateWindowFromDescription(bundle, "StockDialogs", window, parent, &status);
    if (!qobject_cast<QDialog*>(made.get())) {
        std::fprintf(stderr, "Stock dialogs: the window %s does not load (%d)\n", window, int(status));
        return nullptr;
    }
    LocalizeDescription(bundle, made.get());
    return std::unique_ptr<QDialog>(static_cast<QDialog*>(made.release()));
}

struct EntryFields {
    const char* titleKey = nullptr;
    const char* textLabelKey = nullptr; // no text row without it
    QString text;
    int textLimit = 0;
    bool textRequired = true;
    const char* numberLabelKey = nullptr; // no number row without it
    int32_t minimum = 0;
    int32_t maximum = 0;
    std::optional<int32_t> number;
};

struct EntryResult {
    std::string text;
    int32_t number = 0;
};

std::optional<EntryResult> runEntry(const Bundle& bundle, const EntryFields& fields, QWidget* parent)
{
    std::unique_ptr<QDialog> dialog = loadDialog(bundle, "Entry", parent);
    if (!dialog)
        return std::nullopt;
    QDialog* w = dialog.get();
    auto* textField = control<QLineEdit>(w, kTextFieldID);
    auto* numberField = control<QLineEdit>(w, kNumberFieldID);
    auto* message = control<QLabel>(w, kEntryMessageID);
    auto* ok = control<QPushButton>(w, kOKID);
    auto* cancel = control<QPushButton>(w, kCancelID);
    auto* form = w->findChild<QFormLayout*>("form");
    auto* numberRow = w->findChild<QLayout*>("numberRow");
    if (!textField || !numberField || !message || !ok || !cancel || !form || !numberRow) {
        std::fprintf(stderr, "Stock dialogs: the Entry window lacks a control\n");
        return std::nullopt;
    }
    SetLocalizedWindowTitle(bundle, fields.titleKey, w);
    message->hide();
    form->setRowVisible(textField, fields.textLabelKey != nullptr);
    form->setRowVisible(numberRow, fields.numberLabelKey != nullptr);
    if (fields.textLabelKey) {
        SetLocalizedStaticText(bundle, fields.textLabelKey, control<QLabel>(w, kTextLabelID));
        textField->setText(fields.text);
    }
    if (fields.numberLabelKey) {
        SetLocalizedStaticText(bundle, fields.numberLabelKey, control<QLabel>(w, kNumberLabelID));
        SetLocalizedStaticText(bundle, "CustomValue Range", control<QLabel>(w, kNumberRangeID),
                               {fields.minimum, fields.maximum});
        LimitInputLengthAndCharacters(numberField, fields.minimum, fields.maximum, "0123456789");
        if (fields.number && *fields.number >= fields.minimum && *fields.number <= fields.maximum)
            numberField->setText(QString::number(*fields.number));
    }
    (fields.textLabelKey ? textField : numberField)->setFocus();
    QObject::connect(textField, &QLineEdit::textChanged, w, [=] { clearMark(textField, message); });
    QObject::connect(numberField, &QLineEdit::textChanged, w, [=] { clearMark(numberField, message); });

    EntryResult result;
    QObject::connect(cancel, &QPushButton::clicked, w, &QDialog::reject);
    QObject::connect(ok, &QPushButton::clicked, w, [&] {
        if (fields.textLabelKey) {
            const QString text = textField->text().trimmed();
            if (fields.textRequired && text.isEmpty())
                return markField(textField, message, LocalizedText(bundle, "StockDialog Name Required"));
            if (text.size() > fields.textLimit)
                return markField(textField, message, LocalizedText(bundle, "StockDialog Too Long", {fields.textLimit}));
            result.text = text.toStdString();
        }
        if (fields.numberLabelKey) {
            bool isNumber = false;
            const int value = numberField->text().toInt(&isNumber);
            if (!isNumber || value < fields.minimum || value > fields.maximum)
                return markField(numberField, message,
                                 LocalizedText(bundle, "StockDialog Out Of Range",
                                               {QString::number(fields.minimum), QString::number(fields.maximum)}));
            result.number = value;
        }
        w->accept();
    });
    if (w->exec() != QDialog::Accepted)
        return std::nullopt;
    return result;
}

// The custom size dialog keeps each side in hundredths of a millimetre and shows it in the chosen
// unit, so switching units back and forth never drifts.
struct SizeDialog {
    const Bundle* bundle = nullptr;
    QDialog* dialog = nullptr;
    QLineEdit* fields[2] = {};
    QLabel* ranges[2] = {};
    QRadioButton* inches = nullptr;
    QRadioButton* millimetres = nullptr;
    QLabel* message = nullptr;
    std::optional<int32_t> hmm[2];
    int32_t minimum[2] = {};
    int32_t maximum[2] = {};
    QLocale locale;
};

QString formatHmm(const QLocale& locale, double hmm, bool inches)
{
    // Inches to the hundredth, millimetres to the tenth, without trailing zeros.
    QString text = inches ? locale.toString(hmm / kHmmPerInch, 'f', 2) : locale.toString(hmm / 100.0, 'f', 1);
    const QString point = locale.decimalPoint();
    if (text.contains(point)) {
        while (text.endsWith(locale.zeroDigit()))
            text.chop(1);
        if (text.endsWith(point))
            text.chop(point.size());
    }
    return text;
}

std::optional<int32_t> parseHmm(const QLocale& locale, const QString& text, bool inches)
{
    bool isNumber = false;
    const double value = locale.toDouble(text.trimmed(), &isNumber);
    if (!isNumber || !std::isfinite(value) || value <= 0)
        return std::nullopt;
    const double hmm = std::round(value * (inches ? kHmmPerInch : 100.0));
    if (hmm > kLargestSheetHmm)
        return kLargestSheetHmm + 1; // out of any range, still a number
    return static_cast<int32_t>(hmm);
}

void showSizeRanges(SizeDialog& d)
{
    const bool inches = d.inches->isChecked();
    // The shown limits are rounded inwards, so a value typed as shown is always accepted.
    const double step = inches ? kHmmPerInch / 100 : 10.0;
    for (int i = 0; i < 2; ++i) {
        const double low = std::ceil(d.minimum[i] / step) * step;
        const double high = std::floor(d.maximum[i] / step) * step;
        SetLocalizedStaticText(*d.bundle, inches ? "StockDialog Range Inches" : "StockDialog Range Millimetres",
                               d.ranges[i], {formatHmm(d.locale, low, inches), formatHmm(d.locale, high, inches)});
    }
}

void switchUnit(SizeDialog& d)
{
    const bool inches = d.inches->isChecked();
    for (int i = 0; i < 2; ++i) {
        if (d.hmm[i]) {
            const QSignalBlocker blocker(d.fields[i]); // the stored value stays exact
            d.fields[i]->setText(formatHmm(d.locale, *d.hmm[i], inches));
        }
    }
    showSizeRanges(d);
}

bool acceptSize(SizeDialog& d)
{
    for (int i = 0; i < 2; ++i) {
        if (!d.hmm[i] || *d.hmm[i] < d.minimum[i] || *d.hmm[i] > d.maximum[i]) {
            markField(d.fields[i], d.message,
                      LocalizedText(*d.bundle, "StockDialog Size Out Of Range", {d.ranges[i]->text()}));
            return false;
        }
    }
    return true;
}

// A side's limits in hundredths of a millimetre; limits that make no sense give the defaults.
void sizeLimits(const MediaLimits& given, int32_t minimum[2], int32_t maximum[2])
{
    MediaLimits limits = given;
    const double values[] = {limits.minWidth, limits.minHeight, limits.maxWidth, limits.maxHeight};
    bool sane = limits.minWidth <= limits.maxWidth && limits.minHeight <= limits.maxHeight;
    for (double v : values)
        sane = sane && std::isfinite(v) && v >= 0;
    if (!sane || limits.maxWidth <= 0 || limits.maxHeight <= 0)
        limits = kDefaultMediaLimits;
    const auto toHmm = [](double points, bool up) {
        const double hmm = std::min(points * kHmmPerPoint, double(kLargestSheetHmm));
        return std::max<int32_t>(1, static_cast<int32_t>(up ? std::ceil(hmm - 1e-6) : std::floor(hmm + 1e-6)));
    };
    minimum[0] = toHmm(limits.minWidth, true);
    minimum[1] = toHmm(limits.minHeight, true);
    maximum[0] = std::max(minimum[0], toHmm(limits.maxWidth, false));
    maximum[1] = std::max(minimum[1], toHmm(limits.maxHeight, false));
}

// What the fields start with: the stock's own custom size, else its standard size.
std::optional<StockDimensions> startingSize(const Stock& stock)
{
    if (stock.size() == kStockSizeCustom && stock.width() > 0 && stock.length() > 0)
        return StockDimensions{stock.width(), stock.length()};
    if (stock.size() == kNotSet || stock.size() == kStockSizeCustom)
        return std::nullopt;
    for (const _PaperSizeSettingMap* row = CompleteStockSizeMap; row->key; ++row)
        if (row->ticketValue == stock.size() && row->widthHmm > 0)
            return StockDimensions{row->widthHmm, row->heightHmm};
    return std::nullopt;
}

// "Advanced": one popup per attribute over a copy of the stock, and its summary.
constexpr int32_t kAdvancedSummaryID = 20;

struct AdvancedRow {
    int32_t id;
    const SettingMap* map;
    uint32_t command; // 0: set directly (finish and grain have no menu command)
};

const AdvancedRow kAdvancedRows[] = {
    {1, _StockSizeMap, kStockCommandSize},
    {2, _StockColorMap, kStockCommandColor},
    {3, _StockTypeMap, kStockCommandType},
    {4, _WeightMap, kStockCommandWeight},
    {5, _StockPunchedMap, kStockCommandPunched},
    {6, _SidesCoatedMap, kStockCommandSidesCoated},
    {7, _CoatingTypeMap, kStockCommandCoatingType},
    {8, _FinishMap, 0},
    {9, _GrainMap, 0},
};

int32_t advancedValue(const Stock& s, int32_t id)
{
    switch (id) {
    case 1:
        return s.size();
    case 2:
        return s.color();
    case 3:
        return s.type();
    case 4:
        return s.weight();
    case 5:
        return s.punched();
    case 6:
        return s.sidesCoated();
    case 7:
        return s.coatingType();
    case 8:
        return s.finish();
    default:
        return s.grain();
    }
}

struct AdvancedDialog {
    const Bundle* bundle = nullptr;
    JobContext context = kJobContextJob;
    StockCommandDialogs dialogs; // the attribute dialogs a "Custom..." row opens
    QComboBox* popups[std::size(kAdvancedRows)] = {};
    QLabel* summary = nullptr;
    QWidget* coating = nullptr;
    Stock edited;
};

void advancedSyncToUI(AdvancedDialog& d)
{
    for (size_t i = 0; i < std::size(kAdvancedRows); ++i) {
        const QSignalBlocker blocker(d.popups[i]);
        const int32_t value = advancedValue(d.edited, kAdvancedRows[i].id);
        // A weight the menu does not list is a custom one; any other unlisted value shows blank.
        if (!SetPopupButtonToTicketValue(d.popups[i], value) &&
            !(kAdvancedRows[i].map == _WeightMap && SetPopupButtonToTicketValue(d.popups[i], kStockWeightCustomRow)))
            d.popups[i]->setCurrentIndex(-1);
    }
    // The coating kind means something only on a coated sheet.
    const int32_t sides = d.edited.sidesCoated();
    d.coating->setEnabled(sides != kNotSet && sides != 1);
    d.coating->setToolTip(d.coating->isEnabled() ? QString()
                                                 : LocalizedText(*d.bundle, "StockDialog Coating Needs Coated"));
    std::string summary;
    const StockTextSource texts = MakeStockTextSource(*d.bundle);
    ShowStockSummary(&texts, &summary, &d.edited, d.context);
    d.summary->setText(QString::fromStdString(summary));
}

void advancedChosen(AdvancedDialog& d, size_t row)
{
    const AdvancedRow& r = kAdvancedRows[row];
    const int32_t value = GetPopupButtonTicketValue(d.popups[row]);
    if (r.command)
        ApplyStockCommand(d.edited, r.command, value, d.context, d.dialogs);
    else if (r.map == _FinishMap)
        d.edited.setFinish(value);
    else
        d.edited.setGrain(value);
    advancedSyncToUI(d);
}

std::optional<int32_t> positive(int32_t v) { return v > 0 && v != kNotSet ? std::optional(v) : std::nullopt; }

} // namespace

std::optional<StockDimensions> RunModalCustomStockSizeDialog(const Bundle& bundle, const Stock& stock,
                                                             const MediaLimits& limits, QWidget* parent)
{
    std::unique_ptr<QDialog> dialog = loadDialog(bundle, "CustomSize", parent);
    if (!dialog)
        return std::nullopt;
    SizeDialog d;
    d.bundle = &bundle;
    d.dialog = dialog.get();
    QDialog* w = d.dialog;
    d.fields[0] = control<QLineEdit>(w, kWidthFieldID);
    d.fields[1] = control<QLineEdit>(w, kLengthFieldID);
    d.ranges[0] = control<QLabel>(w, kWidthRangeID);
    d.ranges[1] = control<QLabel>(w, kLengthRangeID);
    d.inches = control<QRadioButton>(w, kInchesID);
    d.millimetres = control<QRadioButton>(w, kMillimetresID);
    d.message = control<QLabel>(w, kSizeMessageID);
    auto* ok = control<QPushButton>(w, kOKID);
    auto* cancel = control<QPushButton>(w, kCancelID);
    if (!d.fields[0] || !d.fields[1] || !d.ranges[0] || !d.ranges[1] || !d.inches || !d.millimetres || !d.message ||
        !ok || !cancel) {
        std::fprintf(stderr, "Stock dialogs: the CustomSize window lacks a control\n");
        return std::nullopt;
    }
    d.message->hide();
    sizeLimits(limits, d.minimum, d.maximum);
    if (std::optional<StockDimensions> start = startingSize(stock)) {
        d.hmm[0] = start->width;
        d.hmm[1] = start->length;
    }
    const bool inches = d.locale.measurementSystem() == QLocale::ImperialUSSystem;
    (inches ? d.inches : d.millimetres)->setChecked(true);
    switchUnit(d);
    for (int i = 0; i < 2; ++i) {
        // Digits and the decimal point only; the value itself is checked on OK.
        d.fields[i]->setValidator(new QRegularExpressionValidator(
            QRegularExpression(
                QStringLiteral("[0-9]{0,5}(%1[0-9]{0,3})?").arg(QRegularExpression::escape(d.locale.decimalPoint()))),
            d.fields[i]));
        QObject::connect(d.fields[i], &QLineEdit::textChanged, w, [&d, i](const QString& text) {
            clearMark(d.fields[i], d.message);
            d.hmm[i] = parseHmm(d.locale, text, d.inches->isChecked());
        });
    }
    d.fields[0]->setFocus();
    d.fields[0]->selectAll();
    QObject::connect(d.inches, &QRadioButton::toggled, w, [&d] { switchUnit(d); });
    QObject::connect(cancel, &QPushButton::clicked, w, &QDialog::reject);
    QObject::connect(ok, &QPushButton::clicked, w, [&d] {
        if (acceptSize(d))
            d.dialog->accept();
    });
    if (w->exec() != QDialog::Accepted)
        return std::nullopt;
    return StockDimensions{*d.hmm[0], *d.hmm[1]};
}

std::optional<std::string> RunModalCustomStockColorDialog(const Bundle& bundle, const Stock& stock, QWidget* parent)
{
    EntryFields fields;
    fields.titleKey = "StockDialog Custom Color Title";
    fields.textLabelKey = "StockDialog Color Name:";
    fields.text = QString::fromStdString(stock.customColor().value_or(""));
    fields.textLimit = kStockNameLimit;
    auto result = runEntry(bundle, fields, parent);
    return result ? std::optional(result->text) : std::nullopt;
}

std::optional<std::string> RunModalCustomStockTypeDialog(const Bundle& bundle, const Stock& stock, QWidget* parent)
{
    EntryFields fields;
    fields.titleKey = "StockDialog Custom Type Title";
    fields.textLabelKey = "StockDialog Type Name:";
    if (stock.type() == kStockTypeCustom)
        fields.text = QString::fromStdString(stock.customType().value_or(""));
    fields.textLimit = kStockNameLimit;
    auto result = runEntry(bundle, fields, parent);
    return result ? std::optional(result->text) : std::nullopt;
}

std::optional<OrderedStockChoice> RunModalOrderedStockDialog(const Bundle& bundle, const Stock& stock, QWidget* parent)
{
    EntryFields fields;
    fields.titleKey = "StockDialog Ordered Title";
    fields.textLabelKey = "StockDialog Ordered Name:";
    if (stock.type() == kStockTypeOrdered) {
        fields.text = QString::fromStdString(stock.customType().value_or(""));
        fields.number = positive(stock.modulus());
    }
    fields.textLimit = kStockNameLimit;
    fields.numberLabelKey = "StockDialog Ordered Count:";
    fields.minimum = kStockCountMinimum;
    fields.maximum = kStockCountMaximum;
    auto result = runEntry(bundle, fields, parent);
    return result ? std::optional(OrderedStockChoice{result->text, result->number}) : std::nullopt;
}

std::optional<int32_t> RunModalPrecutTabDialog(const Bundle& bundle, const Stock& stock, QWidget* parent)
{
    EntryFields fields;
    fields.titleKey = "StockDialog Precut Tab Title";
    fields.numberLabelKey = "StockDialog Tab Count:";
    fields.minimum = kStockCountMinimum;
    fields.maximum = kStockCountMaximum;
    if (stock.type() == kStockTypePrecutTab)
        fields.number = positive(stock.modulus());
    auto result = runEntry(bundle, fields, parent);
    return result ? std::optional(result->number) : std::nullopt;
}

std::optional<int32_t> RunModalCustomWeightDialog(const Bundle& bundle, const Stock& stock, QWidget* parent)
{
    EntryFields fields;
    fields.titleKey = "StockDialog Custom Weight Title";
    fields.numberLabelKey = "StockDialog Weight:";
    fields.minimum = kStockWeightMinimum;
    fields.maximum = kStockWeightMaximum;
    fields.number = positive(stock.weight());
    auto result = runEntry(bundle, fields, parent);
    return result ? std::optional(result->number) : std::nullopt;
}

std::optional<std::string> RunModalStockDescriptionDialog(const Bundle& bundle, const Stock& stock, QWidget* parent)
{
    EntryFields fields;
    fields.titleKey = "StockDialog Description Title";
    fields.textLabelKey = "StockDialog Description:";
    fields.text = QString::fromStdString(stock.description().value_or(""));
    fields.textLimit = kStockDescriptionLimit;
    fields.textRequired = false;
    auto result = runEntry(bundle, fields, parent);
    return result ? std::optional(result->text) : std::nullopt;
}

bool RunModalAdvancedStockDialog(const Bundle& bundle, JobContext context, Stock& stock,
                                 const StockCommandDialogs& dialogs, QWidget* parent)
{
    std::unique_ptr<QDialog> dialog = loadDialog(bundle, "Advanced", parent);
    if (!dialog)
        return false;
    QDialog* w = dialog.get();
    AdvancedDialog d;
    d.bundle = &bundle;
    d.context = context;
    d.dialogs = dialogs;
    d.dialogs.advanced = nullptr; // no way back into this dialog from its own rows
    d.dialogs.library = nullptr;
    d.summary = control<QLabel>(w, kAdvancedSummaryID);
    auto* ok = control<QPushButton>(w, kOKID);
    auto* cancel = control<QPushButton>(w, kCancelID);
    bool found = d.summary && ok && cancel;
    for (size_t i = 0; i < std::size(kAdvancedRows); ++i) {
        d.popups[i] = control<QComboBox>(w, kAdvancedRows[i].id);
        found = found && d.popups[i];
        if (d.popups[i])
            PopulatePopupButtonFromMap(bundle, d.popups[i], kAdvancedRows[i].map, context, 0);
    }
    if (!found) {
        std::fprintf(stderr, "Stock dialogs: the Advanced window lacks a control\n");
        return false;
    }
    d.coating = d.popups[6];
    d.edited = stock;
    advancedSyncToUI(d);
    for (size_t i = 0; i < std::size(kAdvancedRows); ++i)
        QObject::connect(d.popups[i], &QComboBox::activated, w, [&d, i] { advancedChosen(d, i); });
    QObject::connect(cancel, &QPushButton::clicked, w, &QDialog::reject);
    QObject::connect(ok, &QPushButton::clicked, w, &QDialog::accept);
    if (w->exec() != QDialog::Accepted)
        return false;
    stock = d.edited;
    return true;
}

StockCommandDialogs MakeStockCommandDialogs(QWidget* parent, const Bundle& bundle, const MediaLimits* limits,
                                            JobContext context)
{
    // The parent may go before the callbacks do; a dialog then opens without one.
    const QPointer<QWidget> owner(parent);
    const std::optional<MediaLimits> fixed = limits ? std::optional(*limits) : std::nullopt;
    StockCommandDialogs d;
    d.customSize = [=](const Stock& s) {
        return RunModalCustomStockSizeDialog(bundle, s, fixed ? *fixed : GetMediaLimits(), owner.data());
    };
    d.customColor = [=](const Stock& s) { return RunModalCustomStockColorDialog(bundle, s, owner.data()); };
    d.customType = [=](const Stock& s) { return RunModalCustomStockTypeDialog(bundle, s, owner.data()); };
    d.orderedStock = [=](const Stock& s) { return RunModalOrderedStockDialog(bundle, s, owner.data()); };
    d.precutTab = [=](const Stock& s) { return RunModalPrecutTabDialog(bundle, s, owner.data()); };
    d.customWeight = [=](const Stock& s) { return RunModalCustomWeightDialog(bundle, s, owner.data()); };
    d.description = [=](const Stock& s) { return RunModalStockDescriptionDialog(bundle, s, owner.data()); };
    const StockCommandDialogs attributes = d;
    d.advanced = [=](Stock& s) { return RunModalAdvancedStockDialog(bundle, context, s, attributes, owner.data()); };
    return d;
}

} // namespace talmo
