#pragma once

#include "platform/platform.h"

namespace velk {

// Whether a client's array may be freed and another one put in its place: nobody holds a pointer into it, and its size
// and its memory are not fixed. No array at all may be replaced too.
inline bool MayBeReplaced(const SAFEARRAY* array) noexcept {
    constexpr USHORT kFixed = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED | FADF_FIXEDSIZE;
    return !array || (array->cLocks == 0 && (array->fFeatures & kFixed) == 0);
}

}  // namespace velk
