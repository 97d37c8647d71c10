// An object with every shape of member, and a check that nothing is left behind.
#pragma once

#include <gtest/gtest.h>

#include "frame/test_shapes.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"

namespace velk::test {

class ShapesTest : public testing::Test {
  protected:
    // What the library and the platform make once and keep is made before the counting starts.
    void SetUp() override {
        Get(shapes_.get(), L"Step");
        InvokeByPlatform(shapes_.get(), L"Step", DISPATCH_PROPERTYGET, {});
        InvokeByPlatform(shapes_.get(), L"EchoFont", DISPATCH_METHOD,
                         {Arg(static_cast<IDispatch*>(nullptr))});  // reads the fonts' type library
        EXPECT_TRUE(library::Use::Any());
        alive_ = MallocSpy::Alive();
    }
    void TearDown() override {
        shapes_ = nullptr;
        EXPECT_FALSE(library::Use::Any());
        EXPECT_EQ(alive_, MallocSpy::Alive()) << "strings or arrays left behind";
    }

    ComPtr<CShapes> shapes_ = CShapes::Make();
    LONG alive_ = 0;
};

}  // namespace velk::test
