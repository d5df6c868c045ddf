// The printer's papers as the library dialog shows them: a detached list with one entry per
// stock of the printer's last answer, replaced each time the printer has answered.
#pragma once

#include "paperlib/library.h"

#include <memory>
#include <vector>

namespace talmo {

// One entry per stock, named by its custom name, then one default paper.
std::unique_ptr<StockLibraryList> MakePrinterPaperList(const std::vector<Stock>& stocks);
// The current printer list (main thread only); null before the printer first answered.
StockLibraryList* PrinterPaperList();
void SetPrinterPaperList(std::unique_ptr<StockLibraryList> list);

} // namespace talmo
