// Widgets on Qt's offscreen platform, a private home for the input history, and the built
// bundle for strings and interface descriptions.
#pragma once

#include "settings/prefs-fixture.h"
#include "toolkit/toolkit.h"

#include <QApplication>

namespace talmo::test {

class ToolkitTest : public PrefsHome {
protected:
    void SetUp() override
    {
        PrefsHome::SetUp();
        static int argc = 1;
        static char name[] = "test_toolkit";
        static char* argv[] = {name, nullptr};
        static QApplication* app = (::setenv("QT_QPA_PLATFORM", "offscreen", 1), new QApplication(argc, argv));
        ASSERT_TRUE(app);
        bundle_ = Bundle::open(TALMO_BUNDLE_PATH);
        ASSERT_TRUE(bundle_);
    }
    void TearDown() override
    {
        SetInstalledFeatureHook(nullptr);
        PrefsHome::TearDown();
    }
    const Bundle& bundle() const { return *bundle_; }

private:
    std::optional<Bundle> bundle_;
};

} // namespace talmo::test
