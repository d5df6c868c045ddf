// Arbitrary property lists into the colour, background forms and image shift records: every
// dictionary found at the root or one level down goes through each record's reader, its
// writer and its summary. The dictionary forms must be stable after one pass.
#include "ticket/ticket.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace {

// Background forms records load and save their history: keep that in a private folder.
struct PrivatePreferences {
    PrivatePreferences()
    {
        char pattern[] = "/tmp/talmo-fuzz-color-XXXXXX";
        if (!mkdtemp(pattern))
            std::abort();
        root = pattern;
        setenv("XDG_CONFIG_HOME", (root + "/config").c_str(), 1);
        setenv("XDG_DATA_HOME", (root + "/data").c_str(), 1);
        setenv("XDG_DATA_DIRS", (root + "/shipped").c_str(), 1);
    }
    ~PrivatePreferences()
    {
        std::error_code ec;
        std::filesystem::remove_all(root, ec);
    }
    std::string root;
};

std::string label(std::string_view key) { return std::string(key); }

void check(bool ok)
{
    if (!ok)
        __builtin_trap();
}

void feed(const talmo::pl::DictPtr& d)
{
    using namespace talmo;

    const FullColorOptions color(d);
    auto colorOnce = color.asTicket();
    check(pl::equal(FullColorOptions(colorOnce).asTicket(), colorOnce));
    std::string shown;
    ShowFullColorSummary(color, 4, label, &shown);
    GenerateFullColorSummary(color, 0, "\n", label);

    _IS_Options shift;
    ImageShiftSetOptionsFromTicket(&shift, d);
    ApplyImageShiftOption(shift);
    ImageShiftSwitchUnits(shift, shift.inches == 0);
    GenerateImageShiftSummary(shift, 0, label);
    if (auto written = ImageShiftCreateTicketFromOptions(&shift, 0)) {
        _IS_Options again;
        ImageShiftSetOptionsFromTicket(&again, written);
        check(again.option == shift.option && again.inches == shift.inches);
    }
    Ticket ticket;
    if (ticket.loadDictionary(d, kImageShiftTicketCreator) == noErr)
        ImageShiftSync(&shift, kImageShiftSyncFromTicket, &ticket);

    const BackgroundFormsOptions forms(d);
    auto formsOnce = forms.asTicket();
    check(pl::equal(BackgroundFormsOptions(formsOnce).asTicket(), formsOnce));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static PrivatePreferences prefs;
    auto root = talmo::pl::readPlist(std::string_view(reinterpret_cast<const char*>(data), size));
    auto dict = talmo::pl::as<talmo::pl::Dictionary>(root);
    if (!dict)
        return 0;
    feed(dict);
    for (const auto& [key, value] : *dict)
        if (auto nested = talmo::pl::as<talmo::pl::Dictionary>(value))
            feed(nested);
    return 0;
}
