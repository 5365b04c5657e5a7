/*
 * A folder with small tuning data, and the lines of a small session.
 */
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "TuningTexts.h"
#include "support/TemporaryFolder.h"

namespace desk {

using Arguments = std::vector<std::string>;

inline constexpr const char* kInit =
        R"({"at_us": 0, "thread": "s", "call": "init", "scenario": 6, "customization": 9})"
        "\n";
inline constexpr const char* kStart =
        R"({"at_us": 1, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 3})"
        "\n";
inline constexpr const char* kUninit = R"({"at_us": 2, "thread": "s", "call": "uninit"})"
                                       "\n";

class Replay : public testing::Test {
  protected:
    Replay() {
        write("platform.json", kPlatformText);
        write("customer.json", kCustomerText);
        write("settings.json", kSettingsText);
    }

    void write(const char* file, const std::string& text) const {
        std::ofstream(mFolder / file) << text;
    }
    std::string path(const char* file) const { return mFolder / file; }

    Arguments with(const Arguments& more) const {
        Arguments all = {"-", "--tuning", mFolder};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    // The part of the output from this line on.
    static std::string from(const std::string& text, const std::string& start) {
        const size_t place = text.find(start);
        return place == std::string::npos ? text : text.substr(place);
    }

  private:
    const TemporaryFolder mTemporary;

  protected:
    const std::filesystem::path mFolder = mTemporary.path();
};

}  // namespace desk
