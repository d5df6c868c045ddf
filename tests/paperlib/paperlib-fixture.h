// A private home for the paper library tests: HOME and the XDG variables point into a fresh
// temporary folder, so no test reads or writes the real user's library.
#pragma once

#include "paperlib/paperlib.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
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
        for (const auto& [variable, folder] : kVariables) {
            const char* old = std::getenv(variable);
            saved_.emplace_back(old ? std::optional<std::string>(old) : std::nullopt);
            ::setenv(variable, (root_ + folder).c_str(), 1);
        }
    }

    void TearDown() override
    {
        for (size_t i = 0; i < saved_.size(); ++i)
            saved_[i] ? ::setenv(kVariables[i].first, saved_[i]->c_str(), 1) : ::unsetenv(kVariables[i].first);
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }

    std::string libraryFile() const { return root_ + "/config/talmo/" + kStockLibraryDomain; }
    std::string shippedFile() const { return root_ + "/shipped/talmo/" + kStockLibraryFallbackFile; }

    static std::string dataPath(const std::string& name)
    {
        return std::string(TALMO_SOURCE_DIR) + "/tests/paperlib/data/" + name;
    }

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
    static constexpr std::pair<const char*, const char*> kVariables[] = {
        {"HOME", "/home"}, {"XDG_CONFIG_HOME", "/config"}, {"XDG_DATA_HOME", "/data"}, {"XDG_DATA_DIRS", "/shipped"}};
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
