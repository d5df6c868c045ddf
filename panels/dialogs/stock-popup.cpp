#include "panels/dialogs/stock-popup.h"

#include "device/installable.h"
#include "device/ppd.h"
#include "paperlib/library.h"
#include "toolkit/toolkit.h"

#include <QActionGroup>
#include <QMenu>
#include <QPointer>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace talmo {

namespace {

constexpr char kCommandProperty[] = "stockCommand";
constexpr char kValueProperty[] = "stockValue";
constexpr char kEntryProperty[] = "stockEntry";
constexpr char kInserterKey[] = "PostPrintInserterKey";
constexpr size_t kShortNameLimit = 40; // characters of a paper name on the button

QString elided(const std::string& text)
{
    QString s = QString::fromStdString(text);
    if (static_cast<size_t>(s.size()) > kShortNameLimit)
        s = s.left(kShortNameLimit - 1) + QChar(0x2026);
    return s;
}

// The value a submenu's check mark follows. A weight the menu does not list is a custom one.
std::optional<int32_t> currentValue(const Stock& s, uint32_t command)
{
    switch (command) {
    case kStockCommandSize:
        return s.size();
    case kStockCommandColor:
        return s.color();
    case kStockCommandType:
        return s.type();
    case kStockCommandWeight:
        if (s.weight() != kNotSet && TicketToUI(_WeightMap, s.weight()) < 0)
            return kStockWeightCustomRow;
        return s.weight();
    case kStockCommandPunched:
        return s.punched();
    case kStockCommandSidesCoated:
        return s.sidesCoated();
    case kStockCommandCoatingType:
        return s.coatingType();
    case kStockCommandSource:
        return s.source();
    default:
        return std::nullopt;
    }
}

QAction* addCommand(QMenu* menu, const QString& text, uint32_t command, int32_t value)
{
    QAction* action = menu->addAction(text);
    action->setProperty(kCommandProperty, uint(command));
    action->setProperty(kValueProperty, value);
    return action;
}

// One choice per submenu, shown as radio marks; none is marked when the stock holds a value the
// menu does not offer.
QActionGroup* exclusiveGroup(QMenu* menu)
{
    auto* group = new QActionGroup(menu);
    group->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    return group;
}

QString sizeName(const Bundle& bundle, const Stock& s)
{
    if (s.size() == kStockSizeCustom && s.width() != kNotSet && s.length() != kNotSet) {
        // Stored in hundredths of a millimetre; whole millimetres are enough to recognise it.
        return LocalizedText(bundle, "StockPopup Custom Size",
                             {QString::number(s.width() / 100.0, 'f', s.width() % 100 ? 1 : 0),
                              QString::number(s.length() / 100.0, 'f', s.length() % 100 ? 1 : 0)});
    }
    const char* key = LocalizedKeyForPaperSizeTicketValue(CompleteStockSizeMap, s.size());
    return LocalizedText(bundle, key ? key : "Custom");
}

} // namespace

StockTextSource MakeStockTextSource(const Bundle& bundle)
{
    StockTextSource texts;
    texts.localized = [bundle](std::string_view key) { return bundle.localizedString(key, "STRING NOT FOUND"); };
    texts.mediaTypeText = [](int32_t type) -> std::optional<std::string> {
        const char* choice = PPDChoiceForTicketValue("MediaType", type);
        if (!choice)
            return std::nullopt;
        return PPDCopyChoiceText(PPDGetCurrent(), "MediaType", choice);
    };
    texts.installedOptionText = [bundle](std::string_view key) {
        std::string text = CopyLocalizedStringForInstalledFeatureFromPlugin(key, &bundle);
        // Until the printer's options are read, the bundle's own text names the option.
        return text == "STRING NOT FOUND" ? bundle.localizedString(key, "STRING NOT FOUND") : text;
    };
    return texts;
}

