// A private home plus a bundle whose Localizable table is this module's English fragment.
#pragma once

#include "settings-fixture.h"

#include "platform/bundle.h"
#include "platform/strings-table.h"

namespace talmo::test {

class SettingsBundle : public SettingsHome {
protected:
    void SetUp() override
    {
        SettingsHome::SetUp();
        std::filesystem::path lproj = std::filesystem::path(root()) / "Test.bundle/Resources/en.lproj";
        std::filesystem::create_directories(lproj);
        std::filesystem::copy_file(SettingsStringsPath(), lproj / "Localizable.strings");
        std::optional<Bundle> b = Bundle::open(root() + "/Test.bundle");
        ASSERT_TRUE(b.has_value());
        bundle_.emplace(std::move(*b));
    }

    const Bundle& bundle() const { return *bundle_; }

private:
    std::optional<Bundle> bundle_;
};

} // namespace talmo::test
