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
void Patch(std::vector<std::unique_ptr<ImportPatch>>& patches, const char* name, Function) {
    if (!ImportPatch::IsImported(Library(), name)) return;
    using Patched = Standin<Number, Function>;
    patches.push_back(std::make_unique<ImportPatch>(Library(), name, reinterpret_cast<void*>(&Patched::Call)));
    Patched::original = patches.back()->Original<Function>();
}

}  // namespace

FailingMemory::FailingMemory() {
    failsAt = 0;
    held = 0;
    patches_.push_back(std::make_unique<ImportPatch>(Library(), "malloc", reinterpret_cast<void*>(&Malloc)));
    patches_.push_back(std::make_unique<ImportPatch>(Library(), "free", reinterpret_cast<void*>(&Free)));
    Patch<0>(patches_, "SysAllocString", &SysAllocString);
    Patch<1>(patches_, "SysAllocStringLen", &SysAllocStringLen);
    Patch<2>(patches_, "SysAllocStringByteLen", &SysAllocStringByteLen);
    Patch<3>(patches_, "SafeArrayCreate", &SafeArrayCreate);
    Patch<4>(patches_, "SafeArrayCreateVector", &SafeArrayCreateVector);
    Patch<5>(patches_, "SafeArrayAllocData", &SafeArrayAllocData);
    Patch<6>(patches_, "SafeArrayRedim", &SafeArrayRedim);
    Patch<7>(patches_, "SafeArrayCopy", &SafeArrayCopy);
    Patch<8>(patches_, "VariantCopy", &VariantCopy);
    Patch<9>(patches_, "VariantCopyInd", &VariantCopyInd);
    Patch<10>(patches_, "VariantChangeTypeEx", &VariantChangeTypeEx);
    Patch<11>(patches_, "CoTaskMemAlloc", &CoTaskMemAlloc);
    Patch<12>(patches_, "CreateErrorInfo", &CreateErrorInfo);
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
