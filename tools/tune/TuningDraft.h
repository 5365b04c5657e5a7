/*
 * Tuning data as JSON that is being changed.
 */
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "tune/SessionSurvey.h"
#include "tuning/TuningLoader.h"

namespace desk {

enum class AnchorTarget : uint8_t { Latency, Jitter };

// The place of a figure: the file and the JSON pointer.
struct TuningPlace {
    std::string file;
    std::string path;

    bool operator<(const TuningPlace& other) const {
        return std::tie(file, path) < std::tie(other.file, other.path);
    }
};

class TuningDraft {
  public:
    // Texts that the loader takes.
    explicit TuningDraft(const TuningTexts& texts);

    // The data so far. Throws std::runtime_error when the loader refuses it.
    std::shared_ptr<const TuningData> data() const;
    // As files hold it; a file that was not changed is as it was.
    TuningTexts texts() const;

    // Where the target of the task stands in the variant that serves the use case, or nullopt.
    std::optional<TuningPlace> findTask(const UseCase& useCase, int task) const;
    // Where the target of the anchor stands that is in force in the use case: the customer's, or
    // else the platform's. None when both are 0.
    std::optional<TuningPlace> findAnchor(const UseCase& useCase, int anchor,
                                          AnchorTarget target) const;

    // Adds a variant for the use case where the platform has none that serves it: there the
    // library does not come up.
    void serve(const UseCase& useCase);
    // Whether the task of that target is one whose starts fail.
    bool isSwitchedOff(const TuningPlace& target) const;
    int64_t valueAt(const TuningPlace& place) const;
    void setValue(const TuningPlace& place, int64_t value);

    // The task in the variant that serves the use case, with kNewUclamp and a name of its number;
    // the variant too where none serves it. For tasks but VELK_TASK_ENUM_GAP that are not negative.
    TuningPlace addTask(const UseCase& useCase, int task, int64_t targetUs);
    TuningPlace addAnchor(const UseCase& useCase, int anchor, AnchorTarget target, int64_t us);

    static constexpr int kNewUclamp = 512;

  private:
    struct File {
        File(nlohmann::ordered_json content, std::string written)
            : json(std::move(content)), text(std::move(written)) {}

        nlohmann::ordered_json json;
        std::string text;  // as it was read
        bool isChanged = false;
    };

    const File& fileOf(const TuningPlace& place) const;
    File& changedFile(const std::string& file);
    std::optional<TuningPlace> findVariant(const UseCase& useCase, bool isPlatform) const;
    TuningPlace addVariant(const UseCase& useCase, bool isPlatform);
    // The one that serves the use case, made where there is none.
    TuningPlace requireVariant(const UseCase& useCase, bool isPlatform);

    File mPlatform;
    std::optional<File> mCustomer;
    std::optional<std::string> mSettings;
};

}  // namespace desk
