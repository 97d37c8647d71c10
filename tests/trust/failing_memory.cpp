#include "trust/failing_memory.h"

#include <type_traits>

#include "support/client.h"

namespace velk::test {
namespace {

int failsAt = 0;
int made = 0;
bool failed = false;
std::ptrdiff_t held = 0;

bool Refuses() noexcept {
    const bool refuses = failsAt != 0 && ++made == failsAt;
    failed |= refuses;
    return refuses;
}

template <class Result>
Result Refusal() noexcept {
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else
        return E_OUTOFMEMORY;
}

// Stands in for one of the platform's functions that allocate. The number only keeps functions of one type apart.
template <int Number, class Function>
struct Standin;
template <int Number, class Result, class... Given>
struct Standin<Number, Result(WINAPI*)(Given...)> {
    static inline Result(WINAPI* original)(Given...) = nullptr;
    static Result WINAPI Call(Given... given) { return Refuses() ? Refusal<Result>() : original(given...); }
};

void* __cdecl Malloc(std::size_t size) {
    void* const block = Refuses() ? nullptr : malloc(size);
    held += block != nullptr;
    return block;
}
void __cdecl Free(void* block) {
    held -= block != nullptr;
    free(block);
}

template <int Number, class Function>
void Patch(std::vector<std::unique_ptr<ImportPatch>>& patches, HMODULE library, const char* name, Function) {
    if (!ImportPatch::IsImported(library, name)) return;
    using Patched = Standin<Number, Function>;
    patches.push_back(std::make_unique<ImportPatch>(library, name, reinterpret_cast<void*>(&Patched::Call)));
    Patched::original = patches.back()->Original<Function>();
}

}  // namespace

FailingMemory::FailingMemory(HMODULE library) {
    failsAt = 0;
    held = 0;
    patches_.push_back(std::make_unique<ImportPatch>(library, "malloc", reinterpret_cast<void*>(&Malloc)));
    patches_.push_back(std::make_unique<ImportPatch>(library, "free", reinterpret_cast<void*>(&Free)));
    Patch<0>(patches_, library, "SysAllocString", &SysAllocString);
    Patch<1>(patches_, library, "SysAllocStringLen", &SysAllocStringLen);
    Patch<2>(patches_, library, "SysAllocStringByteLen", &SysAllocStringByteLen);
    Patch<3>(patches_, library, "SafeArrayCreate", &SafeArrayCreate);
    Patch<4>(patches_, library, "SafeArrayCreateVector", &SafeArrayCreateVector);
    Patch<5>(patches_, library, "SafeArrayAllocData", &SafeArrayAllocData);
    Patch<6>(patches_, library, "SafeArrayRedim", &SafeArrayRedim);
    Patch<7>(patches_, library, "SafeArrayCopy", &SafeArrayCopy);
    Patch<8>(patches_, library, "VariantCopy", &VariantCopy);
    Patch<9>(patches_, library, "VariantCopyInd", &VariantCopyInd);
    Patch<10>(patches_, library, "VariantChangeTypeEx", &VariantChangeTypeEx);
    Patch<11>(patches_, library, "CoTaskMemAlloc", &CoTaskMemAlloc);
    Patch<12>(patches_, library, "CreateErrorInfo", &CreateErrorInfo);
}

FailingMemory::~FailingMemory() = default;

void FailingMemory::FailAt(int number) noexcept {
    failsAt = number;
    made = 0;
    failed = false;
}

void FailingMemory::Disarm() noexcept { failsAt = 0; }

bool FailingMemory::hasFailed() const noexcept { return failed; }

std::ptrdiff_t FailingMemory::blocks() const noexcept { return held; }

}  // namespace velk::test
