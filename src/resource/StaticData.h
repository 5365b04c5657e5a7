/*
 * The static tuning data: what the camera stack's convertors say about tasks and CPU clusters. It
 * is loaded once, before the library is up, and never changes, so reading it takes no lock.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "VELKJsonConvertor.h"
#include "VELKTypes.h"
#include "foundation/CommandRecords.h"
#include "foundation/Visibility.h"

// Figures of a task that no convertor describes.
inline constexpr int32_t kUnknownTargetTime = -1;
inline constexpr int32_t kUnknownDefaultUclamp = 0;
inline constexpr int32_t kUnknownSpecValue = -1;

class VELK_INTERNAL StaticData {
  public:
    // Creates and loads the convertors. Returns whether there is platform tuning data.
    [[gnu::cold]] bool load(const VELKInitParams& params);

    // The platform's convertor, null without platform data.
    VELKJsonConvertor* platformConvertor() const { return mpJsonConvertor.get(); }
    // The convertor that describes the task, null when none does.
    VELKJsonConvertor* convertorOf(int task) const {
        if (mpJsonConvertor != nullptr && task < VELK_TASK_ENUM_GAP) {
            return mpJsonConvertor.get();
        }
        if (mpCustomJsonConvertor != nullptr && task > VELK_TASK_ENUM_GAP) {
            return mpCustomJsonConvertor.get();
        }
        return nullptr;
    }
    int32_t targetTimeOf(int task) const {
        VELKJsonConvertor* const convertor = convertorOf(task);
        return convertor != nullptr ? convertor->getTaskTargetTime(task) : kUnknownTargetTime;
    }
    int32_t defaultUclampOf(int task) const {
        VELKJsonConvertor* const convertor = convertorOf(task);
        return convertor != nullptr ? convertor->getTaskDefaultUclamp(task) : kUnknownDefaultUclamp;
    }
    int32_t specValueOf(int task) const;
    bool isVIPTask(int task) const;
    // The name that the platform has for the task, else the customer's name, else empty. Both are
    // asked for every task enum.
    [[gnu::cold]] std::string nameOf(int task) const;

    // Level of a CPU cluster or of a level position; full capacity without platform data.
    uint32_t clusterLevel(int index) const {
        return mpJsonConvertor != nullptr ? mpJsonConvertor->getClusterLevel(index)
                                          : VELK_MAX_UCLAMP;
    }
    // 0 without platform data.
    [[gnu::cold]] uint32_t clusterDefaultLevel(int cluster) const;

  private:
    // Destroyed in reverse order: the customer's first.
    std::shared_ptr<VELKJsonConvertor> mpJsonConvertor;
    std::shared_ptr<VELKJsonConvertor> mpCustomJsonConvertor;
};
