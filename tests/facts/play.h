#pragma once

#include "facts/scenario.h"

namespace velk::facts {

// Plays a scenario late bound, or through the members' slots.
void Play(const Scenario& scenario, bool bySlot);

}  // namespace velk::facts
