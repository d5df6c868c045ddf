// The writer's output, byte for byte, over sweeps of its element layer and over the ticket cases
// of data/writer-features.txt, against reviewed transcripts. Each entry shows the call, the
// number of writes to the sink, the text and the DEBUG lines. TALMO_UPDATE_GOLDEN=1 rewrites
// the transcripts; review the diff before committing it.
#include "tpif-test-util.h"

#include "platform/plist.h"

#include <cstdlib>
#include <functional>
#include <map>

using namespace talmo;

namespace {

class Transcript {
public:
    void add(const std::string& label, const std::function<void(const writeData*)>& write)
    {
        tpiftest::StringSink s;
        tpiftest::DiagCapture diag;
        write(s.get());
        text_ += "== " + label + " (" + std::to_string(s.calls) + " writes)\n" + s.text;
        if (!s.text.empty() && s.text.back() != '\n')
            text_ += "\\ no newline\n";
        std::istringstream lines(diag.text());
        for (std::string line; std::getline(lines, line);)
            text_ += "-- " + line + "\n";
    }
    void check(const std::string& golden)
    {
        const std::string path = tpiftest::dataPath(golden);
        if (std::getenv("TALMO_UPDATE_GOLDEN"))
            std::ofstream(path, std::ios::binary) << text_;
        EXPECT_SAME_BYTES(text_, tpiftest::readFile(path));
    }

private:
    std::string text_;
};

std::string str(int64_t v) { return std::to_string(v); }

TEST(TPifTranscript, ElementLayer)
{
    Transcript t;
    for (int i : {0, 5, 6, 100})
        t.add("header " + str(i), [&](auto s) { WriteTPifHeader(s, i); });
    t.add("skeleton", [](auto s) {
        WriteTPifJobAttribStart(s), WriteTPifSpecialPagesStart(s, 0), WriteTPifSpecialPagesEnd(s, 0);
        WriteTPifSpecialPagesStart(s, 1), WriteTPifSpecialPagesEnd(s, 1), WriteTPifJobAttribEnd(s), WriteTPifTrailer(s);
    });
    for (int cmd = -1; cmd <= 32; ++cmd)
        for (int32_t v : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 25})
            t.add("command " + str(cmd) + " " + str(v), [&](auto s) { WriteTPifCommands(s, cmd, v); });
    for (int32_t i = -1; i <= 53; ++i)
        t.add("halftone " + str(i), [&](auto s) { WriteTPifHalfTone(s, i); });

    auto finishing = [&](int32_t staple, int32_t fold, int32_t hole, int32_t count, const char* name = nullptr) {
        FinishingData f;
        f.staple = staple, f.fold = fold, f.holePunch = hole, f.holeCount = count;
        if (name)
            f.templateName = name;
        t.add("finishing " + str(staple) + " " + str(fold) + " " + str(hole) + " " + str(count),
              [&](auto s) { WriteTPifFinishing(s, f); });
    };
    for (int32_t v = -1; v <= 21; ++v)
        finishing(v, kTPifUnset, kTPifUnset, kTPifUnset);
    for (int32_t v = 8; v <= 31; ++v)
        finishing(kTPifUnset, v, kTPifUnset, kTPifUnset);
    for (int32_t hole = 30; hole <= 35; ++hole)
        for (int32_t count = 34; count <= 38; ++count)
            finishing(kTPifUnset, kTPifUnset, hole, count);
    finishing(0, 9, 31, 36);
    finishing(0, 16, kTPifUnset, kTPifUnset);
    finishing(kTPifUnset, 9, 38, 35);
    finishing(kTPifUnset, kTPifUnset, 31, 4);
    finishing(kTPifUnset, kTPifUnset, kTPifUnset, 35);
    finishing(0, 9, 31, 35, "Booklet &amp; trim");

