#include "panels/specialpages/specialpages-model.h"

#include <climits>

namespace talmo::specialpages {

SpecialPagesModel::SpecialPagesModel(const SpecialPagesState* state, StockTextSource texts, QObject* parent)
    : QAbstractTableModel(parent), state_(state), texts_(std::move(texts))
{
}

int SpecialPagesModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() || !state_)
        return 0;
    const long rows = SpecialPageRowCount(*state_);
    return rows > INT_MAX ? INT_MAX : static_cast<int>(rows);
}

int SpecialPagesModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : ColumnCount; }

QVariant SpecialPagesModel::data(const QModelIndex& index, int role) const
{
    if (!state_ || !index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return {};
    const Row row = SpecialPageRowAt(*state_, index.row());
    if (!row.page)
        return {};
    // The details are often longer than the column: the tool tip shows them whole.
    if (role == Qt::ToolTipRole && index.column() != DetailsColumn)
        return {};
    switch (index.column()) {
    case KindColumn:
        return QString::fromStdString(SpecialPageKindText(row, texts_));
    case PagesColumn:
        return QString::fromStdString(SpecialPagePagesText(row, texts_));
    case DetailsColumn:
        return QString::fromStdString(CopySpecialPageSummary(*row.page, texts_));
    default:
        return {};
    }
}

QVariant SpecialPagesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    static const char* const keys[ColumnCount] = {"SpecialPagesKindColumn", "SpecialPagesPagesColumn",
                                                  "SpecialPagesDetailsColumn"};
    if (section < 0 || section >= ColumnCount)
        return {};
    return QString::fromStdString(texts_.localized ? texts_.localized(keys[section]) : keys[section]);
}

void SpecialPagesModel::reload()
{
    beginResetModel();
    endResetModel();
}

} // namespace talmo::specialpages
