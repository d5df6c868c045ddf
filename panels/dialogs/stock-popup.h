// The paper stock pop-up of the Paper/Output panel and the special page dialogs: a menu button
// showing the stock's short name, its menu of recent named papers and attribute submenus, and
// the stock summary below it. Every choice goes through ApplyStockCommand.
#pragma once

#include "platform/platform.h" // Bundle
#include "ticket/stock.h"
#include "toolkit/interface-description.h" // ControlID

#include <QWidget>

class QAction;
class QMenu;
class QToolButton;

namespace talmo {

class StaticTextControl;

// The texts a stock summary needs, from the bundle and the current printer's description.
StockTextSource MakeStockTextSource(const Bundle& bundle);

class StockPopup : public QWidget {
    Q_OBJECT

public:
    StockPopup(QWidget* parent, const Bundle& bundle, JobContext context);

    // Shows `stock`; emits nothing.
    void setStock(const Stock& stock);
    const Stock& stock() const { return stock_; }
    // The dialogs the commands open. Without `library` "Named Paper..." is disabled.
    void setDialogs(StockCommandDialogs dialogs);
    // Page level: the job's stock, named on the button while the page uses the job setting.
    // The pointer must stay valid until replaced; null forgets it.
    void setReferenceStock(const Stock* reference);

    // Applies one menu choice as the menu does; emits stockChanged() unless the command is not
    // a stock command.
    StockCommandResult applyCommand(uint32_t command, int32_t value);

    QToolButton* button() const { return button_; }
    QMenu* menu() const { return menu_; }
    // The menu item that sends `command` with `value` (the first of the recent papers for
    // "Slib" items that carry an entry), or null.
    QAction* findAction(uint32_t command, int32_t value) const;
    // The recent papers' items, newest first.
    QList<QAction*> recentActions() const;
    // The button's text, e.g. "Named: Gloss 150" or the size.
    QString shortName() const;

signals:
    void stockChanged();

private:
    void buildMenu();
    void addMapMenu(QMenu* parent, std::string_view titleKey, const MenuModel& model);
    void chooseRecent(const QString& uuid);
    void rememberNamedPaper();
    void updateChecks();
    void showStock();

    Bundle bundle_;
    JobContext context_;
    Stock stock_;
    const Stock* reference_ = nullptr;
    StockCommandDialogs dialogs_;
    QToolButton* button_ = nullptr;
    QMenu* menu_ = nullptr;
    StaticTextControl* summary_ = nullptr;
};

// Replaces the placeholder with this id (any widget, e.g. a QToolButton) by a StockPopup, as
// AdoptControl does for the toolkit's controls; returns the pop-up, or null without such a
// control. Asking again returns the same pop-up.
StockPopup* AdoptStockPopup(QWidget* window, ControlID id, const Bundle& bundle, JobContext context);

} // namespace talmo
