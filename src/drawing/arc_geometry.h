// Where an arc that is given by angles starts and ends.
#pragma once

#include <cstdint>

namespace velk {

struct BoundingBox {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
};

struct ArcPoint {
    std::int32_t x;
    std::int32_t y;
    bool operator==(const ArcPoint&) const = default;
};

struct ArcEnds {
    ArcPoint start;
    ArcPoint end;
};

// On the ellipse in the box, at angles in degrees counter-clockwise from 3 o'clock as seen where y grows downwards.
// RuntimeError(Error::Overflow) when a side of the box, an angle or a point is out of range.
ArcEnds EndsOfSweep(const BoundingBox& box, double startDegrees, double sweepDegrees);

// The sweep from one angle to another; RuntimeError(Error::Overflow) when it is out of range.
double SweepBetween(double startDegrees, double endDegrees);

}  // namespace velk
