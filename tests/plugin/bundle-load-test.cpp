// Loads the built bundle the way a print dialog does: read Info.plist, dlopen the library,
// find the factory by the name Info.plist gives, query the interfaces, drive the dialog's
// calls and release everything.
#include "tests/plugin/loaded-bundle.h"

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <set>

using namespace talmo;
namespace fs = std::filesystem;

TEST_F(LoadedBundle, DrivesTheDialogLifecycle)
{
    IUnknownInstance* instance = newInstance();
    ASSERT_TRUE(instance);
    EXPECT_EQ(instance->vtablePtr, &instance->vtable);
    EXPECT_EQ(instance->vtable._reserved, nullptr);
    EXPECT_EQ(instance->factoryID, kFactory);
    EXPECT_EQ(instance->refCount, 1u);

    void* out = nullptr;
    ASSERT_EQ(instance->vtablePtr->QueryInterface(instance, bytesOf(kExtension), &out), 0);
    auto* intf = static_cast<PlugInIntf*>(out);
    ASSERT_TRUE(intf && intf->vtable);
    EXPECT_EQ(intf->refCount, 1u);
    const void* const* slot = reinterpret_cast<const void* const*>(intf->vtable);
    for (size_t i = 0; i < kPlugInIntfSlotCount; ++i)
        EXPECT_NE(slot[i], nullptr) << "slot " << i + 1;

    PlugInIntfVTable& t = *intf->vtable;
    PMPlugInAPIVersion version{9, 9, 9, 9};
    EXPECT_EQ(t.GetAPIVersion(intf, &version), noErr);
    EXPECT_EQ(std::tuple(version.buildVersionMajor, version.buildVersionMinor, version.baseVersionMajor,
                         version.baseVersionMinor),
              std::tuple(1u, 0u, 1u, 0u));

    PrintSession session;
    QWidget pane;
    PMPDEContext context = nullptr;
    OSType creator = 0;
    std::string kind, title;
    uint32_t maxH = 0, maxV = 0;
    PMPDEFlags flags = 0;
    pl::ArrayPtr titles, values;
    EXPECT_EQ(t.Prologue(&context, &creator, &kind, &title, &maxH, &maxV), noErr);
    EXPECT_EQ(t.Initialize(context, &flags, nullptr, &pane, &session), noErr);
    EXPECT_EQ(t.Sync(context, &session, true), noErr);
    EXPECT_EQ(t.GetSummaryText(context, &titles, &values), noErr);
    EXPECT_EQ(t.Open(context), noErr);
    EXPECT_EQ(t.Close(context), noErr);
    EXPECT_EQ(t.Sync(context, &session, false), noErr);
    EXPECT_EQ(t.Terminate(context, noErr), noErr);

    EXPECT_EQ(t.Release(&intf), noErr);
    EXPECT_EQ(intf, nullptr);
    EXPECT_EQ(instance->vtablePtr->Release(instance), 0u);
}

TEST_F(LoadedBundle, QueryingIUnknownTwiceNeedsThreeReleases)
{
    size_t before = CFPlugInInstanceCountForFactory(kFactory);
    IUnknownInstance* instance = newInstance();
    ASSERT_TRUE(instance);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(kFactory), before + 1);
    for (int i = 0; i < 2; ++i) {
        void* out = nullptr;
        EXPECT_EQ(instance->vtablePtr->QueryInterface(instance, bytesOf(kIUnknown), &out), 0);
        EXPECT_EQ(out, instance);
    }
    EXPECT_EQ(instance->refCount, 3u);
    EXPECT_EQ(instance->vtablePtr->Release(instance), 2u);
    EXPECT_EQ(instance->vtablePtr->Release(instance), 1u);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(kFactory), before + 1);
    auto release = instance->vtablePtr->Release; // the instance is gone after this call
    instance->refCount = 0;                      // as a stale count would leave it
    EXPECT_EQ(release(instance), 0u);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(kFactory), before + 1) << "a release at count 0 changes nothing";
    instance->refCount = 1;
    EXPECT_EQ(release(instance), 0u);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(kFactory), before);
}

TEST_F(LoadedBundle, EachExtensionQueryMakesANewRecord)
{
    IUnknownInstance* instance = newInstance();
    ASSERT_TRUE(instance);
    void* a = nullptr;
    void* b = nullptr;
    ASSERT_EQ(instance->vtablePtr->QueryInterface(instance, bytesOf(kExtension), &a), 0);
    ASSERT_EQ(instance->vtablePtr->QueryInterface(instance, bytesOf(kExtension), &b), 0);
    auto* ra = static_cast<PlugInIntf*>(a);
    auto* rb = static_cast<PlugInIntf*>(b);
    ASSERT_TRUE(ra && rb);
    EXPECT_NE(ra, rb);
    EXPECT_NE(ra, static_cast<void*>(instance));
    EXPECT_EQ(ra->refCount, 1u);
    EXPECT_EQ(rb->refCount, 1u);
    EXPECT_EQ(instance->refCount, 1u); // the records do not hold the instance

    // Release at count 2 clears the caller's pointer and frees nothing.
    EXPECT_EQ(ra->vtable->Retain(ra), noErr);
    EXPECT_EQ(ra->refCount, 2u);
    PlugInIntf* callerCopy = ra;
    EXPECT_EQ(ra->vtable->Release(&callerCopy), noErr);
    EXPECT_EQ(callerCopy, nullptr);
    EXPECT_EQ(ra->refCount, 1u);
    EXPECT_NE(ra->vtable, nullptr);

    auto releaseRecord = ra->vtable->Release;
    EXPECT_EQ(releaseRecord(&ra), noErr);
    EXPECT_EQ(releaseRecord(&rb), noErr);
    EXPECT_EQ(ra, nullptr);
    EXPECT_EQ(rb, nullptr);
    EXPECT_EQ(instance->vtablePtr->Release(instance), 0u);
}