    auto media = [&](const std::string& label, auto fill) {
        MediaData m;
        fill(m);
        t.add("media " + label, [&](auto s) { WriteTPifMedia(s, m); });
    };
    for (int32_t i = -1; i <= 14; ++i) {
        media("type " + str(i), [&](MediaData& m) { m.type = i, m.customTypeName = "Linen", m.orderCount = 4; });
        media("color " + str(i), [&](MediaData& m) { m.color = i, m.customColorName = "Sea &amp; sky"; });
        media("tooth/grain " + str(i), [&](MediaData& m) { m.tooth = m.grain = i; });
    }
    for (int32_t p = 0; p <= 2; ++p)
        media("pre-printed " + str(p), [&](MediaData& m) { m.type = 6, m.prePrinted = p; });
    for (int32_t sides = 0; sides <= 5; ++sides)
        for (int32_t type = 0; type <= 6; ++type)
            media("coating " + str(sides) + "/" + str(type),
                  [&](MediaData& m) { m.coatedSides = sides, m.coatingType = type; });
    media("size without length", [](MediaData& m) { m.width = 21000; });
    media("everything", [](MediaData& m) {
        m.type = 2, m.orderCount = 5, m.weight = 120, m.description = "Tabbed", m.holeCount = 3, m.color = 1;
        m.width = 21000, m.length = 29700, m.coatedSides = 3, m.coatingType = 2, m.tooth = 3, m.grain = 1;
    });
    media("key", [](MediaData& m) { m.mediaKey = "Gloss 200", m.type = 0, m.weight = 200; });
    for (int32_t source : {0, 1})
        media("source " + str(source), [&](MediaData& m) { m.source = source; });
    for (int which : {0, 1})
        for (int32_t type = -1; type <= 6; ++type)
            t.add("cover " + str(which) + " " + str(type), [&](auto s) { WriteTPifCovers(s, which, type, {}); });
    t.add("inserts", [](auto s) { WriteTPifInserts(s, 0, 3, {}); });

    for (int32_t i = -1; i <= 16; ++i)
        for (bool named : {false, true}) {
            const std::optional<std::string> name = named ? std::optional<std::string>("Mine") : std::nullopt;
            const std::string l = str(i) + (named ? " named" : "");
            t.add("rgb " + l, [&](auto s) { WriteTPifRGBSource(s, i, "undefined-source-rgb-text", name); });
            t.add("cmyk " + l, [&](auto s) { WriteTPifCMYKSource(s, i, "undefined-source-cmyk-text", name); });
            t.add("destination " + l,
                  [&](auto s) { WriteTPifColorDestination(s, i, "color-destination-profile-back", name); });
        }
    PageData p;
    p.lightness = 1, p.contrast = 2, p.saturation = 3, p.cyanRed = 4, p.magentaGreen = 5, p.yellowBlue = 6;
    p.trapping = 1, p.trapWidthFast = 7, p.trapWidthSlow = 8, p.blackOverprint = 1, p.trc = "Curve A";
    p.rgbImages = 4, p.rgbTextGraphicsName = "Mine", p.cmykImages = 2, p.cmykTextGraphics = 14;
    p.grayImagesName = "G1", p.grayTextGraphicsName = "G2", p.destination = 1;
    p.renderImages = 1, p.renderText = 2, p.renderGraphics = 3, p.antialiasing = 1, p.halftone = 8, p.colorEffects = 2;
    t.add("full colour", [&](auto s) { WriteTPifFullColor(s, p); });
    p.sides = 2, p.lower = 3, p.upper = 5;
    t.add("page exception", [&](auto s) { WriteTPifPageExceptions(s, p, {}); });

