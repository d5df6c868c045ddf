// The special pages list as a table model over the panel's state: rows cost only what the view
// asks for, so a list of 99,995 inserts shows and scrolls as fast as a short one.
#pragma once

#include "panels/specialpages/specialpages-summary.h"

#include <QAbstractTableModel>

namespace talmo::specialpages {

class SpecialPagesModel final : public QAbstractTableModel {
public:
    enum Column { KindColumn, PagesColumn, DetailsColumn, ColumnCount };

    SpecialPagesModel(const SpecialPagesState* state, StockTextSource texts, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // The state changed wholesale (a dialog, a command, a sync): the view asks again.
    void reload();

private:
    const SpecialPagesState* state_;
    StockTextSource texts_;
};

} // namespace talmo::specialpages
