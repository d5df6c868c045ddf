// talmo watermark: watermarks and their preview, headless.
#include "cli/command.h"
#include "marking/marking.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <cstring>

namespace {

using namespace talmo;

// Writes to OUT atomically, or to stdout when no -o was given.
int emit(const std::string& outPath, std::string_view bytes)
{
    if (outPath.empty()) {
        if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0)
            return cli::fail("writing standard output failed");
        return 0;
    }
    int error = 0;
    if (!WriteFileAtomically(outPath, bytes, 0644, &error))
        return cli::fail(outPath + ": " + std::strerror(error));
    return 0;
}

} // namespace

namespace {

using namespace talmo;

void printRecord(const _WatermarkData& r)
{
    std::printf("textString = %s\nfilename = %s\nfilePath = %s\nfontName = %s\n",
                std::string(watermarkText(r.textString)).c_str(), std::string(watermarkText(r.filename)).c_str(),
                std::string(watermarkText(r.filePath)).c_str(), std::string(watermarkText(r.fontName)).c_str());
    std::printf("xOffset = %g\nyOffset = %g\n", r.xOffset, r.yOffset);
    std::printf("fontColor = %g %g %g %g\nwellColor = %g %g %g %g\n", r.fontColor.red, r.fontColor.green,
                r.fontColor.blue, r.fontColor.alpha, r.wellColor.red, r.wellColor.green, r.wellColor.blue,
                r.wellColor.alpha);
    std::printf("angle = %d\ndensity = %d\nscale = %d\nunits = %d\nfontSize = %d\n", r.angle, r.density, r.scale,
                r.units, r.fontSize);
    std::printf("xPos = %g\nyPos = %g\nglyphCount = %d\n", r.xPos, r.yPos, r.glyphCount);
}

// "612x792": the paper size in points.
bool parsePaper(const std::string& text, double& width, double& height)
{
    char* end = nullptr;
    width = std::strtod(text.c_str(), &end);
    if (!end || *end != 'x')
        return false;
    const char* rest = end + 1;
    height = std::strtod(rest, &end);
    return end && *end == '\0' && end != rest && width > 0 && height > 0 && width <= 14400 && height <= 14400;
}

int watermark(const std::vector<std::string>& args)
{
    if (args.size() < 2)
        return cli::usage("watermark needs list, show NAME, create-defaults or preview NAME -o OUT.pdf");
    const std::string& verb = args[1];
    if (verb == "list" && args.size() == 2) {
        loadWatermarkList(kWatermarksFile);
        for (const auto& name : listOfWatermarks())
            std::printf("%s\n", name.c_str());
        return 0;
    }
    if (verb == "show" && args.size() == 3) {
        _WatermarkData record;
        if (!loadWatermarkData(kWatermarksFile, args[2], record))
            return cli::fail("no watermark named \"" + args[2] + "\"");
        printRecord(record);
        return 0;
    }
    if (verb == "create-defaults" && args.size() == 2) {
        // As the panel does: defaults only for an empty list, never over the user's own.
        if (size_t count = loadWatermarkList(kWatermarksFile); count > 0) {
            std::printf("the watermark list already holds %zu name%s; no defaults created\n", count,
                        count == 1 ? "" : "s");
            return 0;
        }
        Bundle* bundle = ExtensionBundle();
        if (!bundle)
            return cli::fail("the default texts come from the extension bundle: set TALMO_BUNDLE_DIR");
        for (const char* key : {"DraftWatermark", "ConfidentialWatermark", "CopyWatermark"})
            if (bundle->localizedString(key) == kStringNotFound)
                return cli::fail(bundle->path() + " has no text for \"" + key + "\"");
        CreateDefaultWatermarks(*bundle);
        if (loadWatermarkList(kWatermarksFile) == 0)
            return cli::fail("the watermark file could not be written");
        return 0;
    }
    if (verb == "preview" && args.size() >= 3) {
        std::string outPath;
        double width = 612, height = 792; // US Letter
        for (size_t i = 3; i < args.size(); ++i) {
            if (args[i] == "-o" && i + 1 < args.size())
                outPath = args[++i];
            else if (args[i] == "--paper" && i + 1 < args.size()) {
                if (!parsePaper(args[++i], width, height))
                    return cli::usage("--paper takes WxH in points, e.g. 595x842");
            } else
                return cli::usage("unexpected \"" + args[i] + "\"");
        }
        if (outPath.empty())
            return cli::usage("preview needs -o OUT.pdf");
        loadWatermarkList(kWatermarksFile);
        const auto& names = listOfWatermarks();
        auto it = std::find(names.begin(), names.end(), args[2]);
        if (it == names.end())
            return cli::fail("no watermark named \"" + args[2] + "\" in the list");
        std::unique_ptr<MemoryConsumerInfo, void (*)(void*)> consumer(CreateMemoryConsumer(),
                                                                      MemoryConsumerReleaseInfo);
        if (!consumer || !renderWatermark(int32_t(it - names.begin()), width, height, *consumer))
            return cli::fail("the preview could not be rendered");
        return emit(outPath, std::string_view(reinterpret_cast<const char*>(consumer->block), consumer->written));
    }
    return cli::usage("watermark needs list, show NAME, create-defaults or preview NAME -o OUT.pdf [--paper WxH]");
}

cli::Registration regWatermark("watermark",
                               "list | show NAME | create-defaults | preview NAME -o OUT.pdf [--paper WxH]  "
                               "watermarks and their preview",
                               watermark);

} // namespace
