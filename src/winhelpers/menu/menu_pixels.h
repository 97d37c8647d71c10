// Colour arithmetic of drawn menus, on 0x00RRGGBB pixels or COLORREFs: the channels' order does not matter to mixing.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

namespace velk {

// `share` of 256 parts of `one`, the rest of `other`, channel by channel.
constexpr std::uint32_t Mix(std::uint32_t one, std::uint32_t other, unsigned share) noexcept {
    std::uint32_t mixed = 0;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        const std::uint32_t sum = (one >> shift & 0xFF) * share + (other >> shift & 0xFF) * (256 - share);
        mixed |= sum / 256 << shift;
    }
    return mixed;
}

// How bright a 0x00RRGGBB colour looks, 0 to 255.
constexpr std::uint32_t Brightness(std::uint32_t colour) noexcept {
    return ((colour >> 16 & 0xFF) * 77 + (colour >> 8 & 0xFF) * 151 + (colour & 0xFF) * 28) / 256;
}

// Makes an icon on a plain background look disabled: grey, and half transparent. The background stays exactly as it is.
inline void Fade(std::span<std::uint32_t> pixels, std::uint32_t background) noexcept {
    constexpr unsigned kLeft = 112;  // of 256
    for (std::uint32_t& pixel : pixels) {
        if ((pixel & 0xFFFFFF) != background) pixel = Mix(Brightness(pixel) * 0x010101, background, kLeft);
    }
}

// How far a pixel is from a colour in brightness, 0 to 255.
constexpr std::uint32_t Contrast(std::uint32_t pixel, std::uint32_t colour) noexcept {
    const std::uint32_t one = Brightness(pixel & 0xFFFFFF), other = Brightness(colour);
    return one > other ? one - other : other - one;
}

// Whether an icon on a plain background can be told from it, on the average of its pixels.
inline bool StandsOut(std::span<const std::uint32_t> pixels, std::uint32_t background) noexcept {
    constexpr std::uint32_t kLeast = 40;  // of 255
    std::uint32_t sum = 0, count = 0;
    for (const std::uint32_t pixel : pixels) {
        if ((pixel & 0xFFFFFF) == background) continue;
        sum += Contrast(pixel, background);
        ++count;
    }
    return sum >= kLeast * count;
}

// Makes an icon on a plain background one of two colours: what stands out most takes the other one.
inline void MakePlain(std::span<std::uint32_t> pixels, std::uint32_t background, std::uint32_t colour) noexcept {
    std::uint32_t most = 0;
    for (const std::uint32_t pixel : pixels) most = std::max(most, Contrast(pixel, background));
    for (std::uint32_t& pixel : pixels) {
        const bool drawn = (pixel & 0xFFFFFF) != background && 2 * Contrast(pixel, background) >= most;
        pixel = drawn ? colour : background;
    }
}

}  // namespace velk
