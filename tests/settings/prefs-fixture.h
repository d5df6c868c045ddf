// A private home for preference tests: HOME and the XDG variables point into a fresh temporary
// folder, so no test ever reads or writes the real user's files.
#pragma once

#include "settings/settings.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace talmo::test {

class PrefsHome : public ::testing::Test {
public:
    static std::string readAll(const std::string& path)
    {
        std::string bytes;
        if (!ReadFileBytes(path, bytes, 1u << 26))
            return "<unreadable>";
        return bytes;
    }

    // Names in `folder` that are temporary files of ours.
    static std::vector<std::string> tempFiles(const std::string& folder)
    {
        std::vector<std::string> out;
        std::error_code ec;
        for (const auto& e : std::filesystem::directory_iterator(folder, ec)) {
            pid_t pid = 0;
            if (ParseTempFileName(e.path().filename().string(), pid))
                out.push_back(e.path().filename().string());
        }
        return out;
    }

protected:
    void SetUp() override
    {
        const char* tmp = std::getenv("TMPDIR");
        std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/talmo-prefs-XXXXXX";
        ASSERT_NE(::mkdtemp(templ.data()), nullptr);
        root_ = templ;
        for (const char* v : kVariables) {
            const char* old = std::getenv(v);
            saved_.emplace_back(old ? std::optional<std::string>(old) : std::nullopt);
        }
        ::setenv("HOME", (root_ + "/home").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", configHome().c_str(), 1);
        ::setenv("XDG_DATA_HOME", dataHome().c_str(), 1);
        ::setenv("XDG_DATA_DIRS", (root_ + "/sys1:" + root_ + "/sys2/").c_str(), 1);
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
        // A test may leave a folder read-only; make it removable first.
        for (auto it = std::filesystem::recursive_directory_iterator(root_, ec);
             !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
            if (it->is_directory())
                ::chmod(it->path().c_str(), 0700);
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

    std::string root_;

private:
    static constexpr const char* kVariables[] = {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS"};
    std::vector<std::optional<std::string>> saved_;
};

} // namespace talmo::test
