// A private home for each test: the preference and maker folders live in a fresh temporary
// folder, and the environment is restored afterwards.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

namespace talmo::test {

class MarkingHome : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (size_t i = 0; i < kVariables.size(); ++i)
            if (const char* v = std::getenv(kVariables[i]))
                saved_[i] = v;
        char pattern[] = "/tmp/talmo-marking-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        root_ = pattern;
        ::setenv("HOME", (root_ + "/home").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (root_ + "/config").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (root_ + "/data").c_str(), 1);
        ::setenv("XDG_DATA_DIRS", (root_ + "/sys").c_str(), 1);
    }
    void TearDown() override
    {
        for (size_t i = 0; i < kVariables.size(); ++i) {
            if (saved_[i])
                ::setenv(kVariables[i], saved_[i]->c_str(), 1);
            else
                ::unsetenv(kVariables[i]);
        }
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }
    std::string makerFolder() const { return root_ + "/data/Talmo"; }
    std::string watermarkFilePath() const { return makerFolder() + "/com.talmo.printing.watermarks.plist"; }

    std::string root_;

private:
    static constexpr std::array<const char*, 4> kVariables = {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                                                              "XDG_DATA_DIRS"};
    std::array<std::optional<std::string>, 4> saved_;
};

} // namespace talmo::test
