// Where an arc that is given by angles starts and ends.
#pragma once

#include "platform/geometry.h"

namespace velk {

struct ArcEnds {
    Point start;
    Point end;
};

// On the ellipse in the box, at angles in degrees counter-clockwise from 3 o'clock as seen where y grows downwards.
// RuntimeError(Error::Overflow) when a side of the box, an angle or a point is out of range.
ArcEnds EndsOfSweep(const Box& box, double startDegrees, double sweepDegrees);

// The sweep from one angle to another; RuntimeError(Error::Overflow) when it is out of range.
double SweepBetween(double startDegrees, double endDegrees);

}  // namespace velk