TEST_F(LoadedBundle, AnUnknownInterfaceOrTypeGetsNothing)
{
    IUnknownInstance* instance = newInstance();
    ASSERT_TRUE(instance);
    for (const Uuid& iid : {kType, kFactory, Uuid(), Uuid::generate()}) {
        void* out = instance;
        EXPECT_EQ(uint32_t(instance->vtablePtr->QueryInterface(instance, bytesOf(iid), &out)), 0x80000004u)
            << iid.toString();
        EXPECT_EQ(out, nullptr);
    }
    EXPECT_EQ(instance->refCount, 1u);
    EXPECT_EQ(instance->vtablePtr->Release(instance), 0u);
    const size_t before = CFPlugInInstanceCountForFactory(kFactory);
    for (const Uuid& type : {kFactory, kExtension, kIUnknown})
        EXPECT_EQ(factory(nullptr, &type), nullptr) << "another type: " << type.toString();
    EXPECT_EQ(CFPlugInInstanceCountForFactory(kFactory), before);
}

TEST_F(LoadedBundle, ExportsTheFactoryAndThePanelEntryPoints)
{
    std::string cmd = "nm -D --defined-only --format=posix '" + *(*bundle)->executablePath() + "'";
    FILE* p = popen(cmd.c_str(), "r");
    ASSERT_NE(p, nullptr);
    std::set<std::string> exported;
    char line[4096];
    while (fgets(line, sizeof line, p)) {
        std::string s(line);
        exported.insert(s.substr(0, s.find(' ')));
    }
    ASSERT_EQ(pclose(p), 0) << cmd;
    std::set<std::string> expected{"TalmoPDEPluginFactory"};
    expected.insert(std::begin(kBuiltInPanelEntryPoints), std::end(kBuiltInPanelEntryPoints));
    EXPECT_EQ(exported, expected);

    // A host's dlclose must not unmap code that a detached paper-list thread may still run.
    void* again = dlopen((*bundle)->executablePath()->c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(again, nullptr);
    dlclose(again);
    dlclose(handle);
    void* still = dlopen((*bundle)->executablePath()->c_str(), RTLD_NOW | RTLD_NOLOAD);
    EXPECT_NE(still, nullptr) << "the bundle's library was unloaded";
    handle = still;
}

TEST_F(LoadedBundle, CarriesItsDescriptionAndResources)
{
    const Bundle& b = **bundle;
    EXPECT_EQ(b.identifier(), "com.talmo.print.pde.talmofeatures.pressline");
    EXPECT_EQ(b.infoDictionary()->getString("CFPlugInDynamicRegistration"), "NO");

    // Every other file under resources/ is in Resources/, byte for byte.
    const fs::path src = TALMO_RESOURCES_DIR;
    for (const auto& e : fs::recursive_directory_iterator(src)) {
        if (!e.is_regular_file())
            continue;
        std::string rel = fs::relative(e.path(), src).string();
        if (rel == "Info.plist.in" || rel.rfind("en.lproj/Localizable.", 0) == 0)
            continue;
        if (rel.rfind("pictures/", 0) == 0) { // drawings are rendered under their own name
            EXPECT_TRUE(b.resourcePath(fs::path(rel).stem().string())) << rel;
            continue;
        }
        auto path = b.resourcePath(rel);
        ASSERT_TRUE(path) << rel;
        EXPECT_EQ(fs::file_size(*path), e.file_size()) << rel;
    }
}

TEST_F(LoadedBundle, LocalizableHoldsEveryFragmentsEntries)
{
    StringsParseResult r;
    auto table = readStringsFile((*bundle)->path() + "/Resources/en.lproj/Localizable.strings", &r);
    ASSERT_TRUE(table) << r.line << ": " << r.message;
    const fs::path fragments = fs::path(TALMO_RESOURCES_DIR) / "en.lproj/Localizable.d";
    size_t checked = 0;
    std::map<std::string, int> seen;
    std::vector<pl::DictPtr> parts;
    for (const auto& e : fs::directory_iterator(fragments)) {
        if (e.path().extension() != ".strings")
            continue;
        auto part = readStringsFile(e.path().string(), &r);
        ASSERT_TRUE(part) << e.path() << ":" << r.line << ": " << r.message;
        for (const auto& [k, v] : *part)
            ++seen[k];
        parts.push_back(part);
    }
    for (const auto& part : parts)
        for (const auto& [k, v] : *part)
            if (seen[k] == 1) { // a key two areas define takes the later one's text
                EXPECT_TRUE(pl::equal(table->get(k), v)) << k;
                ++checked;
            }
    EXPECT_GT(checked, 0u);
    EXPECT_EQ((*bundle)->localizedString("PDE Shell"), "Talmo Features");
}
