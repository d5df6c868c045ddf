// talmo tpif import FILE... [-o OUT.plist]: TPIF files into one settings dictionary.
// talmo tpif summary SETTINGS.plist: the import/export summary lines of a settings ticket.
#include "cli/command.h"
#include "device/device.h"
#include "platform/atomic-file.h"
#include "platform/platform.h"
#include "tpif/tpif.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

using namespace talmo;

// The bundle's profile; else TALMO_DEVICE_PROFILE; else the source tree's copy.
bool loadProfile(const std::string& explicitPath)
{
    if (!explicitPath.empty())
        return TDPInitializeFromFile(explicitPath);
    TDPInitialize();
    if (TDPGetFeaturesWithProperty("ID")->size() > 0)
        return true;
    if (const char* env = std::getenv("TALMO_DEVICE_PROFILE"); env && *env)
        return TDPInitializeFromFile(env);
    return TDPInitializeFromFile(std::string(TALMO_SOURCE_RESOURCES) + "/Device Profile.plist");
}

int tpifImport(const std::vector<std::string>& args)
{
    std::vector<std::string> files;
    std::string out;
    std::string profile;
    for (size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "-o" || args[i] == "--profile") {
            if (i + 1 >= args.size())
                return cli::usage(args[i] + " needs a file name");
            (args[i] == "-o" ? out : profile) = args[i + 1];
            ++i;
        } else if (!args[i].empty() && args[i][0] == '-') {
            return cli::usage("unknown option '" + args[i] + "'");
        } else {
            files.push_back(args[i]);
        }
    }
    if (files.empty())
        return cli::usage("tpif import takes one or more TPIF files");
    if (!loadProfile(profile))
        return cli::fail("cannot read the device profile" + (profile.empty() ? std::string() : " " + profile));

    int status = 0;
    auto dictionary = pl::makeDict();
    for (const auto& file : files) {
        std::string why;
        if (const OSStatus s = TPIFImportFileAtPath(file, dictionary, &why); s != noErr) {
            std::fprintf(stderr, "talmo: %s: cannot import (%d): %s\n", file.c_str(), static_cast<int>(s), why.c_str());
            status = 1;
        }
    }
    const std::string text = pl::writePlist(dictionary);
    if (!out.empty()) {
        int error = 0;
        if (!WriteFileAtomically(out, text, 0644, &error))
            return cli::fail("cannot write " + out + ": " + std::strerror(error));
    } else if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        return cli::fail("cannot write the settings");
    }
    return status;
}

cli::Registration reg("tpif import",
                      "FILE... [-o OUT.plist] [--profile PROFILE.plist]  import TPIF files into one "
                      "settings dictionary",
                      tpifImport);

} // namespace

namespace {

// The extension bundle's texts; without a bundle, the source tree's English fragments.
LabelLookup summaryLabels()
{
    if (const Bundle* bundle = ExtensionBundle())
        return [bundle](std::string_view key) { return bundle->localizedString(key); };
    auto table = pl::makeDict();
    std::error_code ec;
    std::vector<std::filesystem::path> fragments;
    for (const auto& e :
         std::filesystem::directory_iterator(std::string(TALMO_SOURCE_RESOURCES) + "/en.lproj/Localizable.d", ec))
        if (e.path().extension() == ".strings")
            fragments.push_back(e.path());
    std::sort(fragments.begin(), fragments.end());
    for (const auto& f : fragments)
        if (auto t = readStringsFile(f.string()))
            for (const auto& [k, v] : *t)
                table->set(k, v);
    return [table](std::string_view key) { return table->getString(key).value_or(std::string(kStringNotFound)); };
}

int tpifSummary(const std::vector<std::string>& args)
{
    if (args.size() != 2 || (!args[1].empty() && args[1][0] == '-'))
        return cli::usage("tpif summary takes one SETTINGS file");
    pl::ParseResult r;
    auto root = pl::readPlistFile(args[1], &r);
    if (!root)
        return cli::fail(args[1] + ":" + std::to_string(r.line) + ": " + r.message);
    auto ticket = pl::as<pl::Dictionary>(root);
    if (!ticket)
        return cli::fail(args[1] + ": the settings must be a dictionary");
    std::vector<std::string> lines;
    buildSummaryText(ticket, lines, summaryLabels());
    for (const auto& line : lines)
        std::printf("%s\n", line.c_str());
    return std::fflush(stdout) == 0 ? 0 : cli::fail("cannot write the summary");
}

cli::Registration regSummary("tpif summary",
                             "SETTINGS.plist  the import/export summary of a settings ticket, one line "
                             "per line",
                             tpifSummary);

} // namespace
