#include "frame/event_source.h"

#include <gtest/gtest.h>

#include "frame/test_shapes.h"
#include "support/event_sink.h"

namespace velk::test {
namespace {

class EventSourceTest : public testing::Test {
  protected:
    EventSourceTest() {
        container_ = source_.As<IConnectionPointContainer>();
        EXPECT_EQ(S_OK, container_->FindConnectionPoint(__uuidof(__CShapes), point_.Receive()));
    }
    DWORD Advise(EventSink* sink) {
        DWORD cookie = 0;
        EXPECT_EQ(S_OK, point_->Advise(sink, &cookie));
        return cookie;
    }

    ComPtr<CShapes> source_ = CShapes::Make();
    ComPtr<IConnectionPointContainer> container_;
    ComPtr<IConnectionPoint> point_;
};

TEST_F(EventSourceTest, ContainerSharesTheObjectsIdentityAndThePointHasItsOwn) {
    const auto object = source_.As<IUnknown>();
    EXPECT_EQ(object.get(), container_.As<IUnknown>().get());
    EXPECT_NE(object.get(), point_.As<IUnknown>().get());
    EXPECT_EQ(point_.As<IUnknown>().get(), point_.As<IConnectionPoint>().get());
    EXPECT_FALSE(point_.As<IDispatch>());
    EXPECT_EQ(E_POINTER, point_->QueryInterface(IID_IUnknown, nullptr));
    ComPtr<IConnectionPointContainer> back;
    EXPECT_EQ(S_OK, point_->GetConnectionPointContainer(back.Receive()));
    EXPECT_EQ(container_.get(), back.get());
    IID events = IID_NULL;
    EXPECT_EQ(S_OK, point_->GetConnectionInterface(&events));
    EXPECT_EQ(__uuidof(__CShapes), events);
    ComPtr<IConnectionPoint> other = point_;
    EXPECT_EQ(CONNECT_E_NOCONNECTION, container_->FindConnectionPoint(IID_IDispatch, other.Receive()));
    EXPECT_FALSE(other);

    EXPECT_EQ(E_POINTER, container_->FindConnectionPoint(__uuidof(__CShapes), nullptr));
    EXPECT_EQ(E_POINTER, container_->EnumConnectionPoints(nullptr));
    EXPECT_EQ(E_POINTER, point_->GetConnectionPointContainer(nullptr));
    EXPECT_EQ(E_POINTER, point_->GetConnectionInterface(nullptr));
    EXPECT_EQ(E_POINTER, point_->EnumConnections(nullptr));
}

TEST_F(EventSourceTest, EnumeratesItsOnePoint) {
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(S_OK, container_->EnumConnectionPoints(points.Receive()));
    IConnectionPoint* found[2] = {};
    ULONG fetched = 9;
    EXPECT_EQ(S_FALSE, points->Next(2, found, &fetched));
    EXPECT_EQ(1u, fetched);
    EXPECT_EQ(point_.get(), found[0]);
    found[0]->Release();
    EXPECT_EQ(S_FALSE, points->Next(1, found, nullptr));
    EXPECT_EQ(E_POINTER, points->Next(2, found, nullptr));
    EXPECT_EQ(E_POINTER, points->Next(1, nullptr, &fetched));
}

TEST_F(EventSourceTest, EnumeratesASnapshotOfItsConnections) {
    const auto one = EventSink::Make(), two = EventSink::Make(), three = EventSink::Make();
    const DWORD cookies[] = {Advise(one.get()), Advise(two.get()), Advise(three.get())};
    ComPtr<IEnumConnections> connections, copy;
    ASSERT_EQ(S_OK, point_->EnumConnections(connections.Receive()));
    EXPECT_EQ(S_OK, point_->Unadvise(cookies[1]));
    EXPECT_EQ(S_OK, connections->Skip(1));
    ASSERT_EQ(S_OK, connections->Clone(copy.Receive()));
    CONNECTDATA found[3] = {};
    ULONG fetched = 9;
    EXPECT_EQ(S_OK, connections->Next(2, found, &fetched));
    EXPECT_EQ(2u, fetched);
    EXPECT_EQ(cookies[1], found[0].dwCookie);
    EXPECT_EQ(two.get(), found[0].pUnk);
    EXPECT_EQ(cookies[2], found[1].dwCookie);
    for (int i = 0; i < 2; ++i) found[i].pUnk->Release();
    EXPECT_EQ(S_FALSE, connections->Skip(1));
    EXPECT_EQ(S_OK, connections->Reset());
    EXPECT_EQ(S_OK, connections->Skip(3));
    EXPECT_EQ(S_OK, copy->Skip(2));  // the copy stood where it was taken
    EXPECT_EQ(S_FALSE, copy->Skip(1));
    EXPECT_EQ(E_POINTER, copy->Clone(nullptr));
    copy = nullptr;
    connections = nullptr;
    EXPECT_EQ(1u, two->count());
}

TEST_F(EventSourceTest, RefusesWhatIsNoSink) {
    const auto sink = EventSink::Make();
    DWORD cookie = 9;
    EXPECT_EQ(E_POINTER, point_->Advise(nullptr, &cookie));
    EXPECT_EQ(E_POINTER, point_->Advise(sink.get(), nullptr));
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, point_->Advise(point_.get(), &cookie));  // has no IDispatch
    EXPECT_EQ(0u, cookie);
    EXPECT_EQ(CONNECT_E_NOCONNECTION, point_->Unadvise(0));
    const DWORD real = Advise(sink.get());
    EXPECT_EQ(CONNECT_E_NOCONNECTION, point_->Unadvise(real + 1));
    EXPECT_EQ(S_OK, point_->Unadvise(real));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, point_->Unadvise(real));
    EXPECT_EQ(1u, sink->count());
}

