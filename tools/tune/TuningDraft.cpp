#include "tune/TuningDraft.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "VELKJsonConvertor.h"
#include "tune/JsonLayout.h"

namespace desk {

namespace {

using nlohmann::ordered_json;
using Pointer = ordered_json::json_pointer;

constexpr std::array kTargetKeys = {"latencyUs", "jitterUs"};  // by AnchorTarget

const char* keyOf(AnchorTarget target) {
    return kTargetKeys[static_cast<size_t>(target)];
}

// The place of the element whose member has the value.
std::optional<size_t> findElement(const ordered_json& list, const char* member, int value) {
    const auto found = std::find_if(list.begin(), list.end(), [&](const ordered_json& element) {
        return element[member] == value;
    });
    return found != list.end() ? std::optional(static_cast<size_t>(found - list.begin()))
                               : std::nullopt;
}

// The anchor specs that serve the use case: those for its customization, or else for all.
std::optional<size_t> findSpecs(const ordered_json& source, const UseCase& useCase) {
    std::optional<size_t> found;
    const ordered_json specs = source.value("anchorSpecs", ordered_json::array());
    for (size_t i = 0; i < specs.size(); ++i) {
        if (specs[i]["scenario"] != int32_t{useCase.scenario}) {
            continue;
        }
        if (!specs[i].contains("customization")) {
            found = found ? found : i;
        } else if (specs[i]["customization"] == int32_t{useCase.customization}) {
            return i;
        }
    }
    return found;
}

// The path of an anchor's entry.
std::optional<std::string> findEntry(const ordered_json& source, const UseCase& useCase,
                                     int anchor) {
    const auto specs = findSpecs(source, useCase);
    if (!specs) {
        return std::nullopt;
    }
    const auto entry = findElement(source["anchorSpecs"][*specs]["anchors"], "anchor", anchor);
    return entry ? std::optional(fmt::format("/anchorSpecs/{}/anchors/{}", *specs, *entry))
                 : std::nullopt;
}

}  // namespace

TuningDraft::TuningDraft(const TuningTexts& texts)
    : mPlatform(ordered_json::parse(texts.platform), texts.platform), mSettings(texts.settings) {
    if (texts.customer) {
        mCustomer.emplace(ordered_json::parse(*texts.customer), *texts.customer);
    }
}

std::shared_ptr<const TuningData> TuningDraft::data() const {
    TuningResult result = parseTuning(texts());
    if (const auto* error = std::get_if<TuningError>(&result)) {
        throw std::runtime_error(error->text());
    }
    return std::get<std::shared_ptr<const TuningData>>(result);
}

TuningTexts TuningDraft::texts() const {
    const auto textOf = [](const File& file) {
        return file.isChanged ? layOut(file.json) : file.text;
    };
    return {textOf(mPlatform), mCustomer ? std::optional(textOf(*mCustomer)) : std::nullopt,
            mSettings};
}

const TuningDraft::File& TuningDraft::fileOf(const TuningPlace& place) const {
    return place.file == kPlatformFile ? mPlatform : mCustomer.value();
}

TuningDraft::File& TuningDraft::changedFile(const std::string& file) {
    if (file == kCustomerFile && !mCustomer) {
        mCustomer.emplace(ordered_json{{"variants", ordered_json::array()}}, "");
    }
    File& changed = file == kPlatformFile ? mPlatform : *mCustomer;
    changed.isChanged = true;
    return changed;
}

// The library looks up the customer's data without a customization.
std::optional<TuningPlace> TuningDraft::findVariant(const UseCase& useCase, bool isPlatform) const {
    const auto data = this->data();
    if (!isPlatform && !data->customer) {
        return std::nullopt;
    }
    const TuningSource& source = isPlatform ? data->platform : *data->customer;
    const TuningVariant* variant = source.findVariant(
            useCase.scenario, isPlatform ? useCase.customization : VELK_CUSTOMIZATION_NONE);
    if (variant == nullptr) {
        return std::nullopt;
    }
    return TuningPlace{isPlatform ? kPlatformFile : kCustomerFile,
                       fmt::format("/variants/{}", variant - source.variants.data())};
}

TuningPlace TuningDraft::addVariant(const UseCase& useCase, bool isPlatform) {
    const TuningPlace place = {isPlatform ? kPlatformFile : kCustomerFile, "/variants"};
    ordered_json& variants = changedFile(place.file).json["variants"];
    ordered_json variant = {{"scenario", int32_t{useCase.scenario}}};
    if (isPlatform) {
        variant["customization"] = int32_t{useCase.customization};
        variant["clusterLevels"] = std::array<int, 8>{};
        variant["clusterDefaultLevels"] = std::array<int, 3>{};
    }
    variant["tasks"] = ordered_json::array();
    variants.push_back(std::move(variant));
    return {place.file, fmt::format("/variants/{}", variants.size() - 1)};
}

std::optional<TuningPlace> TuningDraft::findTask(const UseCase& useCase, int task) const {
    const auto variant = findVariant(useCase, task < VELK_TASK_ENUM_GAP);
    if (!variant) {
        return std::nullopt;
    }
    const ordered_json& tasks = fileOf(*variant).json.at(Pointer(variant->path))["tasks"];
    const auto place = findElement(tasks, "task", task);
    return place ? std::optional(TuningPlace{variant->file, fmt::format("{}/tasks/{}/targetTimeUs",
                                                                        variant->path, *place)})
                 : std::nullopt;
}

TuningPlace TuningDraft::addTask(const UseCase& useCase, int task, int64_t targetUs) {
    serve(useCase);
    const TuningPlace variant = requireVariant(useCase, task < VELK_TASK_ENUM_GAP);
    ordered_json& tasks = changedFile(variant.file).json.at(Pointer(variant.path))["tasks"];
    tasks.push_back({{"task", task},
                     {"name", fmt::format("TASK_{}", task)},
                     {"targetTimeUs", targetUs},
                     {"defaultUclamp", kNewUclamp}});
    return {variant.file, fmt::format("{}/tasks/{}/targetTimeUs", variant.path, tasks.size() - 1)};
}

std::optional<TuningPlace> TuningDraft::findAnchor(const UseCase& useCase, int anchor,
                                                   AnchorTarget target) const {
    const auto findIn = [&](const File& file, const char* name) -> std::optional<TuningPlace> {
        const auto entry = findEntry(file.json, useCase, anchor);
        if (!entry || file.json.at(Pointer(*entry)).value(keyOf(target), 0) == 0) {
            return std::nullopt;
        }
        return TuningPlace{name, fmt::format("{}/{}", *entry, keyOf(target))};
    };
    const auto ofCustomer = mCustomer ? findIn(*mCustomer, kCustomerFile) : std::nullopt;
    return ofCustomer ? ofCustomer : findIn(mPlatform, kPlatformFile);
}

TuningPlace TuningDraft::addAnchor(const UseCase& useCase, int anchor, AnchorTarget target,
                                   int64_t us) {
    ordered_json& platform = changedFile(kPlatformFile).json;
    if (!findSpecs(platform, useCase)) {
        platform["anchorSpecs"].push_back(
                {{"scenario", int32_t{useCase.scenario}}, {"anchors", ordered_json::array()}});
    }
    const size_t specs = findSpecs(platform, useCase).value();
    ordered_json& anchors = platform["anchorSpecs"][specs]["anchors"];
    if (!findElement(anchors, "anchor", anchor)) {
        anchors.push_back({{"anchor", anchor}});
    }
    const size_t entry = findElement(anchors, "anchor", anchor).value();
    anchors[entry][keyOf(target)] = us;
    return {kPlatformFile,
            fmt::format("/anchorSpecs/{}/anchors/{}/{}", specs, entry, keyOf(target))};
}

TuningPlace TuningDraft::requireVariant(const UseCase& useCase, bool isPlatform) {
    const auto known = findVariant(useCase, isPlatform);
    return known ? *known : addVariant(useCase, isPlatform);
}

void TuningDraft::serve(const UseCase& useCase) {
    requireVariant(useCase, true);
}

bool TuningDraft::isSwitchedOff(const TuningPlace& target) const {
    const Pointer path(target.path);
    const ordered_json& task = fileOf(target).json.at(path.parent_pointer());
    return task["targetTimeUs"] == 0 || task["defaultUclamp"] == 0;
}

int64_t TuningDraft::valueAt(const TuningPlace& place) const {
    return fileOf(place).json.at(Pointer(place.path)).get<int64_t>();
}

void TuningDraft::setValue(const TuningPlace& place, int64_t value) {
    if (valueAt(place) != value) {
        changedFile(place.file).json.at(Pointer(place.path)) = value;
    }
}

}  // namespace desk