StockPopup::StockPopup(QWidget* parent, const Bundle& bundle, JobContext context)
    : QWidget(parent), bundle_(bundle), context_(context)
{
    DefaultStock(stock_, context_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    button_ = new QToolButton(this);
    button_->setPopupMode(QToolButton::InstantPopup);
    button_->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    menu_ = new QMenu(button_);
    button_->setMenu(menu_);
    summary_ = new StaticTextControl(this);
    summary_->setWordWrap(true);
    layout->addWidget(button_);
    layout->addWidget(summary_);
    setFocusProxy(button_);
    // The recent papers change in other dialogs; each opening shows the stored order.
    connect(menu_, &QMenu::aboutToShow, this, [this] { buildMenu(); });
    buildMenu();
    showStock();
}

void StockPopup::setStock(const Stock& stock)
{
    stock_ = stock;
    showStock();
}

void StockPopup::setDialogs(StockCommandDialogs dialogs)
{
    dialogs_ = std::move(dialogs);
    buildMenu();
}

void StockPopup::setReferenceStock(const Stock* reference)
{
    reference_ = reference;
    showStock();
}

StockCommandResult StockPopup::applyCommand(uint32_t command, int32_t value)
{
    const StockCommandResult result = ApplyStockCommand(stock_, command, value, context_, dialogs_);
    if (result == StockCommandResult::Unknown)
        return result;
    if (command == kStockCommandLibrary && result == StockCommandResult::Applied)
        rememberNamedPaper();
    showStock();
    // A cancelled dialog may still have changed the stock (a custom colour's text is emptied
    // first), so the owner hears of every command.
    emit stockChanged();
    return result;
}

QAction* StockPopup::findAction(uint32_t command, int32_t value) const
{
    for (QAction* action : menu_->findChildren<QAction*>()) {
        if (action->property(kCommandProperty).toUInt() == command && action->property(kValueProperty).toInt() == value)
            return action;
    }
    return nullptr;
}

QList<QAction*> StockPopup::recentActions() const
{
    QList<QAction*> recent;
    for (QAction* action : menu_->actions())
        if (action->property(kEntryProperty).isValid())
            recent.append(action);
    return recent;
}

QString StockPopup::shortName() const { return button_->text(); }

void StockPopup::addMapMenu(QMenu* parent, std::string_view titleKey, const MenuModel& model)
{
    QMenu* sub = parent->addMenu(LocalizedText(bundle_, titleKey));
    auto* group = exclusiveGroup(sub);
    for (const MenuItem& item : model.items) {
        if (item.separator) {
            sub->addSeparator();
            continue;
        }
        QAction* action = addCommand(sub, QString::fromStdString(item.label), item.command, item.reference);
        action->setCheckable(true);
        group->addAction(action);
        connect(action, &QAction::triggered, this,
                [this, command = item.command, value = item.reference] { applyCommand(command, value); });
    }
}

void StockPopup::buildMenu()
{
    menu_->clear();
    const QObjectList children = menu_->children();
    for (QObject* child : children)
        if (qobject_cast<QMenu*>(child) || qobject_cast<QActionGroup*>(child))
            delete child; // a submenu or mark group of the previous build
    // Recent named papers, newest first. An entry that left the library leaves the order too.
    {
        const RecentNamedPapers recent = ReadRecentNamedPapers();
        auto* group = exclusiveGroup(menu_);
        for (const auto& [uuid, entryDict] : recent.entries) {
            const StockLibrary entry(entryDict);
            const std::string& name = !entry.name().empty() ? entry.name() : entry.stock().customName().value_or("");
            QAction* action = menu_->addAction(elided(name.empty() ? uuid : name));
            action->setProperty(kEntryProperty, QString::fromStdString(uuid));
            action->setCheckable(true);
            group->addAction(action);
            action->setChecked(entry.stock() == stock_);
            connect(action, &QAction::triggered, this,
                    [this, id = action->property(kEntryProperty).toString()] { chooseRecent(id); });
        }
        if (!recent.gone.empty()) {
            StockLibraryOrderList order;
            for (const std::string& uuid : recent.gone)
                order.remove(uuid);
        }
        if (!recent.entries.empty())
            menu_->addSeparator();
    }
    QAction* library = addCommand(menu_, LocalizedText(bundle_, "StockPopup Named Paper..."), kStockCommandLibrary, 0);
    library->setEnabled(static_cast<bool>(dialogs_.library));
    connect(library, &QAction::triggered, this, [this] { applyCommand(kStockCommandLibrary, 0); });
    menu_->addSeparator();

    MenuModel model;
    PopulateStockSizeMenu(bundle_, model, context_);
    addMapMenu(menu_, "StockSize", model);
    model = {};
    PopulateStockColorMenu(bundle_, model, context_);
    addMapMenu(menu_, "StockColor", model);
    model = {};
    PopulateStockTypeMenu(bundle_, model, context_);
    addMapMenu(menu_, "StockType", model);
    const std::pair<const SettingMap*, std::pair<const char*, uint32_t>> maps[] = {
        {_WeightMap, {"StockWeight", kStockCommandWeight}},
        {_StockPunchedMap, {"StockPunched", kStockCommandPunched}},
        {_SidesCoatedMap, {"SidesCoated", kStockCommandSidesCoated}},
        {_CoatingTypeMap, {"StockPopup Coating Type", kStockCommandCoatingType}},
    };
    for (const auto& [map, menu] : maps) {
        model = {};
        PopulateMenuFromMap(bundle_, model, map, context_, menu.second);
        addMapMenu(menu_, menu.first, model);
    }
    if (context_ != kJobContextJob) {
        // The sheet of a page range may come from the post-process inserter instead of a tray.
        QMenu* source = menu_->addMenu(LocalizedText(bundle_, "StockPopup Source"));
        QAction* tray =
            addCommand(source, LocalizedText(bundle_, "StockPopup Source Tray"), kStockCommandSource, kNotSet);
        QAction* inserter =
            addCommand(source, QString::fromStdString(MakeStockTextSource(bundle_).installedOptionText(kInserterKey)),
                       kStockCommandSource, kStockSourceInserter);
        const bool installed = InstalledFeatureState(kInserterKey);
        inserter->setEnabled(installed);
        if (!installed)
            inserter->setToolTip(LocalizedText(bundle_, "StockPopup Inserter Not Installed"));
        source->setToolTipsVisible(true);
        auto* group = exclusiveGroup(source);
        for (QAction* action : {tray, inserter}) {
            action->setCheckable(true);
            group->addAction(action);
            connect(action, &QAction::triggered, this, [this, value = action->property(kValueProperty).toInt()] {
                applyCommand(kStockCommandSource, value);
            });
        }
    }
    menu_->addSeparator();
    QAction* description =
        addCommand(menu_, LocalizedText(bundle_, "StockPopup Description..."), kStockCommandDescription, 0);
    connect(description, &QAction::triggered, this, [this] { applyCommand(kStockCommandDescription, 0); });
    QAction* advanced = addCommand(menu_, LocalizedText(bundle_, "StockPopup Advanced..."), kStockCommandAdvanced, 0);
    advanced->setEnabled(static_cast<bool>(dialogs_.advanced));
    connect(advanced, &QAction::triggered, this, [this] { applyCommand(kStockCommandAdvanced, 0); });
    QAction* reset = addCommand(menu_, LocalizedText(bundle_, "StockPopup Default"), kStockCommandDefault, 0);
    connect(reset, &QAction::triggered, this, [this] { applyCommand(kStockCommandDefault, 0); });
    updateChecks();
}

void StockPopup::chooseRecent(const QString& uuid)
{
    const std::string id = uuid.toStdString();
    {
        StockLibraryList library;
        pl::DictPtr entryDict = library.stockList()->getDict(id);
        if (!entryDict)
            return; // deleted since the menu was built
        Stock chosen = StockLibrary(entryDict).stock();
        // As when the library dialog hands a paper over: what this printer lacks is dropped.
        validateAndFixStockEntry(chosen);
        stock_ = chosen;
    }
    StockLibraryOrderList().updateOrderList(id);
    showStock();
    emit stockChanged();
}

void StockPopup::rememberNamedPaper()
{
    if (stock_.customName().value_or("").empty())
        return;
    std::optional<std::string> uuid = StockLibraryList().findMatch(stock_);
    if (uuid)
        StockLibraryOrderList().updateOrderList(uuid);
}

void StockPopup::updateChecks()
{
    for (QAction* action : menu_->findChildren<QAction*>()) {
        if (!action->isCheckable() || action->property(kEntryProperty).isValid())
            continue;
        const uint32_t command = action->property(kCommandProperty).toUInt();
        const std::optional<int32_t> value = currentValue(stock_, command);
        action->setChecked(value && *value == action->property(kValueProperty).toInt());
    }
}

void StockPopup::showStock()
{
    QString name;
    const std::string customName = stock_.customName().value_or("");
    if (stock_.source() == kStockSourceInserter)
        name = QString::fromStdString(MakeStockTextSource(bundle_).installedOptionText(kInserterKey));
    else if (!customName.empty())
        name = LocalizedText(bundle_, "StockPopup Named", {elided(customName)});
    else if (stock_.size() != kNotSet)
        name = sizeName(bundle_, stock_);
    else if (context_ == kJobContextJob)
        name = LocalizedText(bundle_, "PrinterDefault");
    else if (reference_ && !reference_->customName().value_or("").empty())
        name = LocalizedText(bundle_, "StockPopup Job Paper",
                             {LocalizedText(bundle_, "StockPopup Named", {elided(*reference_->customName())})});
    else if (reference_ && reference_->size() != kNotSet)
        name = LocalizedText(bundle_, "StockPopup Job Paper", {sizeName(bundle_, *reference_)});
    else
        name = LocalizedText(bundle_, "UseJobSetting");
    button_->setText(name);
    // An instant pop-up's arrow is drawn over the text's end; keep room for it beside the text.
    button_->setMinimumWidth(button_->fontMetrics().horizontalAdvance(name) +
                             2 * button_->style()->pixelMetric(QStyle::PM_MenuButtonIndicator, nullptr, button_) + 16);
    button_->setToolTip(customName.empty() ? QString() : QString::fromStdString(customName));

    const StockTextSource texts = MakeStockTextSource(bundle_);
    std::string summary;
    ShowStockSummary(&texts, &summary, &stock_, context_);
    summary_->setText(QString::fromStdString(summary));
    button_->setAccessibleDescription(summary_->text());
    updateChecks();
}

StockPopup* AdoptStockPopup(QWidget* window, ControlID id, const Bundle& bundle, JobContext context)
{
    QWidget* found = GetControlByID(window, id);
    if (!found)
        return nullptr;
    if (auto* popup = qobject_cast<StockPopup*>(found))
        return popup;
    return static_cast<StockPopup*>(ReplaceControl(found, new StockPopup(found->parentWidget(), bundle, context)));
}

} // namespace talmo
