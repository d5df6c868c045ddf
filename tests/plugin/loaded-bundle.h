// The built bundle loaded the way a print dialog loads it (Info.plist read, library opened with
// dlopen, the factory found by the name Info.plist gives), under Qt's offscreen platform.
#pragma once

#include "plugin/plugin.h"
#include "toolkit/toolkit.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>

#include <dlfcn.h>

#include <cstdlib>
#include <optional>

namespace talmo {

using Factory = void* (*)(CFAllocatorRef, CFUUIDRef);

inline CFUUIDBytes bytesOf(const Uuid& u)
{
    CFUUIDBytes b{};
    for (size_t i = 0; i < 16; ++i)
        b.bytes[i] = u.bytes()[i];
    return b;
}

inline const Uuid kType = *Uuid::fromString("BDB091F4-E57F-11D3-B5CC-0050E4603277");
inline const Uuid kFactory = *Uuid::fromString("7680F90E-ADCD-11D9-85C8-000A95BDF8C8");
inline const Uuid kExtension = *Uuid::fromString("A996FD7E-B738-11D3-8519-0050E4603277");
inline const Uuid kIUnknown = *Uuid::fromString("00000000-0000-0000-C000-000000000046");

// The factory function's name for our factory, as a loader reads it from Info.plist: the
// type lists the factory UUID, and the factories table names its function.
inline std::string factoryNameFor(const Bundle& bundle, const Uuid& type, const Uuid& factory)
{
    auto info = bundle.infoDictionary();
    auto types = info->getDict("CFPlugInTypes");
    auto factories = info->getDict("CFPlugInFactories");
    if (!types || !factories)
        return {};
    for (const auto& [typeText, list] : *types) {
        if (Uuid::fromString(typeText) != type || !pl::as<pl::Array>(list))
            continue;
        for (const auto& f : *pl::as<pl::Array>(list)) {
            auto s = pl::as<pl::String>(f);
            if (!s || Uuid::fromString(s->text) != factory)
                continue;
            for (const auto& [factoryText, name] : *factories)
                if (Uuid::fromString(factoryText) == factory && pl::as<pl::String>(name))
                    return pl::as<pl::String>(name)->text;
        }
    }
    return {};
}

class LoadedBundle : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        static int argc = 1;
        static char programName[] = "test_plugin";
        static char* argv[] = {programName, nullptr};
        if (!QCoreApplication::instance())
            new QApplication(argc, argv); // lives as long as the process: the bundle's widgets use it
        if (bundle)
            return; // every suite shares one loaded library
        bundle = new std::optional<Bundle>(Bundle::open(TALMO_BUNDLE_PATH));
        ASSERT_TRUE(*bundle) << TALMO_BUNDLE_PATH;
        auto lib = (*bundle)->executablePath();
        ASSERT_TRUE(lib);
        handle = dlopen(lib->c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(handle, nullptr) << dlerror();
        std::string name = factoryNameFor(**bundle, kType, kFactory);
        ASSERT_EQ(name, "TalmoPDEPluginFactory");
        factory = reinterpret_cast<Factory>(dlsym(handle, name.c_str()));
        ASSERT_NE(factory, nullptr);
    }
    // The library stays loaded: Qt keeps references into it (event filters, timers).
    static void TearDownTestSuite() { }

    IUnknownInstance* newInstance()
    {
        auto* i = static_cast<IUnknownInstance*>(factory(nullptr, &kType));
        EXPECT_NE(i, nullptr);
        return i;
    }

    // The ten operations a panel module's entry point hands out, copied as the host copies them;
    // all null (after a reported failure) when the bundle has no such panel.
    PlugInIntfVTable panelOperations(const char* entryPoint)
    {
        if (auto* instance = newInstance()) // the factory finds the bundle's resources
            instance->vtablePtr->Release(instance);
        PlugInIntfVTable ops{};
        PlugInIntf* intf = nullptr;
        auto entry = reinterpret_cast<PanelInterfaceEntryPoint>(dlsym(handle, entryPoint));
        if (!entry || entry(&intf) != noErr || !intf) {
            ADD_FAILURE() << "no panel interface from " << entryPoint;
            return ops;
        }
        ops = *intf->vtable;
        FreePanelInterface(intf);
        return ops;
    }

    static inline std::optional<Bundle>* bundle = nullptr;
    static inline void* handle = nullptr;
    static inline Factory factory = nullptr;
};

} // namespace talmo
