/*
 * Tuning data as JSON that can be changed.
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

// The place of a value: its file and JSON pointer.
struct TuningPlace {
    std::string file;
    std::string path;

    bool operator<(const TuningPlace& other) const {
        return std::tie(file, path) < std::tie(other.file, other.path);
    }
};

class TuningDraft {
  public:
    // The texts have to be ones that the loader accepts.
    explicit TuningDraft(const TuningTexts& texts);

    // The current data. Throws std::runtime_error when the loader refuses it.
    std::shared_ptr<const TuningData> data() const;
    // The texts of the files; that of an unchanged file is the original.
    TuningTexts texts() const;

    // The place of the task's target in the variant that serves the use case, or nullopt.
    std::optional<TuningPlace> findTask(const UseCase& useCase, int task) const;
    // The place of the anchor's target that is in force in the use case: the customer's, or else
    // the platform's. None when both are 0.
    std::optional<TuningPlace> findAnchor(const UseCase& useCase, int anchor,
                                          AnchorTarget target) const;

    // Adds a variant for the use case when the platform has none that serves it, because init would
    // fail.
    void serve(const UseCase& useCase);
    // Whether every start of the task with this target fails.
    bool isSwitchedOff(const TuningPlace& target) const;
    int64_t valueAt(const TuningPlace& place) const;
    void setValue(const TuningPlace& place, int64_t value);

    // Adds the task, with kNewUclamp and a name made of its number, to the variant that serves the
    // use case, and that variant if there is none. `task` >= 0, not VELK_TASK_ENUM_GAP.
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
    // The variant that serves the use case, added when there is none.
    TuningPlace requireVariant(const UseCase& useCase, bool isPlatform);

    File mPlatform;
    std::optional<File> mCustomer;
    std::optional<std::string> mSettings;
};

}  // namespace desk