TEST_F(EventSourceTest, CallsEverySinkInOrderWhateverItAnswers) {
    const auto one = EventSink::Make(), two = EventSink::Make();
    std::vector<int> order;
    DWORD firstCookie = 0;
    one->onEvent = [&](VARIANT* argument) {
        order.push_back(1);
        point_->Unadvise(firstCookie);  // the next one must not be skipped for it
        *argument->pfltVal = 0.25f;     // the next sink sees it, as it would in any chain of handlers
    };
    two->onEvent = [&](VARIANT*) { order.push_back(2); };
    one->answer = DISP_E_EXCEPTION;
    firstCookie = Advise(one.get());
    Advise(two.get());
    EXPECT_EQ(S_OK, source_->Raise(0.5f));
    EXPECT_EQ((std::vector{1, 2}), order);
    ASSERT_EQ(1u, two->events.size());
    EXPECT_EQ(1, two->events[0].id);
    EXPECT_EQ(0.25, two->events[0].value);
    source_ = nullptr;
    container_ = nullptr;
    point_ = nullptr;
    EXPECT_EQ(1u, one->count());
    EXPECT_EQ(1u, two->count());
}

TEST_F(EventSourceTest, SinksMayComeAndGoInsideAnEvent) {
    const auto first = EventSink::Make(), second = EventSink::Make(), late = EventSink::Make();
    const DWORD firstCookie = Advise(first.get()), secondCookie = Advise(second.get());
    ULONG held = 0;
    first->onEvent = [&](VARIANT*) {
        point_->Unadvise(firstCookie);
        point_->Unadvise(secondCookie);
        held = first->count();  // by the event alone
        Advise(late.get());
    };
    source_->Raise(1);
    EXPECT_EQ(2u, held);
    EXPECT_EQ(1u, first->events.size());
    EXPECT_EQ(0u, second->events.size());
    EXPECT_EQ(0u, late->events.size());
    EXPECT_EQ(1u, first->count());
    EXPECT_EQ(1u, second->count());

    late->onEvent = [&](VARIANT*) {  // now the only sink
        if (second->count() == 1) Advise(second.get());
    };
    source_->Raise(1);
    EXPECT_EQ(0u, second->events.size());
    source_->Raise(1);
    EXPECT_EQ(2u, late->events.size());
    EXPECT_EQ(1u, second->events.size());
}

TEST_F(EventSourceTest, ASinkMayDropTheLastReferenceToTheSource) {
    const auto first = EventSink::Make(), second = EventSink::Make();
    Advise(first.get());
    Advise(second.get());
    container_ = nullptr;
    point_ = nullptr;
    CShapes* const source = source_.get();
    bool stillThere = false;
    first->onEvent = [&](VARIANT*) { source_ = nullptr; };
    second->onEvent = [&](VARIANT*) { stillThere = library::Use::Any(); };
    source->Raise(1);
    EXPECT_EQ(1u, first->events.size());
    EXPECT_TRUE(stillThere);
    EXPECT_EQ(1u, first->count());
    EXPECT_EQ(1u, second->count());
    EXPECT_FALSE(library::Use::Any());
}

}  // namespace
}  // namespace velk::test
