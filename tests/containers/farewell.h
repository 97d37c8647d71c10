#pragma once

#include <memory>

namespace velk::test {

// A value that runs code when it goes.
using Farewell = std::shared_ptr<void>;
Farewell FarewellWith(auto onGone) {
    return {nullptr, [onGone](void*) { onGone(); }};
}

}  // namespace velk::test
