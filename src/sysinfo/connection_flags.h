#pragma once

#include <cstdint>

namespace velk {

// Bits of the platform's connection state.
enum ConnectionFlag : std::uint32_t {
    kConnectionModem = 1,
    kConnectionLan = 2,
    kConnectionProxy = 4,
    kConnectionRasInstalled = 16,
    kConnectionOffline = 32,
};

enum class Connection { Modem = 1, Lan = 2, Proxy = 3, None = 4 };

// The first bit that is set decides.
constexpr Connection ConnectionOf(std::uint32_t flags) noexcept {
    if (flags & kConnectionModem) return Connection::Modem;
    if (flags & kConnectionLan) return Connection::Lan;
    if (flags & kConnectionProxy) return Connection::Proxy;
    return Connection::None;
}

}  // namespace velk
