// The small modal dialogs behind the stock menu commands: custom size, custom colour, custom
// type, ordered stock, pre-cut tab, custom weight and description. Each answers nullopt for
// Cancel; a value it refuses keeps it open with the field marked.
#pragma once

#include "platform/platform.h" // Bundle
#include "settings/environment.h"
#include "ticket/stock.h"

class QWidget;

namespace talmo {

// Limits of the entries; a custom size is held within the printer's media limits.
inline constexpr int kStockNameLimit = 63;         // custom colour, custom type, ordered stock
inline constexpr int kStockDescriptionLimit = 255; // characters
inline constexpr int32_t kStockCountMinimum = 1;   // ordered stock positions, pre-cut tabs
inline constexpr int32_t kStockCountMaximum = 99;
inline constexpr int32_t kStockWeightMinimum = 64;  // gsm; the range the paper library accepts
inline constexpr int32_t kStockWeightMaximum = 300; // without a weight map row

// Width and length in hundredths of a millimetre, whichever unit the user typed them in.
std::optional<StockDimensions> RunModalCustomStockSizeDialog(const Bundle& bundle, const Stock& stock,
                                                             const MediaLimits& limits, QWidget* parent = nullptr);
std::optional<std::string> RunModalCustomStockColorDialog(const Bundle& bundle, const Stock& stock,
                                                          QWidget* parent = nullptr);
std::optional<std::string> RunModalCustomStockTypeDialog(const Bundle& bundle, const Stock& stock,
                                                         QWidget* parent = nullptr);
std::optional<OrderedStockChoice> RunModalOrderedStockDialog(const Bundle& bundle, const Stock& stock,
                                                             QWidget* parent = nullptr);
std::optional<int32_t> RunModalPrecutTabDialog(const Bundle& bundle, const Stock& stock, QWidget* parent = nullptr);
std::optional<int32_t> RunModalCustomWeightDialog(const Bundle& bundle, const Stock& stock, QWidget* parent = nullptr);
// An empty description is allowed: it clears the stock's description.
std::optional<std::string> RunModalStockDescriptionDialog(const Bundle& bundle, const Stock& stock,
                                                          QWidget* parent = nullptr);

// Every attribute of the stock at once, on a copy: each popup's choice goes through
// ApplyStockCommand with `dialogs` (so "Custom..." rows open their dialogs); finish and grain are
// set directly. On OK the copy replaces `stock` and the answer is true.
bool RunModalAdvancedStockDialog(const Bundle& bundle, JobContext context, Stock& stock,
                                 const StockCommandDialogs& dialogs, QWidget* parent = nullptr);

// The dialogs above as the callbacks ApplyStockCommand runs, `advanced` included. Without
// `limits` the custom size asks GetMediaLimits() each time it opens (the current printer's).
// `library` is left empty for the caller; `context` labels the advanced dialog's defaults.
StockCommandDialogs MakeStockCommandDialogs(QWidget* parent, const Bundle& bundle, const MediaLimits* limits,
                                            JobContext context = kJobContextJob);

} // namespace talmo
