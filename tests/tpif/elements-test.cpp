// Element layer: every fixed line, byte for byte, from records filled by hand.
#include "tpif-test-util.h"

using namespace talmo;
using tpiftest::StringSink;

namespace {

std::string command(int cmd, int32_t value)
{
    StringSink s;
    tpiftest::DiagCapture quiet;
    WriteTPifCommands(s.get(), cmd, value);
    return s.text;
}

std::string kw(const char* name, const char* value)
{
    return std::string("\t\t<") + name + " syntax=\"keyword\">" + value + "</" + name + ">\n";
}

struct CommandCase {
    int cmd;
    int32_t value;
    std::string expected;
};

TEST(TPifCommands, EveryCommandAndValue)
{
    const std::vector<CommandCase> cases = {
        {0, 3, "\t\t<copies syntax=\"integer\">3</copies>\n"},
        {1, 1, kw("sheet-collate", "collated")},
        {1, 0, kw("sheet-collate", "uncollated")},
        {1, 7, kw("sheet-collate", "uncollated")},
        {2, 0, kw("sides", "one-sided")},
        {2, 1, kw("sides", "two-sided-long-edge")},
        {2, 2, kw("sides", "two-sided-short-edge")},
        {2, 3, ""},
        {3, 0, "\t\t<orientation-requested syntax=\"enum\">3</orientation-requested>\n"},
        {3, 3, "\t\t<orientation-requested syntax=\"enum\">6</orientation-requested>\n"},
        {3, 4, ""},
        {4, 0, kw("output-bin", "automatic")},
        {4, 1, kw("output-bin", "top")},
        {4, 2, kw("output-bin", "stacker")},
        {4, 3, kw("output-bin", "side")},
        {4, 4, kw("output-bin", "top-1")},
        {4, 5, kw("output-bin", "top-2")},
        {4, 6, kw("output-bin", "stacker-1")},
        {4, 7, kw("output-bin", "stacker-2")},
        {4, 8, kw("output-bin", "top-1")},
        {4, 9, kw("output-bin", "stacker-1")},
        {4, -1, ""},
        {4, 10, ""},
        {5, -4, "\t\t<adjust-bw-darkness-value syntax=\"integer\">-4</adjust-bw-darkness-value>\n"},
        {6, 0, kw("toner-saver", "none")},
        {6, 1, kw("toner-saver", "standard")},
        {6, 2, ""},
        {7, 0, "\t\t<job-offset syntax=\"1setOf\">\n\t\t\t<value syntax=\"keyword\">none</value>\n\t\t</job-offset>\n"},
        {7, 1,
         "\t\t<job-offset syntax=\"1setOf\">\n\t\t\t<value syntax=\"keyword\">offset-set</value>\n\t\t</job-offset>\n"},
        {7, 2,
         "\t\t<job-offset syntax=\"1setOf\">\n\t\t\t<value "
         "syntax=\"keyword\">offset-subset</value>\n\t\t</job-offset>\n"},
        {7, 3,
         "\t\t<job-offset syntax=\"1setOf\">\n\t\t\t<value syntax=\"keyword\">offset-set</value>\n"
         "\t\t\t<value syntax=\"keyword\">offset-subset</value>\n\t\t</job-offset>\n"},
        {7, 4,
         "\t\t<job-offset syntax=\"1setOf\">\n\t\t\t<value syntax=\"keyword\">offset-job</value>\n\t\t</job-offset>\n"},
        {7, 5, "\t\t<job-offset syntax=\"1setOf\">\n\t\t</job-offset>\n"},
        {8, 25,
         "\t\t<pages-per-subset syntax=\"1setOf\">\n\t\t\t<value "
         "syntax=\"integer\">25</value>\n\t\t</pages-per-subset>\n"},
        {9, 2, kw("adjust-bw-darkness-mode", "normal")},
        {9, 3, kw("adjust-bw-darkness-mode", "dravik180-adjustable")},
        {9, 1, ""},
        {10, 1, kw("page-rotation", "rotate-0")},
        {10, 0, kw("page-rotation", "rotate-180")},
        {10, 2, ""},
        {11, 99,
         "\t\t<separator-sheets syntax=\"collection\">\n"
         "\t\t\t<separator-sheets-type syntax=\"keyword\">slip-sheets</separator-sheets-type>\n"
         "\t\t</separator-sheets>\n"},
        {12, 0, kw("opi-image-insertion", "insert")},
        {12, 1, kw("opi-image-insertion", "do-not-insert")},
        {12, -2, ""},
        {13, 0, kw("opi-image-pre-scan", "no-pre-scan")},
        {13, 1, kw("opi-image-pre-scan", "pre-scan")},
        {13, 2, kw("opi-image-pre-scan", "pre-scan-and-gather")},
        {14, 1, kw("anti-aliasing", "none")},
        {14, 2, kw("anti-aliasing", "standard")},
        {14, 0, ""},
        {15, 1, ""},
        {16, -100, "\t\t<adjust-lightness syntax =\"integer\">-100</adjust-lightness>\n"},
        {17, 5, "\t\t<adjust-contrast syntax =\"integer\">5</adjust-contrast>\n"},
        {18, 0, "\t\t<adjust-saturation syntax =\"integer\">0</adjust-saturation>\n"},
        {19, 1, "\t\t<adjust-cyan-red syntax =\"integer\">1</adjust-cyan-red>\n"},
        {20, 2, "\t\t<adjust-magenta-green syntax =\"integer\">2</adjust-magenta-green>\n"},
        {21, 100, "\t\t<adjust-yellow-blue syntax =\"integer\">100</adjust-yellow-blue>\n"},
        {22, 1, kw("trapping", "all")},
        {22, 2, kw("trapping", "off")},
        {23, 4, "\t\t<trap-width-fast syntax=\"integer\">4</trap-width-fast>\n"},
        {24, 20, "\t\t<trap-width-slow syntax=\"integer\">20</trap-width-slow>\n"},
        {25, 1, kw("black-overprint", "black-overprint-on")},
        {25, 2, kw("black-overprint", "black-overprint-off")},
        {26, 1, kw("rendering-intent-images", "saturation")},
        {26, 2, kw("rendering-intent-images", "relative-colorimetric")},
        {27, 3, kw("rendering-intent-text", "absolute-colorimetric")},
        {27, 4, kw("rendering-intent-text", "perceptual")},
        {28, 5, kw("rendering-intent-graphics", "pure-text")},
        {28, 6, kw("rendering-intent-graphics", "automatic")},
        {28, 7, ""},
        {29, 2, kw("page-delivery", "same-order-face-down")},
        {29, 3, kw("page-delivery", "reverse-order-face-up")},
        {29, 4, kw("page-delivery", "same-order-face-up")},
        {29, 5, kw("page-delivery", "reverse-order-face-down")},
        {29, 1, ""},
        {30, 1, kw("color-effects-type", "monochrome-grayscale")},
        {30, 2, kw("color-effects-type", "color")},
        {31, 1, ""},
        {-1, 1, ""},
    };
    for (const auto& c : cases)
        EXPECT_SAME_BYTES(command(c.cmd, c.value), c.expected) << "command " << c.cmd << " value " << c.value;
}

TEST(TPifCommands, UnknownValueSendsAnEmptyTextButUnknownCommandSendsNothing)
{
    tpiftest::DiagCapture quiet;
    StringSink a;
    WriteTPifCommands(a.get(), 4, 42);
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(a.text, "");
    StringSink b;
    WriteTPifCommands(b.get(), 15, 1);
    WriteTPifCommands(b.get(), 31, 1);
    EXPECT_EQ(b.calls, 0);
}

TEST(TPifCommands, EveryCallLogsTheDebugLine)
{
    tpiftest::DiagCapture diag;
    StringSink s;
    WriteTPifCommands(s.get(), 2, 0);
    WriteTPifCommands(s.get(), 15, 0);
    EXPECT_EQ(diag.text(), "DEBUG: in WriteTPifCommands funcion \nDEBUG: in WriteTPifCommands funcion \n");
}

TEST(TPifHalfTone, IndexTable)
{
    const std::vector<std::pair<int32_t, const char*>> table = {
        {1, "85-lpi"},           {16, "85-lpi"},           {2, "106-lpi"},         {17, "106-lpi"},
        {3, "125-lpi"},          {30, "125-lpi"},          {4, "134-lpi"},         {5, "156-lpi"},
        {31, "156-lpi"},         {6, "200-dpi"},           {7, "150-dpi"},         {8, "200-lpi"},
        {9, "300-lpi"},          {10, "600-lpi"},          {11, "300-dpi"},        {12, "600-dpi"},
        {13, "175-dpi"},         {14, "stochastic"},       {15, "53-lpi"},         {18, "71-lpi"},
        {19, "85-lpi-enhanced"}, {20, "106-lpi-enhanced"}, {21, "120-lpi"},        {22, "141-lpi"},
        {23, "56-lpi"},          {24, "60-lpi"},           {25, "107-lpi-normal"}, {26, "107-lpi-light"},
        {27, "107-lpi-dark"},    {28, "151-lpi"},          {29, "42-lpi"},         {32, "54-lpi"},
        {33, "85-lpi-normal"},   {34, "85-lpi-light"},     {35, "85-lpi-dark"},    {36, "106-lpi-normal"},
        {37, "106-lpi-light"},   {38, "106-lpi-dark"},     {39, "120-lpi-normal"}, {40, "120-lpi-light"},
        {41, "120-lpi-dark"},    {42, "125-lpi-normal"},   {43, "125-lpi-light"},  {44, "125-lpi-dark"},
        {45, "134-lpi-normal"},  {46, "134-lpi-light"},    {47, "134-lpi-dark"},   {51, "150-lpi"},
    };
    for (const auto& [index, name] : table) {
        StringSink s;
        WriteTPifHalfTone(s.get(), index);
        const std::string n = name;
        EXPECT_SAME_BYTES(s.text, "\t\t<halftone-graphics syntax=\"keyword\">" + n + "</halftone-graphics>\n" +
                                      "\t\t<halftone-images syntax=\"keyword\">" + n + "</halftone-images>\n" +
                                      "\t\t<halftone-text syntax=\"keyword\">" + n + "</halftone-text>\n")
            << index;
    }
    for (int32_t index : {0, 48, 49, 50, 52, 100, -1, INT32_MIN}) {
        StringSink s;
        WriteTPifHalfTone(s.get(), index);
        EXPECT_EQ(s.text, "") << index;
    }
}

TEST(TPifHeader, DocumentTypeByIndex)
{
    const std::string decl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    const std::string root = "<tpif version=\"1.0\" xml:lang=\"en-US\" cpss-version=\"2.01\">\n";
    for (int i = 0; i <= 5; ++i) {
        StringSink s;
        WriteTPifHeader(s.get(), i);
        EXPECT_SAME_BYTES(s.text, decl + "<!DOCTYPE tpif SYSTEM \"tpif-v0202" + std::to_string(i) + ".dtd\">\n" + root);
        EXPECT_EQ(s.calls, 1) << "the three lines go out as one write";
    }
    for (int i : {6, 7, 100}) {
        StringSink s;
        WriteTPifHeader(s.get(), i);
        EXPECT_SAME_BYTES(s.text, decl + root);
    }
}

TEST(TPifSkeleton, GroupsAndTrailerWithoutFinalNewline)
{
    StringSink s;
    WriteTPifJobAttribStart(s.get());
    WriteTPifSpecialPagesStart(s.get(), 0);
    WriteTPifSpecialPagesEnd(s.get(), 0);
    WriteTPifSpecialPagesStart(s.get(), 1);
    WriteTPifSpecialPagesEnd(s.get(), 1);
    WriteTPifJobAttribEnd(s.get());
    WriteTPifTrailer(s.get());
    EXPECT_SAME_BYTES(s.text, "\t<job-template-attributes>\n"
                              "\t\t<page-overrides syntax=\"1setOf\">\n\t\t</page-overrides>\n"
                              "\t\t<insert-sheet syntax=\"1setOf\">\n\t\t</insert-sheet>\n"
                              "\t</job-template-attributes>\n"
                              "</tpif>");
}

std::string finishing(const FinishingData& f)
{
    StringSink s;
    tpiftest::DiagCapture quiet;
    WriteTPifFinishing(s.get(), f);
    return s.text;
}

FinishingData fin(int32_t staple, int32_t fold, int32_t hole, int32_t count = kTPifUnset)
{
    FinishingData f;
    f.staple = staple, f.fold = fold, f.holePunch = hole, f.holeCount = count;
    return f;
}

const std::string kOpen = "\t\t<finishings syntax=\"1setOf\">\n";
const std::string kClose = "\t\t</finishings>\n";
std::string val(int v) { return "\t\t\t<value syntax=\"enum\">" + std::to_string(v) + "</value>\n"; }

TEST(TPifFinishing, ValueLists)
{
    const std::vector<std::pair<int32_t, int>> staple = {{0, 20},  {1, 22},  {2, 21},  {3, 28},  {4, 29},
                                                         {5, 31},  {6, 30},  {7, 110}, {16, 32}, {17, 33},
                                                         {18, 35}, {19, 34}, {20, 23}};
    for (auto [in, out] : staple)
        EXPECT_SAME_BYTES(finishing(fin(in, kTPifUnset, kTPifUnset)), kOpen + val(out) + kClose) << in;
    const std::vector<std::pair<int32_t, int>> fold = {
        {9, 3},    {10, 111}, {11, 1000}, {12, 1001}, {13, 50},   {14, 52},   {15, 13},   {21, 1003}, {22, 1004},
        {23, 111}, {24, 110}, {25, 1011}, {26, 1008}, {27, 1000}, {28, 1005}, {29, 1001}, {30, 1012}};
    for (auto [in, out] : fold)
        EXPECT_SAME_BYTES(finishing(fin(kTPifUnset, in, kTPifUnset)), kOpen + val(out) + kClose) << in;
    const std::vector<std::pair<int32_t, int>> hole = {{31, 93}, {32, 94}, {33, 96}, {34, 95}};
    const std::vector<std::pair<int32_t, int>> count = {{35, 90}, {36, 91}, {37, 92}};
    for (auto [in, out] : hole)
        for (auto [c, cOut] : count)
            EXPECT_SAME_BYTES(finishing(fin(kTPifUnset, kTPifUnset, in, c)), kOpen + val(out) + val(cOut) + kClose);
}

TEST(TPifFinishing, AllFieldsInOrder)
{
    EXPECT_SAME_BYTES(finishing(fin(0, 9, 31, 36)), kOpen + val(20) + val(3) + val(93) + val(91) + kClose);
}

TEST(TPifFinishing, OutOfListValueRepeatsThePreviousLine)
{
    // Record staple 8 written directly: the opening line goes out a second time.
    EXPECT_SAME_BYTES(finishing(fin(8, kTPifUnset, kTPifUnset)), kOpen + kOpen + kClose);
    // An unknown fold after a staple repeats the staple's value line.
    EXPECT_SAME_BYTES(finishing(fin(0, 16, kTPifUnset)), kOpen + val(20) + val(20) + kClose);
    // Hole punch 38 (from hole value 49) repeats the fold line; its count follows.
    EXPECT_SAME_BYTES(finishing(fin(kTPifUnset, 9, 38, 35)), kOpen + val(3) + val(3) + val(90) + kClose);
    // An unknown hole count writes an empty text, not a repeat.
    EXPECT_SAME_BYTES(finishing(fin(kTPifUnset, kTPifUnset, 31, 4)), kOpen + val(93) + kClose);
}

TEST(TPifFinishing, TemplateAloneAndNothingWhenAllUnset)
{
    FinishingData f = fin(0, 9, 31, 35);
    f.templateName = "Booklet &amp; trim";
    EXPECT_SAME_BYTES(finishing(f),
                      "\t\t<finishings-col syntax=\"collection\">\n"
                      "\t\t\t<finishing-template syntax=\"name\" xml:space=\"preserve\">Booklet &amp; trim"
                      "</finishing-template>\n"
                      "\t\t</finishings-col>\n");
    EXPECT_EQ(finishing(fin(kTPifUnset, kTPifUnset, kTPifUnset, 35)), "");
}

TEST(TPifFinishing, DebugLine)
{
    tpiftest::DiagCapture diag;
    StringSink s;
    WriteTPifFinishing(s.get(), fin(2, kTPifUnset, 33, 37));
    EXPECT_EQ(diag.text(), "DEBUG: WriteTPifFinishing: nStapleOptions = 2, nFoldOptions = -1, nHolePunchOptions = 33, "
                           "nHolePunchNumHoles = 37\n");
}

std::string media(const MediaData& m)
{
    StringSink s;
    WriteTPifMedia(s.get(), m);
    return s.text;
}

const std::string kMediaOpen = "\t\t<media-col syntax=\"collection\">\n";
const std::string kMediaClose = "\t\t</media-col>\n";

TEST(TPifMedia, TypeIndexes)
{
    const std::vector<std::pair<int32_t, std::string>> table = {
        {0, "\t\t\t<media-type syntax=\"keyword\">stationery</media-type>\n"},
        {1, "\t\t\t<media-type syntax=\"keyword\">transparency</media-type>\n"},
        {2, "\t\t\t<media-type syntax=\"keyword\">tab-stock</media-type>\n"},
        {3, "\t\t\t<media-type syntax=\"keyword\">pre-cut-tabs</media-type>\n"},
        {4, "\t\t\t<media-type syntax=\"keyword\">full-cut-tabs</media-type>\n"},
        {5, "\t\t\t<media-type syntax=\"keyword\">labels</media-type>\n"},
        {6, "\t\t\t<media-pre-printed syntax=\"keyword\">blank</media-pre-printed>\n"},
        {7, "\t\t\t<media-recycled syntax=\"keyword\">standard</media-recycled>\n"},
        {8, "\t\t\t<media-type syntax=\"keyword\">envelope</media-type>\n"},
        {9, "\t\t\t<media-type syntax=\"name\" xml:space=\"preserve\">Linen</media-type>\n"},
        {10, "\t\t\t<media-type syntax=\"name\" xml:space=\"preserve\">Linen</media-type>\n"},
        {11, "\t\t\t<media-type syntax=\"keyword\">other</media-type>\n"},
        {12, "\t\t\t<media-type syntax=\"keyword\">bond</media-type>\n"},
        {13, ""},
        {kTPifUnset, ""},
    };
    for (const auto& [type, line] : table) {
        MediaData m;
        m.type = type;
        m.customTypeName = "Linen";
        EXPECT_SAME_BYTES(media(m), kMediaOpen + line + kMediaClose) << type;
    }
    MediaData pre;
    pre.type = 6;
    pre.prePrinted = 1;
    EXPECT_SAME_BYTES(media(pre), kMediaOpen +
                                      "\t\t\t<media-pre-printed syntax=\"keyword\">pre-printed</media-pre-printed>\n" +
                                      kMediaClose);
    pre.prePrinted = 2;
    EXPECT_SAME_BYTES(media(pre), kMediaOpen +
                                      "\t\t\t<media-pre-printed syntax=\"keyword\">letter-head</media-pre-printed>\n" +
                                      kMediaClose);
}

TEST(TPifMedia, ColorIndexes)
{
    const char* names[] = {"no-color", "white",     "pink", "yellow", "blue", "green",
                           "buff",     "goldenrod", "red",  "ivory",  "gray", "orange"};
    for (int32_t i = 0; i < 12; ++i) {
        MediaData m;
        m.color = i;
        EXPECT_SAME_BYTES(media(m), kMediaOpen + "\t\t\t<media-color syntax=\"keyword\">" + names[i] +
                                        "</media-color>\n" + kMediaClose);
    }
    MediaData custom;
    custom.color = 12;
    custom.customColorName = "Sea &amp; sky";
    EXPECT_SAME_BYTES(media(custom),
                      kMediaOpen +
                          "\t\t\t<media-color syntax=\"name\" xml:space=\"preserve\">Sea &amp; sky</media-color>\n" +
                          kMediaClose);
    MediaData none;
    none.color = 13;
    EXPECT_SAME_BYTES(media(none), kMediaOpen + kMediaClose);
}

TEST(TPifMedia, FullCollectionOrder)
{
    MediaData m;
    m.type = 2;
    m.orderCount = 5;
    m.weight = 120;
    m.description = "Tabbed";
    m.holeCount = 3;
    m.color = 1;
    m.width = 21000;
    m.length = 29700;
    m.coatedSides = 3;
    m.coatingType = 2;
    m.tooth = 3;
    m.grain = 1;
    EXPECT_SAME_BYTES(media(m),
                      kMediaOpen +
                          "\t\t\t<media-type syntax=\"keyword\">tab-stock</media-type>\n"
                          "\t\t\t<media-order-count syntax=\"integer\">5</media-order-count>\n"
                          "\t\t\t<media-weight-metric syntax=\"integer\">120</media-weight-metric>\n"
                          "\t\t\t<media-description syntax=\"name\" xml:space=\"preserve\">Tabbed</media-description>\n"
                          "\t\t\t<media-hole-count syntax=\"integer\">3</media-hole-count>\n"
                          "\t\t\t<media-color syntax=\"keyword\">white</media-color>\n"
                          "\t\t\t<media-size syntax=\"collection\">\n"
                          "\t\t\t\t<x-dimension syntax=\"integer\">21000</x-dimension>\n"
                          "\t\t\t\t<y-dimension syntax=\"integer\">29700</y-dimension>\n"
                          "\t\t\t</media-size>\n"
                          "\t\t\t<media-front-coating syntax=\"keyword\">high-gloss</media-front-coating>\n"
                          "\t\t\t<media-back-coating syntax=\"keyword\">high-gloss</media-back-coating>\n"
                          "\t\t\t<media-tooth syntax=\"keyword\">coarse</media-tooth>\n"
                          "\t\t\t<media-grain syntax=\"keyword\">y-grain</media-grain>\n" +
                          kMediaClose);
}

TEST(TPifMedia, OrderCountOnlyForTabAndNamedTypesAndSizeOnlyWithBothDimensions)
{
    for (int32_t type : {0, 1, 4, 5, 8, 11, 12}) {
        MediaData m;
        m.type = type;
        m.orderCount = 4;
        m.width = 21000; // no length: no size
        EXPECT_EQ(media(m).find("media-order-count"), std::string::npos) << type;
        EXPECT_EQ(media(m).find("media-size"), std::string::npos);
    }
}

TEST(TPifMedia, Coating)
{
    const char* types[] = {nullptr, "glossy", "high-gloss", "semi-gloss", "satin", "matte"};
    auto coat = [](const char* front, const char* back) {
        return std::string("\t\t\t<media-front-coating syntax=\"keyword\">") + front + "</media-front-coating>\n" +
               "\t\t\t<media-back-coating syntax=\"keyword\">" + back + "</media-back-coating>\n";
    };
    for (int32_t t = 1; t <= 5; ++t) {
        const std::vector<std::pair<int32_t, std::string>> sides = {{1, coat("none", "none")},
                                                                    {2, coat(types[t], "none")},
                                                                    {3, coat(types[t], types[t])},
                                                                    {4, coat("none", types[t])}};
        for (const auto& [s, lines] : sides) {
            MediaData m;
            m.coatedSides = s;
            m.coatingType = t;
            EXPECT_SAME_BYTES(media(m), kMediaOpen + lines + kMediaClose) << s << "/" << t;
        }
    }
}

TEST(TPifMedia, KeyAndSourceStandAlone)
{
    MediaData key;
    key.mediaKey = "Gloss 200";
    key.type = 0;
    key.weight = 200;
    EXPECT_SAME_BYTES(media(key),
                      kMediaOpen + "\t\t\t<media-key syntax=\"name\" xml:space=\"preserve\">Gloss 200</media-key>\n" +
                          kMediaClose);
    MediaData source;
    source.source = 0;
    EXPECT_SAME_BYTES(media(source), "\t\t<media syntax=\"keyword\">post-fuser-inserter</media>\n");
    source.source = 1;
    EXPECT_EQ(media(source), "");
}

TEST(TPifSpecialPages, CoverTypesAndInsert)
{
    const std::vector<std::pair<int32_t, const char*>> types = {
        {1, "print-none"}, {2, "print-front"}, {3, "print-back"}, {4, "print-both"}, {0, "no-cover"}, {5, "no-cover"}};
    MediaData plain;
    for (const auto& [t, name] : types) {
        StringSink s;
        WriteTPifCovers(s.get(), 1, t, plain);
        EXPECT_SAME_BYTES(s.text, std::string("\t\t<cover-back syntax=\"collection\">\n"
                                              "\t\t\t<cover-type syntax=\"keyword\">") +
                                      name + "</cover-type>\n" + kMediaOpen + kMediaClose + "\t\t</cover-back>\n");
    }
    StringSink s;
    WriteTPifInserts(s.get(), 0, 3, plain);
    EXPECT_SAME_BYTES(s.text, "\t\t\t<value syntax=\"collection\">\n"
                              "\t\t\t<insert-after-page-number syntax=\"integer\">0</insert-after-page-number>\n"
                              "\t\t\t<insert-count syntax=\"integer\">3</insert-count>\n" +
                                  kMediaOpen + kMediaClose + "\t\t\t</value>\n");
}

TEST(TPifColor, SourcesByIndexAndName)
{
    auto rgb = [](int32_t i, std::optional<std::string> name = std::nullopt) {
        StringSink s;
        WriteTPifRGBSource(s.get(), i, "undefined-source-rgb-images", name);
        return s.text;
    };
    auto kwLine = [](const char* e, const char* v) {
        return std::string("\t\t<") + e + " syntax=\"keyword\">" + v + "</" + e + ">\n";
    };
    auto nameLine = [](const char* e, const char* v) {
        return std::string("\t\t<") + e + " syntax=\"name\" xml:space=\"preserve\">" + v + "</" + e + ">\n";
    };
    const char* e = "undefined-source-rgb-images";
    EXPECT_SAME_BYTES(rgb(1), kwLine(e, "tcc-mode-rgb"));
    EXPECT_SAME_BYTES(rgb(2), kwLine(e, "tcc-mode-rgb-gamma1"));
    EXPECT_SAME_BYTES(rgb(3), kwLine(e, "Smpte-240m"));
    EXPECT_SAME_BYTES(rgb(4), kwLine(e, "sRGB"));
    EXPECT_SAME_BYTES(rgb(6), nameLine(e, "Adobe RGB"));
    EXPECT_EQ(rgb(5), "");
    EXPECT_SAME_BYTES(rgb(5, "My RGB"), nameLine(e, "My RGB"));

    const std::vector<std::pair<int32_t, const char*>> cmyk = {
        {1, "native-cmyk"},
        {2, "swop"},
        {4, "FOGRA Gloss Coated CMYK"},
        {5, "FOGRA Matte Coated CMYK"},
        {6, "FOGRA Uncoated CMYK"},
        {7, "Japan Color 2001 Plus CMYK"},
        {8, "Japan Color 2001 (Type1:Art) CMYK"},
        {9, "Japan Color 2001 (Type2:Matte) CMYK"},
        {10, "Japan Color 2001 (Type3:Coated) CMYK"},
        {11, "Japan Color 2001 (Type4:Uncoated) CMYK"},
        {12, "FOGRA Web Offset CMYK"},
        {13, "FOGRA Plus CMYK"},
        {14, "Commercial CMYK"},
        {15, "Swop Plus CMYK"},
    };
    for (const auto& [i, name] : cmyk) {
        StringSink s;
        WriteTPifCMYKSource(s.get(), i, "undefined-source-cmyk-text", std::nullopt);
        EXPECT_SAME_BYTES(s.text, kwLine("undefined-source-cmyk-text", name)) << i;
    }
    StringSink unknown;
    WriteTPifCMYKSource(unknown.get(), 3, "undefined-source-cmyk-text", std::nullopt);
    EXPECT_EQ(unknown.text, "");
}

TEST(TPifColor, BlockOrderAndDestinationRunningIntoTheNextElement)
{
    PageData p;
    p.lightness = 1, p.contrast = 2, p.saturation = 3, p.cyanRed = 4, p.magentaGreen = 5, p.yellowBlue = 6;
    p.trapping = 1, p.trapWidthFast = 7, p.trapWidthSlow = 8, p.blackOverprint = 1;
    p.trc = "Curve A";
    p.rgbImages = 4;
    p.rgbTextGraphicsName = "Mine";
    p.cmykImages = 2;
    p.cmykTextGraphics = 14;
    p.grayImagesName = "G1";
    p.grayTextGraphicsName = "G2";
    p.destination = 1;
    p.renderImages = 1, p.renderText = 2, p.renderGraphics = 3;
    p.antialiasing = 1, p.halftone = 8, p.colorEffects = 2;
    StringSink s;
    tpiftest::DiagCapture quiet;
    WriteTPifFullColor(s.get(), p);
    EXPECT_SAME_BYTES(
        s.text,
        "\t\t<adjust-lightness syntax =\"integer\">1</adjust-lightness>\n"
        "\t\t<adjust-contrast syntax =\"integer\">2</adjust-contrast>\n"
        "\t\t<adjust-saturation syntax =\"integer\">3</adjust-saturation>\n"
        "\t\t<adjust-cyan-red syntax =\"integer\">4</adjust-cyan-red>\n"
        "\t\t<adjust-magenta-green syntax =\"integer\">5</adjust-magenta-green>\n"
        "\t\t<adjust-yellow-blue syntax =\"integer\">6</adjust-yellow-blue>\n"
        "\t\t<trapping syntax=\"keyword\">all</trapping>\n"
        "\t\t<trap-width-fast syntax=\"integer\">7</trap-width-fast>\n"
        "\t\t<trap-width-slow syntax=\"integer\">8</trap-width-slow>\n"
        "\t\t<black-overprint syntax=\"keyword\">black-overprint-on</black-overprint>\n"
        "\t\t<trc syntax=\"collection\">\n"
        "\t\t\t<trc-name syntax=\"name\" xml:space=\"preserve\">Curve A</trc-name>\n"
        "\t\t</trc>\n"
        "\t\t<undefined-source-rgb-images syntax=\"keyword\">sRGB</undefined-source-rgb-images>\n"
        "\t\t<undefined-source-rgb-text syntax=\"name\" xml:space=\"preserve\">Mine</undefined-source-rgb-text>\n"
        "\t\t<undefined-source-rgb-graphics syntax=\"name\" "
        "xml:space=\"preserve\">Mine</undefined-source-rgb-graphics>\n"
        "\t\t<undefined-source-cmyk-images syntax=\"keyword\">swop</undefined-source-cmyk-images>\n"
        "\t\t<undefined-source-cmyk-text syntax=\"keyword\">Commercial CMYK</undefined-source-cmyk-text>\n"
        "\t\t<undefined-source-cmyk-graphics syntax=\"keyword\">Commercial CMYK</undefined-source-cmyk-graphics>\n"
        "\t\t<undefined-source-gray-images syntax=\"name\" xml:space=\"preserve\">G1</undefined-source-gray-images>\n"
        "\t\t<undefined-source-gray-text syntax=\"name\" xml:space=\"preserve\">G2</undefined-source-gray-text>\n"
        "\t\t<undefined-source-gray-graphics syntax=\"name\" "
        "xml:space=\"preserve\">G2</undefined-source-gray-graphics>\n"
        "\t\t<color-destination-profile-front syntax=\"keyword\">system-specified</color-destination-profile-front>"
        "\t\t<color-destination-profile-back syntax=\"keyword\">system-specified</color-destination-profile-back>"
        "\t\t<rendering-intent-images syntax=\"keyword\">saturation</rendering-intent-images>\n"
        "\t\t<rendering-intent-text syntax=\"keyword\">relative-colorimetric</rendering-intent-text>\n"
        "\t\t<rendering-intent-graphics syntax=\"keyword\">absolute-colorimetric</rendering-intent-graphics>\n"
        "\t\t<anti-aliasing syntax=\"keyword\">none</anti-aliasing>\n"
        "\t\t<halftone-graphics syntax=\"keyword\">200-lpi</halftone-graphics>\n"
        "\t\t<halftone-images syntax=\"keyword\">200-lpi</halftone-images>\n"
        "\t\t<halftone-text syntax=\"keyword\">200-lpi</halftone-text>\n"
        "\t\t<color-effects-type syntax=\"keyword\">color</color-effects-type>\n");
}

TEST(TPifColor, CustomDestinationEndsItsLine)
{
    StringSink s;
    WriteTPifColorDestination(s.get(), 2, "color-destination-profile-back", std::string("Press X"));
    EXPECT_SAME_BYTES(s.text, "\t\t<color-destination-profile-back syntax=\"name\" xml:space=\"preserve\">Press X"
                              "</color-destination-profile-back>\n");
}

std::string jobTypes(const JobData& j)
{
    StringSink s;
    WriteTPifJobTypes(s.get(), j);
    return s.text;
}

TEST(TPifJobTypes, Dispositions)
{
    JobData none;
    EXPECT_SAME_BYTES(jobTypes(none), "\t\t<job-save-disposition syntax=\"collection\">\n"
                                      "\t\t\t<save-disposition syntax=\"keyword\">none</save-disposition>\n"
                                      "\t\t</job-save-disposition>\n");
    JobData hold;
    hold.disposition = 1;
    EXPECT_SAME_BYTES(jobTypes(hold), "\t\t\t<job-hold-until syntax=\"keyword\">indefinite</job-hold-until>\n");
    JobData form;
    form.disposition = 4;
    EXPECT_EQ(jobTypes(form), "");

    const char* formats[] = {"application/X-single-page-tiff", "application/X-multi-page-tiff", "application/pdf",
                             "application/X-fast-reprint", "application/X-fast-reprint-and-dri"};
    for (int32_t d : {2, 3})
        for (int32_t f = 0; f < 5; ++f) {
            JobData j;
            j.disposition = d;
            j.saveFormat = f;
            j.saveName = "Run &lt;1&gt;";
            j.saveLocation = "file:///job-repository/";
            EXPECT_SAME_BYTES(
                jobTypes(j),
                std::string("\t\t<job-save-disposition syntax=\"collection\">\n"
                            "\t\t\t<save-disposition syntax=\"keyword\">") +
                    (d == 2 ? "save-only" : "print-save") +
                    "</save-disposition>\n"
                    "\t\t\t<save-info syntax=\"1setOf\">\n"
                    "\t\t\t\t<value syntax=\"collection\">\n"
                    "\t\t\t\t\t<save-location syntax=\"uri\">file:///job-repository/</save-location>\n"
                    "\t\t\t\t\t<save-name syntax=\"name\" xml:space=\"preserve\">Run &lt;1&gt;</save-name>\n"
                    "\t\t\t\t\t<save-document-format syntax=\"mimeMediaType\">" +
                    formats[f] +
                    "</save-document-format>\n"
                    "\t\t\t\t</value>\n"
                    "\t\t\t</save-info>\n"
                    "\t\t</job-save-disposition>\n");
        }
}

TEST(TPifOtherElements, OperationAttributesResolutionShiftPagesAccountingForms)
{
    StringSink s;
    WriteTPifOpAttrib(s.get(), "Job", "Me");
    EXPECT_SAME_BYTES(s.text,
                      "\t<tpif-operation-attributes>\n"
                      "\t\t<job-name syntax=\"name\" xml:space=\"preserve\">Job</job-name>\n"
                      "\t\t<requesting-user-name syntax=\"name\" xml:space=\"preserve\">Me</requesting-user-name>\n"
                      "\t\t<document-format syntax=\"mimeMediaType\">application/postscript</document-format>\n"
                      "\t</tpif-operation-attributes>\n");
    StringSink r;
    WriteTPifResolution(r.get(), {1200, 600, 3});
    EXPECT_EQ(r.calls, 1) << "written as one text";
    EXPECT_SAME_BYTES(r.text, "\t\t<printer-resolution syntax=\"resolution\">\n"
                              "\t\t\t<cross-feed syntax=\"integer\">1200</cross-feed>\n"
                              "\t\t\t<feed-direction syntax=\"integer\">600</feed-direction>\n"
                              "\t\t\t<units syntax=\"integer\">3</units>\n"
                              "\t\t</printer-resolution>\n");
    StringSink i;
    WriteTPifImageShift(i.get(), 1, -2, 3, -4);
    EXPECT_SAME_BYTES(i.text, "\t\t<x-side1-image-shift syntax=\"integer\">1</x-side1-image-shift>\n"
                              "\t\t<x-side2-image-shift syntax=\"integer\">-2</x-side2-image-shift>\n"
                              "\t\t<y-side1-image-shift syntax=\"integer\">3</y-side1-image-shift>\n"
                              "\t\t<y-side2-image-shift syntax=\"integer\">-4</y-side2-image-shift>\n");
    StringSink p;
    WriteTPifPageRanges(p.get(), 2, 9);
    EXPECT_SAME_BYTES(p.text, "\t\t<page-ranges syntax=\"1setOf\">\n"
                              "\t\t\t<value syntax=\"rangeOfInteger\">\n"
                              "\t\t\t\t<lower-bound syntax=\"integer\">2</lower-bound>\n"
                              "\t\t\t\t<upper-bound syntax=\"integer\">9</upper-bound>\n"
                              "\t\t\t</value>\n"
                              "\t\t</page-ranges>\n");
    StringSink a;
    WriteTPifAccounting(a.get(), "u1", "a2");
    EXPECT_SAME_BYTES(a.text,
                      "\t\t<job-accounting-user-id syntax=\"name\" xml:space=\"preserve\">u1</job-accounting-user-id>\n"
                      "\t\t<job-account-id syntax=\"name\" xml:space=\"preserve\">a2</job-accounting-id>\n");
    StringSink f;
    BgFormsData save;
    save.formName = "Letterhead";
    WriteTPifBackgroundForms(f.get(), save);
    EXPECT_SAME_BYTES(
        f.text,
        "\t\t<form-save syntax=\"collection\">\n"
        "\t\t\t<form-save-disposition syntax=\"keyword\">save-only</form-save-disposition>\n"
        "\t\t\t<form-save-info syntax=\"1setOf\">\n"
        "\t\t\t\t<value syntax=\"collection\">\n"
        "\t\t\t\t\t<form-save-location syntax=\"uri\">file:///form-repository/</form-save-location>\n"
        "\t\t\t\t\t<form-save-name syntax=\"name\" xml:space=\"preserve\">Letterhead</form-save-name>\n"
        "\t\t\t\t\t<form-save-format syntax=\"mimeMediaType\">application/X-single-page-tiff</form-save-format>\n"
        "\t\t\t\t</value>\n"
        "\t\t\t</form-save-info>\n"
        "\t\t</form-save>\n");
}

TEST(TPifJobNotes, EachNoteOnlyWhenPresent)
{
    StringSink s;
    WriteTPifJobNotes(s.get(), std::string("Hi"), std::nullopt, std::string(""), std::string("Info"));
    EXPECT_SAME_BYTES(
        s.text, "\t\t<job-message-to-operator syntax=\"text\" xml:space=\"preserve\">Hi</job-message-to-operator>\n"
                "\t\t<job-sheet-message syntax=\"text\" xml:space=\"preserve\"></job-sheet-message>\n"
                "\t\t<job-accounting-data syntax=\"text\" xml:space=\"preserve\">Info</job-accounting-data>\n");
}

TEST(TPifHighlight, KeywordsAndCustomColours)
{
    HighlightColorData h;
    h.colorant = 3;
    h.mapColorCustom.present = true;
    h.mapColorCustom.slot = 2;
    h.mapColorCustom.hasHSV = true;
    h.mapColorCustom.h = 120, h.mapColorCustom.s = 50, h.mapColorCustom.v = 75;
    h.map = 4;
    h.mismatch = 3;
    StringSink s;
    WriteTPifHLC(s.get(), h);
    EXPECT_SAME_BYTES(
        s.text,
        "\t\t<highlight-colorant syntax=\"keyword\">blue</highlight-colorant>\n"
        "\t\t<highlight-map-color syntax=\"name\" xml:space=\"preserve\">talmo-custom-color-2</highlight-map-color>\n"
        "\t\t<highlight-map-color-custom-col syntax=\"collection\">\n"
        "\t\t\t<color-hsv-col syntax=\"collection\">\n"
        "\t\t\t\t<color-hsv-hue syntax=\"integer\">120</color-hsv-hue>\n"
        "\t\t\t\t<color-hsv-saturation syntax=\"integer\">50</color-hsv-saturation>\n"
        "\t\t\t\t<color-hsv-value syntax=\"integer\">75</color-hsv-value>\n"
        "\t\t\t</color-hsv-col>\n"
        "\t\t</highlight-map-color-custom-col>\n"
        "\t\t<highlight-map syntax=\"keyword\">all-colors</highlight-map>\n"
        "\t\t<highlight-colorant-mismatch syntax=\"keyword\">cancel-job</highlight-colorant-mismatch>\n");
    HighlightColorData unknown;
    unknown.colorant = 13;
    unknown.map = 0;
    unknown.mismatch = 4;
    StringSink u;
    WriteTPifHLC(u.get(), unknown);
    EXPECT_EQ(u.text, "");
}

} // namespace
