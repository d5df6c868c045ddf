#include "toolkit/history-combo-box.h"

#include "toolkit/control-replace.h"
#include "toolkit/popup-menus.h"

#include <QDialog>

namespace talmo {

HistoryComboBox::HistoryComboBox(QWidget* parent) : QComboBox(parent)
{
    setEditable(true);
    // The history grows only through the update rule, never by pressing Return.
    setInsertPolicy(QComboBox::NoInsert);
}

HistoryComboBox* HistoryComboBox::adopt(QWidget* placeholder)
{
    auto* control = new HistoryComboBox;
    ReplaceControl(placeholder, control);
    return control;
}

int32_t HistoryComboBox::populate(const Bundle& bundle, const SettingMap* map, JobContext context,
                                  std::string historyKey, int32_t historyLimit, int32_t insertPosition,
                                  uint32_t historyCommand, uint32_t mapCommand)
{
    historyKey_ = std::move(historyKey);
    historyLimit_ = historyLimit;
    const int32_t count = PopulatePopupButtonFromMapAndHistory(
        bundle, this, map, context, historyKey_.empty() ? std::nullopt : std::optional<std::string_view>(historyKey_),
        insertPosition, historyCommand, mapCommand);
    if (auto* dialog = qobject_cast<QDialog*>(window()))
        connect(dialog, &QDialog::accepted, this, &HistoryComboBox::commitHistory, Qt::UniqueConnection);
    return count;
}

HistoryComboBox::Value HistoryComboBox::value() const
{
    const QString text = currentText();
    const int index = currentIndex();
    if (index >= 0 && itemText(index) == text && !itemData(index, kItemIsHistoryRole).toBool()) {
        const QVariant reference = itemData(index, kItemReferenceRole);
        if (reference.isValid())
            return int32_t(reference.toInt());
    }
    if (text.isEmpty())
        return std::monostate{};
    return text;
}

HistoryWrite HistoryComboBox::commitHistory()
{
    const Value current = value();
    const QString* text = std::get_if<QString>(&current);
    if (!text || historyKey_.empty())
        return HistoryWrite::Unchanged;
    return AddToInputHistory(historyKey_, text->toStdString(), historyLimit_);
}

} // namespace talmo
