// One panel switch as the user makes it: the chooser's new value runs the host's selectPanel
// (the panel left writes to the ticket, every other panel reloads, the new one is shown), then
// Qt lays out and paints the pane. The bundle is loaded the way a print dialog loads it.
#include "plugin/plugin.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QComboBox>
#include <QPixmap>
#include <QWidget>

#include <dlfcn.h>

#include <cstdlib>

using namespace talmo;

namespace {

QComboBox* findChooser(QWidget* pane)
{
    for (QComboBox* box : pane->findChildren<QComboBox*>())
        if (box->property("controlSignature").toString() == "Tshl" && box->property("controlID").toInt() == 1)
            return box;
    return nullptr;
}

void SwitchPanel(benchmark::State& state)
{
    void* library = dlopen(TALMO_BUNDLE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    auto factory =
        library ? reinterpret_cast<void* (*)(CFAllocatorRef, CFUUIDRef)>(dlsym(library, kTalmoPDEPluginFactoryName))
                : nullptr;
    if (!factory) {
        state.SkipWithError("the bundle's library does not load");
        return;
    }
    const Uuid type = *Uuid::fromString(kPMPrintingDialogExtensionTypeIDStr);
    const Uuid iid = *Uuid::fromString(kPMPrintingDialogExtensionIntfIIDStr);
    auto* instance = static_cast<IUnknownInstance*>(factory(nullptr, &type));
    CFUUIDBytes bytes{};
    for (size_t i = 0; i < 16; ++i)
        bytes.bytes[i] = iid.bytes()[i];
    void* out = nullptr;
    instance->vtablePtr->QueryInterface(instance, bytes, &out);
    PlugInIntf* intf = static_cast<PlugInIntf*>(out);
    PlugInIntfVTable& t = *intf->vtable;

    PrintSession session;
    QWidget window;
    QWidget* pane = new QWidget(&window);
    PMPDEContext context = nullptr;
    OSType creator = 0;
    std::string kind, title;
    uint32_t maxH = 0, maxV = 0;
    PMPDEFlags flags = 0;
    t.Prologue(&context, &creator, &kind, &title, &maxH, &maxV);
    t.Initialize(context, &flags, nullptr, pane, &session);
    window.resize(int(maxH), int(maxV));
    window.show();
    t.Open(context);
    QComboBox* chooser = findChooser(pane);
    if (!chooser) {
        state.SkipWithError("no chooser in the pane");
        return;
    }
    QPixmap frame(window.size());
    int next = 0;
    for (auto _ : state) {
        next = (next + 1) % chooser->count();
        chooser->setCurrentIndex(next);
        window.render(&frame); // what the user waits for: the new panel on screen
    }
    t.Close(context);
    t.Terminate(context, noErr);
    t.Release(&intf);
    instance->vtablePtr->Release(instance);
}
BENCHMARK(SwitchPanel)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
