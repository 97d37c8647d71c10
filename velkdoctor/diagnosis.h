// Why a class can or cannot be created by a program of this width, for this user, here.
#pragma once

#include <string>

#include "velkdoctor/known_libraries.h"

namespace velk {

// The values are this program's exit codes.
enum class State {
    Fine = 0,
    NotRegistered = 2,
    OtherWidthOnly = 3,
    WrongWidth = 4,
    MissingFile = 5,
    OtherUserOnly = 6,
    UserOnly = 7,
    OlderVersion = 8,
    OtherFolder = 9,
    NameTaken = 10,
    HooksMissing = 11,
    CannotLoad = 12,
    // 13 is the program's own: the registry may not be written.
    Damaged = 14,
    TypesMissing = 15
};

struct Finding {
    State state;
    std::wstring what;    // one sentence
    std::wstring advice;  // what to do; empty when all is well
    std::wstring file{};  // the library whose registration mends it, by its file's name
};

bool Exists(const std::wstring& path);

Finding Examine(const KnownLibrary& library, const KnownClass& wanted);

}  // namespace velk
