// Calls a function with the stack as some clients leave it: aligned to 4 bytes only. 32-bit only.
#pragma once

#if defined(__i386__)

#include <bit>
#include <cstddef>
#include <cstdint>

namespace velk::test {

// Pushes `count` words and calls with the stack pointer `shift` (0, 4, 8 or 12) bytes below the usual 16-byte boundary.
// The stack pointer is restored from a saved copy, so the callee may pop its arguments or leave them. The callee must
// not throw: nothing unwinds through here.
inline std::uint32_t CallWithShiftedStack(std::uint32_t shift, void* function, const std::uint32_t* words,
                                          std::uint32_t count) {
    std::uint32_t result = shift + (0U - 4 * count) % 16;  // so much above the arguments
    asm volatile(
        "movl %%esp, %%ebx\n\t"
        "andl $-16, %%esp\n\t"
        "subl %%eax, %%esp\n"
        "1:\n\t"
        "subl $1, %%ecx\n\t"
        "js 2f\n\t"
        "pushl (%%edx, %%ecx, 4)\n\t"
        "jmp 1b\n"
        "2:\n\t"
        "call *%%esi\n\t"
        "movl %%ebx, %%esp"
        : "+a"(result), "+c"(count), "+d"(words)
        : "S"(function)
        : "ebx", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "st", "st(1)", "st(2)",
          "st(3)", "st(4)", "st(5)", "st(6)", "st(7)");
    return result;
}

// The function under test goes in directly, cdecl or stdcall: one in between would be compiled to align the stack again
// before it calls on. Arguments and result are one word each.
template <class Function, class... Arguments>
std::uint32_t CallMisaligned(std::uint32_t shift, Function* function, Arguments... arguments) {
    const std::uint32_t words[] = {std::bit_cast<std::uint32_t>(arguments)..., 0};
    return CallWithShiftedStack(shift, reinterpret_cast<void*>(function), words, sizeof...(arguments));
}

}  // namespace velk::test

#endif
