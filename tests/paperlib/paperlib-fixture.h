// A private home for the paper library tests: HOME and the XDG variables point into a fresh
// temporary folder, so no test reads or writes the real user's library.
#pragma once

#include "paperlib/paperlib.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace talmo::test {

class LibraryHome : public ::testing::Test {
protected:
    void SetUp() override
    {
        root_ = testing::TempDir() + "talmo-paperlib-XXXXXX";
        ASSERT_NE(::mkdtemp(root_.data()), nullptr);
        for (int i = 0; i < 4; ++i) {
            const char* old = std::getenv(kVariables[i][0]);
            saved_[i] = old ? std::optional<std::string>(old) : std::nullopt;
            ::setenv(kVariables[i][0], (root_ + kVariables[i][1]).c_str(), 1);
        }
    }
    void TearDown() override
    {
        for (int i = 0; i < 4; ++i)
            saved_[i] ? ::setenv(kVariables[i][0], saved_[i]->c_str(), 1) : ::unsetenv(kVariables[i][0]);
        std::filesystem::remove_all(root_);
    }

    std::string libraryFile() const { return root_ + "/config/talmo/" + kStockLibraryDomain; }
    std::string shippedFile() const { return root_ + "/shipped/talmo/" + kStockLibraryFallbackFile; }
    static std::string dataPath(const std::string& name) { return TALMO_SOURCE_DIR "/tests/paperlib/data/" + name; }
    static void writeRaw(const std::string& path, const std::string& bytes)
    {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        ASSERT_TRUE(WriteFileAtomically(path, bytes, 0600));
    }
    static std::string readAll(const std::string& path)
    {
        std::string bytes;
        return ReadFileBytes(path, bytes, 1u << 26) ? bytes : "<unreadable>";
    }
    pl::DictPtr libraryDict() const { return pl::as<pl::Dictionary>(pl::readPlistFile(libraryFile())); }

    std::string root_;

private:
    static constexpr const char* kVariables[4][2] = {
        {"HOME", "/home"}, {"XDG_CONFIG_HOME", "/config"}, {"XDG_DATA_HOME", "/data"}, {"XDG_DATA_DIRS", "/shipped"}};
    std::optional<std::string> saved_[4];
};

// A named paper that every printer map offers.
inline Stock NamedPaper(const std::string& name, int32_t weight = 90)
{
    Stock s;
    s.setSize(1), s.setColor(1), s.setType(1), s.setWeight(weight), s.setCustomName(name);
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
