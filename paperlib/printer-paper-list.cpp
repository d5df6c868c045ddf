#include "paperlib/printer-paper-list.h"

namespace talmo {

namespace {
std::unique_ptr<StockLibraryList> gPrinterPaperList;
} // namespace

std::unique_ptr<StockLibraryList> MakePrinterPaperList(const std::vector<Stock>& stocks)
{
    auto list = std::make_unique<StockLibraryList>(true);
    for (const Stock& stock : stocks) {
        StockLibrary entry;
        entry.setStock(stock);
        entry.setName(stock.customName().value_or(""));
        list->add(&entry);
    }
    StockLibrary printerDefault;
    list->add(&printerDefault);
    return list;
}

StockLibraryList* PrinterPaperList() { return gPrinterPaperList.get(); }

void SetPrinterPaperList(std::unique_ptr<StockLibraryList> list) { gPrinterPaperList = std::move(list); }

} // namespace talmo
