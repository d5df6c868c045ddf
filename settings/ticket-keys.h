// Job-level keys of the print settings ticket, and the other names of the same family (file
// names, preference keys). Every item of the ticket that this system writes is listed in
// kJobLevelTicketKeys with its value type and whether TPIF carries it.
#pragma once

#include <cstddef>

namespace talmo {

// --- Print settings ticket items ---
inline constexpr const char* kJobLevelStockKey = "com.talmo.print.JobLevelStock"; // dictionary (job paper stock)
inline constexpr const char* kFinishingOutputDestinationKey = "com.talmo.print.FinishingOutputDestination"; // number
inline constexpr const char* kFinishingOutputColorKey = "com.talmo.print.FinishingOutputColor";             // number
inline constexpr const char* kJobTypeKey = "com.talmo.print.JobType";                               // dictionary
inline constexpr const char* kBackgroundFormsOptionsKey = "com.talmo.print.BackgroundFormsOptions"; // dictionary
inline constexpr const char* kFinishingDuplexKey = "com.talmo.print.FinishingDuplex";               // number
inline constexpr const char* kFinishingOptionsKey = "com.talmo.print.FinishingOptions";             // number
inline constexpr const char* kFinishingOffsetKey = "com.talmo.print.FinishingOffset";               // number
inline constexpr const char* kFinishingOffsetEnableSubsetKey = "com.talmo.print.FinishingOffsetEnableSubset"; // number
inline constexpr const char* kFinishingOffsetPagesPerSubsetKey =
    "com.talmo.print.FinishingOffsetPagesPerSubset";                                                        // number
inline constexpr const char* kFinishingSlipSheetKey = "com.talmo.print.FinishingSlipSheet";                 // number
inline constexpr const char* kFinishingFoldValueKey = "com.talmo.print.FinishingFoldValue";                 // number
inline constexpr const char* kFinishingZFoldValueKey = "com.talmo.print.FinishingZFoldValue";               // number
inline constexpr const char* kFinishingHolePunchValueKey = "com.talmo.print.FinishingHolePunchValue";       // number
inline constexpr const char* kFinishingHolePunchOptionsKey = "com.talmo.print.FinishingHolePunchOptions";   // number
inline constexpr const char* kFinishingStaple1ValueKey = "com.talmo.print.FinishingStaple1Value";           // number
inline constexpr const char* kFinishingStaple2ValueKey = "com.talmo.print.FinishingStaple2Value";           // number
inline constexpr const char* kFinishingStapleCenterValueKey = "com.talmo.print.FinishingStapleCenterValue"; // number
inline constexpr const char* kFinishingBindValueKey = "com.talmo.print.FinishingBindValue";                 // number
inline constexpr const char* kFinishingCustomKey = "com.talmo.print.FinishingCustom";                       // string
inline constexpr const char* kBookletLayoutKey = "com.talmo.print.BookletLayout";                           // Boolean
inline constexpr const char* kBookletDrawOutlinesKey = "com.talmo.print.BookletDrawOutlines";               // number
inline constexpr const char* kBookletForceNewSizeKey = "com.talmo.print.BookletForceNewSize";               // Boolean
inline constexpr const char* kGutterKey = "com.talmo.print.Gutter";                                         // number
inline constexpr const char* kCreepKey = "com.talmo.print.Creep";                                           // number
inline constexpr const char* kBookletFoldStapleKey = "com.talmo.print.BookletFoldStaple";                   // number
inline constexpr const char* kSpecialPagesFrontCoverKey = "com.talmo.print.SpecialPages.FrontCover";       // dictionary
inline constexpr const char* kSpecialPagesBackCoverKey = "com.talmo.print.SpecialPages.BackCover";         // dictionary
inline constexpr const char* kSpecialPagesInsertListKey = "com.talmo.print.SpecialPages.InsertList";       // array
inline constexpr const char* kSpecialPagesExceptionListKey = "com.talmo.print.SpecialPages.ExceptionList"; // array
inline constexpr const char* kImageShiftOptionsJobKey = "com.talmo.print.ImageShiftOptionsJob";            // dictionary
inline constexpr const char* kImageShiftOptionsPageKey =
    "com.talmo.print.ImageShiftOptionsPage"; // dictionary (inside an exception page)
inline constexpr const char* kFullColorOptionsKey = "com.talmo.print.FullColorOptions";                 // dictionary
inline constexpr const char* kAntialiasingKey = "com.talmo.print.Antialiasing";                         // number
inline constexpr const char* kHalftoneScreenKey = "com.talmo.print.HalftoneScreen";                     // number
inline constexpr const char* kResolutionKey = "com.talmo.print.Resolution";                             // number
inline constexpr const char* kInvertImageOptionsKey = "com.talmo.print.InvertImageOptions";             // dictionary
inline constexpr const char* kLightenDarkenKey = "com.talmo.print.LightenDarken";                       // number
inline constexpr const char* kTonerSaverKey = "com.talmo.print.TonerSaver";                             // number
inline constexpr const char* kHighlightColorOptionsJobKey = "com.talmo.print.HighlightColorOptionsJob"; // dictionary
inline constexpr const char* kDravikEmulationKey = "com.talmo.print.DravikEmulation";                   // number
inline constexpr const char* kJobNotesUseJobNameKey = "com.talmo.print.JobNotesUseJobName";             // Boolean
inline constexpr const char* kJobNotesJobNameKey = "com.talmo.print.JobNotesJobName";                   // string
inline constexpr const char* kJobNotesSenderUseLoginNameKey = "com.talmo.print.JobNotesSenderUseLoginName"; // Boolean
inline constexpr const char* kJobNotesSenderNameKey = "com.talmo.print.JobNotesSenderName";                 // string
inline constexpr const char* kJobNotesRecipientUseLoginNameKey =
    "com.talmo.print.JobNotesRecipientUseLoginName";                                      // Boolean
inline constexpr const char* kJobNotesRecipientKey = "com.talmo.print.JobNotesRecipient"; // string
inline constexpr const char* kJobNotesMessageKey = "com.talmo.print.JobNotesMessage";     // string (removed when empty)
inline constexpr const char* kJobNotesSheetMessageKey =
    "com.talmo.print.JobNotesSheetMessage"; // string (removed when empty)
inline constexpr const char* kJobNotesAdditionalInfoKey =
    "com.talmo.print.JobNotesAdditionalInfo"; // string (removed by 6.4)
inline constexpr const char* kAdvancedBookletLayoutOrderStrKey =
    "com.talmo.print.AdvancedBookletLayoutOrderStr";                                                 // number
inline constexpr const char* kAdvancedRotateImage180Key = "com.talmo.print.AdvancedRotateImage180";  // number
inline constexpr const char* kEmitTPIFKey = "com.talmo.print.EmitTPIF";                              // number
inline constexpr const char* kOPISubsitutionKey = "com.talmo.print.OPISubsitution";                  // number
inline constexpr const char* kOPIPrescanKey = "com.talmo.print.OPIPrescan";                          // number
inline constexpr const char* kOutputOrderKey = "com.talmo.print.OutputOrder";                        // number
inline constexpr const char* kPagesToPrintSelectedKey = "com.talmo.print.PagesToPrintSelected";      // number
inline constexpr const char* kPagesToPrintFromKey = "com.talmo.print.PagesToPrintFrom";              // number
inline constexpr const char* kPagesToPrintToKey = "com.talmo.print.PagesToPrintTo";                  // number
inline constexpr const char* kWatermarkKey = "com.talmo.print.watermark.Watermark";                  // string
inline constexpr const char* kWatermarkOptionKey = "com.talmo.print.watermark.Option";               // number
inline constexpr const char* kWatermarkFirstPageOnlyKey = "com.talmo.print.watermark.FirstPageOnly"; // number
inline constexpr const char* kTPIFOptionsKey = "com.talmo.print.TPIFOptions"; // dictionary {"TPIFOptionAll": true}
inline constexpr const char* kRotateBooklet180DegreesKey =
    "com.talmo.print.RotateBooklet180Degrees"; // removed on every save
inline constexpr const char* kControllerInformationControllerFamilyKey =
    "com.talmo.print.ControllerInformation.ControllerFamily"; // string "Kestra"
inline constexpr const char* kControllerInformationControllerVersionKey =
    "com.talmo.print.ControllerInformation.ControllerVersion"; // string "6.0"
inline constexpr const char* kClientInformationUserNameKey = "com.talmo.print.ClientInformation.UserName"; // string
inline constexpr const char* kClientInformationComputerNameKey =
    "com.talmo.print.ClientInformation.ComputerName";                                                        // string
inline constexpr const char* kClientInformationIPAddressKey = "com.talmo.print.ClientInformation.IPAddress"; // string

// --- Names of the same family that are not ticket items ---
inline constexpr const char* kExtensionKindKey = "com.talmo.print.pde.talmofeatureskind";
inline constexpr const char* kBundleIdentifier = "com.talmo.print.pde.talmofeatures.pressline";
inline constexpr const char* kInputHistoryFile = "com.talmo.print.inputhistory.plist";
inline constexpr const char* kJobNotesFile = "com.talmo.print.jobnotes.plist";
inline constexpr const char* kWatermarksFile = "com.talmo.printing.watermarks.plist";
inline constexpr const char* kBackgroundFormsFile = "com.talmo.print.backgroundforms";
inline constexpr const char* kStockLibraryFile = "com.talmo.print.stocklibrary";
inline constexpr const char* kStockLibraryPreferencesKey = "com.talmo.print.StockLibrary.Preferences";
inline constexpr const char* kStockLibraryUUIDKey = "com.talmo.print.StockLibrary.UUID";
inline constexpr const char* kStockLibraryNameKey = "com.talmo.print.StockLibrary.NameKey";
inline constexpr const char* kStockLibraryColumnWidthsKey = "com.talmo.print.StockLibrary.ColumnWidths";
inline constexpr const char* kStockLibrarySelectedRowKey = "com.talmo.print.StockLibrary.SelectedRow";
inline constexpr const char* kStockLibraryStockListKey = "com.talmo.print.StockLibrary.StockList";
inline constexpr const char* kStockLibraryStockMenuListKey = "com.talmo.print.StockLibrary.StockMenuList";
inline constexpr const char* kThreadNameFormat = "com.talmo.print.pde.Thread-%d"; // printf format
inline constexpr const char* kAboutKey = "com.talmo.print.about";

// --- The master table ---
enum class TicketValueType { Number, Boolean, String, Dictionary, Array, Removed };
// Yes: written by the TPIF writer and set by the import; ImportOnly: set by the import only.
enum class TicketTPIF { No, Yes, ImportOnly };

struct TicketKeyInfo {
    const char* key;
    TicketValueType type;
    TicketTPIF tpif;
};

inline constexpr TicketKeyInfo kJobLevelTicketKeys[] = {
    {kJobLevelStockKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kFinishingOutputDestinationKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingOutputColorKey, TicketValueType::Number, TicketTPIF::Yes},
    {kJobTypeKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kBackgroundFormsOptionsKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kFinishingDuplexKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingOptionsKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingOffsetKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingOffsetEnableSubsetKey, TicketValueType::Number, TicketTPIF::ImportOnly},
    {kFinishingOffsetPagesPerSubsetKey, TicketValueType::Number, TicketTPIF::ImportOnly},
    {kFinishingSlipSheetKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingFoldValueKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingZFoldValueKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingHolePunchValueKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingHolePunchOptionsKey, TicketValueType::Number, TicketTPIF::ImportOnly},
    {kFinishingStaple1ValueKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingStaple2ValueKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingStapleCenterValueKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingBindValueKey, TicketValueType::Number, TicketTPIF::Yes},
    {kFinishingCustomKey, TicketValueType::String, TicketTPIF::ImportOnly},
    {kBookletLayoutKey, TicketValueType::Boolean, TicketTPIF::No},
    {kBookletDrawOutlinesKey, TicketValueType::Number, TicketTPIF::No},
    {kBookletForceNewSizeKey, TicketValueType::Boolean, TicketTPIF::No},
    {kGutterKey, TicketValueType::Number, TicketTPIF::No},
    {kCreepKey, TicketValueType::Number, TicketTPIF::No},
    {kBookletFoldStapleKey, TicketValueType::Number, TicketTPIF::Yes},
    {kSpecialPagesFrontCoverKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kSpecialPagesBackCoverKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kSpecialPagesInsertListKey, TicketValueType::Array, TicketTPIF::Yes},
    {kSpecialPagesExceptionListKey, TicketValueType::Array, TicketTPIF::Yes},
    {kImageShiftOptionsJobKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kImageShiftOptionsPageKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kFullColorOptionsKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kAntialiasingKey, TicketValueType::Number, TicketTPIF::Yes},
    {kHalftoneScreenKey, TicketValueType::Number, TicketTPIF::Yes},
    {kResolutionKey, TicketValueType::Number, TicketTPIF::Yes},
    {kInvertImageOptionsKey, TicketValueType::Dictionary, TicketTPIF::No},
    {kLightenDarkenKey, TicketValueType::Number, TicketTPIF::Yes},
    {kTonerSaverKey, TicketValueType::Number, TicketTPIF::Yes},
    {kHighlightColorOptionsJobKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kDravikEmulationKey, TicketValueType::Number, TicketTPIF::Yes},
    {kJobNotesUseJobNameKey, TicketValueType::Boolean, TicketTPIF::Yes},
    {kJobNotesJobNameKey, TicketValueType::String, TicketTPIF::Yes},
    {kJobNotesSenderUseLoginNameKey, TicketValueType::Boolean, TicketTPIF::No},
    {kJobNotesSenderNameKey, TicketValueType::String, TicketTPIF::Yes},
    {kJobNotesRecipientUseLoginNameKey, TicketValueType::Boolean, TicketTPIF::No},
    {kJobNotesRecipientKey, TicketValueType::String, TicketTPIF::Yes},
    {kJobNotesMessageKey, TicketValueType::String, TicketTPIF::Yes},
    {kJobNotesSheetMessageKey, TicketValueType::String, TicketTPIF::Yes},
    {kJobNotesAdditionalInfoKey, TicketValueType::String, TicketTPIF::Yes},
    {kAdvancedBookletLayoutOrderStrKey, TicketValueType::Number, TicketTPIF::No},
    {kAdvancedRotateImage180Key, TicketValueType::Number, TicketTPIF::Yes},
    {kEmitTPIFKey, TicketValueType::Number, TicketTPIF::No},
    {kOPISubsitutionKey, TicketValueType::Number, TicketTPIF::Yes},
    {kOPIPrescanKey, TicketValueType::Number, TicketTPIF::Yes},
    {kOutputOrderKey, TicketValueType::Number, TicketTPIF::Yes},
    {kPagesToPrintSelectedKey, TicketValueType::Number, TicketTPIF::Yes},
    {kPagesToPrintFromKey, TicketValueType::Number, TicketTPIF::Yes},
    {kPagesToPrintToKey, TicketValueType::Number, TicketTPIF::Yes},
    {kWatermarkKey, TicketValueType::String, TicketTPIF::No},
    {kWatermarkOptionKey, TicketValueType::Number, TicketTPIF::No},
    {kWatermarkFirstPageOnlyKey, TicketValueType::Number, TicketTPIF::No},
    {kTPIFOptionsKey, TicketValueType::Dictionary, TicketTPIF::Yes},
    {kRotateBooklet180DegreesKey, TicketValueType::Removed, TicketTPIF::No},
    {kControllerInformationControllerFamilyKey, TicketValueType::String, TicketTPIF::Yes},
    {kControllerInformationControllerVersionKey, TicketValueType::String, TicketTPIF::Yes},
    {kClientInformationUserNameKey, TicketValueType::String, TicketTPIF::Yes},
    {kClientInformationComputerNameKey, TicketValueType::String, TicketTPIF::Yes},
    {kClientInformationIPAddressKey, TicketValueType::String, TicketTPIF::Yes},
};
inline constexpr size_t kJobLevelTicketKeyCount = sizeof(kJobLevelTicketKeys) / sizeof(kJobLevelTicketKeys[0]);

} // namespace talmo
