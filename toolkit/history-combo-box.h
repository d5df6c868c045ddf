// The combo box with input history: an editable field whose menu offers the rows of a setting
// map and the strings entered before (the input history kept under the field's history key in
// "com.talmo.print.inputhistory.plist").
//
// Its value is the typed or picked text, or the ticket value of a map row when that row is
// chosen and its label not edited. When the owning dialog is accepted a typed or picked text
// joins the history (at the front, the history cut to the field's limit); a window that is not
// a QDialog (a panel) calls commitHistory when it saves.
#pragma once

#include "settings/settings.h"

#include <QComboBox>

#include <optional>
#include <string>
#include <variant>

namespace talmo {

class HistoryComboBox : public QComboBox {
    Q_OBJECT

public:
    using Value = std::variant<std::monostate, QString, int32_t>;

    explicit HistoryComboBox(QWidget* parent = nullptr);
    // Replaces a placeholder (see control-replace.h).
    static HistoryComboBox* adopt(QWidget* placeholder);

    // Fills the menu from the map (map items with `mapCommand`) and the history under
    // `historyKey` (after item `insertPosition`, with `historyCommand`); returns the count of
    // PopulatePopupButtonFromMapAndHistory. `historyLimit` bounds the stored history (0: none).
    int32_t populate(const Bundle& bundle, const SettingMap* map, JobContext context, std::string historyKey,
                     int32_t historyLimit, int32_t insertPosition = 0, uint32_t historyCommand = 0,
                     uint32_t mapCommand = 0);

    Value value() const;
    // Shows a text as the value (an empty text is no value).
    void setText(const QString& text) { setEditText(text); }

    // The history update rule with the current value, when it is a text.
    HistoryWrite commitHistory();

private:
    std::string historyKey_;
    int32_t historyLimit_ = 0;
};

} // namespace talmo
