// A private home for tests that touch preferences: HOME and the XDG variables point into a fresh
// temporary folder, so no test ever reads or writes the real user's files.
#pragma once

#include "settings/settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <list>
#include <optional>
#include <string>
#include <vector>

namespace talmo::test {

// Sets (or, with null, unsets) an environment variable for one scope.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name)
    {
        if (const char* old = std::getenv(name))
            old_ = old;
        value ? ::setenv(name, value, 1) : ::unsetenv(name);
    }
    ~ScopedEnv() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> old_;
};

class PrefsHome : public ::testing::Test {
public:
    static std::string readAll(const std::string& path)
    {
        std::string bytes;
        return ReadFileBytes(path, bytes, 1u << 26) ? bytes : "<unreadable>";
    }

protected:
    void SetUp() override
    {
        std::string templ = ::testing::TempDir() + "talmo-prefs-XXXXXX";
        ASSERT_NE(::mkdtemp(templ.data()), nullptr);
        root_ = templ;
        env_.emplace_back("HOME", (root_ + "/home").c_str());
        env_.emplace_back("XDG_CONFIG_HOME", configHome().c_str());
        env_.emplace_back("XDG_DATA_HOME", dataHome().c_str());
        env_.emplace_back("XDG_DATA_DIRS", (root_ + "/sys1:" + root_ + "/sys2/").c_str());
    }

    void TearDown() override
    {
        env_.clear();
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }

    std::string configHome() const { return root_ + "/config"; }
    std::string dataHome() const { return root_ + "/data"; }
    std::string prefsFolder() const { return configHome() + "/talmo"; }
    std::string prefsFile(const std::string& name) const { return prefsFolder() + "/" + name; }

    static void writeRaw(const std::string& path, const std::string& bytes)
    {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        ASSERT_TRUE(WriteFileAtomically(path, bytes, 0600));
    }

    // Stores `entries` under `key` in the input history file, as an earlier dialog would.
    static void storeHistory(const std::string& key, const std::vector<pl::ValuePtr>& entries)
    {
        pl::DictPtr prefs = CopyUserPreferences(kInputHistoryFile);
        pl::ArrayPtr array = pl::makeArray();
        for (const pl::ValuePtr& v : entries)
            array->append(v);
        prefs->set(key, array);
        ASSERT_TRUE(WriteUserPreferences(kInputHistoryFile, prefs));
    }

    std::string root_;

private:
    std::list<ScopedEnv> env_;
};

} // namespace talmo::test