    for (int32_t d = 0; d <= 5; ++d)
        for (int32_t f = -1; f <= 5; ++f) {
            JobData j;
            j.disposition = d, j.saveFormat = f, j.saveName = "Run &lt;1&gt;", j.saveLocation = "file:///jobs/";
            t.add("job " + str(d) + " " + str(f), [&](auto s) { WriteTPifJobTypes(s, j); });
        }
    for (int32_t i = -1; i <= 14; ++i) {
        HighlightColorData h;
        h.colorant = h.mapColor = h.map = h.mismatch = i;
        t.add("highlight " + str(i), [&](auto s) { WriteTPifHLC(s, h); });
    }
    for (bool hsv : {false, true}) {
        HighlightColorData h;
        h.colorant = 3, h.map = 4, h.mismatch = 3;
        auto& c = hsv ? h.mapColorCustom : h.colorantCustom;
        c.present = true, c.slot = 2, c.hasHSV = hsv, c.hasRGB = !hsv, c.r = 10, c.g = 20, c.b = 30, c.h = 120,
        c.s = 50, c.v = 75;
        t.add(std::string("highlight custom ") + (hsv ? "hsv" : "rgb"), [&](auto s) { WriteTPifHLC(s, h); });
    }
    t.add("operation attributes", [](auto s) { WriteTPifOpAttrib(s, "Job", "Me"); });
    t.add("resolution", [](auto s) { WriteTPifResolution(s, {1200, 600, 3}); });
    t.add("image shift", [](auto s) { WriteTPifImageShift(s, 1, -2, 3, -4); });
    t.add("page ranges", [](auto s) { WriteTPifPageRanges(s, 2, 9); });
    t.add("accounting", [](auto s) { WriteTPifAccounting(s, "u1", "a2"); });
    t.add("trc", [](auto s) { WriteTPifTRC(s, "Curve"); });
    t.add("gray", [](auto s) { WriteTPifGraySource(s, "undefined-source-gray-text", "G"); });
    t.add("notes", [](auto s) { WriteTPifJobNotes(s, "Hi", std::nullopt, "", "Info"); });
    BgFormsData save;
    save.formName = "Letterhead";
    t.add("form save", [&](auto s) { WriteTPifBackgroundForms(s, save); });
    BgFormsData use = save;
    use.useExisting = true, use.cycleStart = 3, use.xShift = 120, use.yShift = -80;
    t.add("form use", [&](auto s) { WriteTPifBackgroundForms(s, use); });
    t.check("writer-elements.golden");
}

using FeatureWriter = void (*)(const writeData*, const pl::DictPtr&);

TEST(TPifTranscript, TicketLayer)
{
    // clang-format off
#define W(name) {#name, name}
    const std::map<std::string, FeatureWriter> writers = {
        W(WriteTPIFJobNameAndUser), W(WriteTPIFJobLevelStock), W(WriteTPIFFrontCover), W(WriteTPIFBackCover),
        W(WriteTPIFInserts), W(WriteTPIFExceptions), W(WriteTPIFFinishing), W(WriteTPIFOffset),
        W(WriteTPIFJobNotes), W(WriteTPIFJobType), W(WriteTPIFDuplex), W(WriteTPIFOutputDestination),
        W(WriteTPIFResolution), W(WriteTPIFHighlightColor), W(WriteTPIFImageShift), W(WriteTPIFFullColor),
        W(WriteTPIFOPISubsitution), W(WriteTPIFOPIPreScan), W(WriteTPIFAntiAliasing), W(WriteTPIFHalftone),
        W(WriteTPIFLightenDarken), W(WriteTPIFTonerSaver), W(WriteTPIFOutputOrder), W(WriteTPIFPrinterEmulation),
        W(WriteTPIFImageRotation), W(WriteTPIFOutputColor), W(WriteTPIFBackgroundForms), W(WriteTPIFAccounting),
        W(WriteTPIFPagesToPrint),
        {"Document", WriteTPIFToSink},
        // The import/export summary, one line per write; keys read as themselves, but for the
        // two separators, so the lines show the format.
        {"Summary",
         [](const writeData* s, const pl::DictPtr& ticket) {
             std::vector<std::string> lines;
             buildSummaryText(ticket, lines, [](std::string_view key) {
                 return key == ":" ? std::string(": ") : key == "," ? std::string(", ") : std::string(key);
             });
             for (const std::string& line : lines)
                 s->write(s->cookie, (line + "\n").c_str(), 0);
         }},
        {"Stock",
         [](const writeData* s, const pl::DictPtr& stock) {
             MediaData m;
             FillMediaData(m, stock);
             WriteTPifMedia(s, m);
         }},
    };
#undef W
    // clang-format on
    Transcript t;
    std::istringstream cases(tpiftest::readFile(tpiftest::dataPath("writer-features.txt")));
    int count = 0;
    for (std::string line; std::getline(cases, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        const size_t tab = line.find('\t');
        const auto writer = writers.find(line.substr(0, tab));
        ASSERT_NE(writer, writers.end()) << line;
        pl::ParseResult r;
        auto ticket = pl::as<pl::Dictionary>(pl::readPlist("<plist version=\"1.0\"><dict>" +
                                                               (tab == std::string::npos ? "" : line.substr(tab + 1)) +
                                                               "</dict></plist>",
                                                           &r));
        ASSERT_TRUE(ticket) << line << ": " << r.message;
        t.add(line, [&](auto s) { writer->second(s, ticket); });
        ++count;
    }
    EXPECT_GT(count, 300);
    t.check("writer-features.golden");
}

} // namespace
