#include "frame/server/class_table.h"

#include "velksub/hook_manager.h"
#include "velksub/thread_hooks.h"

namespace velk {

const library::Identity library::kIdentity{L"VelkSub", &ThreadHooks::ReleaseAll};

std::span<const ClassEntry> Classes() noexcept {
    static constexpr ClassEntry kClasses[] = {{&HookManager::kInfo, &HookManager::TheOne}};
    return kClasses;
}

}  // namespace velk
