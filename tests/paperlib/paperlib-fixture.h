// A private home for the paper library tests: HOME and the XDG variables point into a fresh
// temporary folder, so no test reads or writes the real user's library.
#pragma once

#include "paperlib/paperlib.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace talmo::test {

class LibraryHome : public ::testing::Test {
protected:
    void SetUp() override
    {
        const char* tmp = std::getenv("TMPDIR");
        std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/talmo-paperlib-XXXXXX";
        ASSERT_NE(::mkdtemp(templ.data()), nullptr);
        root_ = templ;
        for (const char* v : kVariables) {
            const char* old = std::getenv(v);
            saved_.emplace_back(old ? std::optional<std::string>(old) : std::nullopt);
        }
        ::setenv("HOME", (root_ + "/home").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (root_ + "/config").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (root_ + "/data").c_str(), 1);
        ::setenv("XDG_DATA_DIRS", (root_ + "/shipped").c_str(), 1);
    }

    void TearDown() override
    {
        for (size_t i = 0; i < saved_.size(); ++i) {
            if (saved_[i])
                ::setenv(kVariables[i], saved_[i]->c_str(), 1);
            else
                ::unsetenv(kVariables[i]);
        }
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }

    std::string libraryFile() const { return root_ + "/config/talmo/" + kStockLibraryDomain; }
    std::string shippedFile() const { return root_ + "/shipped/talmo/" + kStockLibraryFallbackFile; }

    static void writeRaw(const std::string& path, const std::string& bytes)
    {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        ASSERT_TRUE(WriteFileAtomically(path, bytes, 0600));
    }

    static std::string readAll(const std::string& path)
    {
        std::string bytes;
        if (!ReadFileBytes(path, bytes, 1u << 26))
            return "<unreadable>";
        return bytes;
    }

    // The library file as a dictionary (null when missing or not a property list).
    pl::DictPtr libraryDict() const { return pl::as<pl::Dictionary>(pl::readPlistFile(libraryFile())); }

    std::string root_;

private:
    static constexpr const char* kVariables[] = {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS"};
    std::vector<std::optional<std::string>> saved_;
};

// A named paper that every printer map offers.
inline Stock NamedPaper(const std::string& name, int32_t weight = 90)
{
    Stock s;
    s.setSize(1);
    s.setColor(1);
    s.setType(1);
    s.setWeight(weight);
    s.setCustomName(name);
    return s;
}

inline StockLibrary Entry(const Stock& stock, const std::string& name = {})
{
    StockLibrary e;
    e.setStock(stock);
    e.setName(name);
    return e;
}

} // namespace talmo::test
