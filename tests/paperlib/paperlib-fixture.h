// What the paper library tests share: a private home (HOME and the XDG variables point into a
// fresh temporary folder, so no test reads or writes the real user's library), named papers,
// and IPP answers built with libcups, the independent writer of what the fetch parses.
#pragma once

#include "paperlib/paperlib.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <cups/cups.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

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

using Ipp = std::unique_ptr<ipp_t, decltype([](ipp_t* i) { ippDelete(i); })>;

inline std::string IppBytes(ipp_t* message)
{
    std::string out;
    auto append = [](void* to, ipp_uchar_t* buffer, size_t length) -> ssize_t {
        static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(buffer), length);
        return static_cast<ssize_t>(length);
    };
    ippSetState(message, IPP_STATE_IDLE);
    while (ippWriteIO(&out, append, 1, nullptr, message) != IPP_STATE_DATA) { }
    return out;
}

inline void AddKeyword(ipp_t* col, const char* name, const char* value)
{
    ippAddString(col, IPP_TAG_ZERO, IPP_TAG_KEYWORD, name, nullptr, value);
}

inline void AddSize(ipp_t* col, int x, int y, const char* yName = "y-dimension")
{
    Ipp size(ippNew());
    ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "x-dimension", x);
    ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, yName, y);
    ippAddCollection(col, IPP_TAG_ZERO, "media-size", size.get());
}

// A Get-Printer-Attributes answer with `count` A4 papers named "Paper <n>" of 80 + n gsm.
inline std::string PrinterAnswer(int count, ipp_status_t status = IPP_STATUS_OK)
{
    Ipp answer(ippNew());
    ippSetVersion(answer.get(), 2, 0);
    ippSetStatusCode(answer.get(), status);
    ippSetRequestId(answer.get(), 1);
    ippAddString(answer.get(), IPP_TAG_OPERATION, IPP_TAG_CHARSET, "attributes-charset", nullptr, "utf-8");
    ipp_attribute_t* db = nullptr;
    for (int i = 0; i < count; ++i) {
        Ipp col(ippNew());
        AddKeyword(col.get(), "media-key", ("Paper " + std::to_string(i)).c_str());
        ippAddInteger(col.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-weight-metric", 80 + i);
        AddSize(col.get(), 21000, 29700);
        if (!db)
            db = ippAddCollection(answer.get(), IPP_TAG_PRINTER, "media-col-database", col.get());
        else
            ippSetCollection(answer.get(), &db, ippGetCount(db), col.get());
    }
    return IppBytes(answer.get());
}

} // namespace talmo::test
