#include "frame/object/event_source.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/client.h"
#include "support/event_sink.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

class EventSourceTest : public testing::Test {
  protected:
    EventSourceTest() {
        EXPECT_EQ(S_OK, source_->put_InputFileName(Bstr(folder_.Write(L"empty", "")).get()));
        EXPECT_EQ(S_OK, container_->FindConnectionPoint(__uuidof(__CCRC32), point_.Receive()));
    }
    DWORD Advise(EventSink* sink) {
        DWORD cookie = 0;
        EXPECT_EQ(S_OK, point_->Advise(sink, &cookie));
        return cookie;
    }
    // An empty file gives one event, 0.
    void Raise() {
        LONG result = 9;
        EXPECT_EQ(S_OK, source_->GetCRCFromFile(&result));
        EXPECT_EQ(0, result);
    }

    const ScratchFolder folder_;
    const ComPtr<_CCRC32> source_ = CreateObject<_CCRC32>(__uuidof(CCRC32));
    const ComPtr<IConnectionPointContainer> container_ = source_.As<IConnectionPointContainer>();
    ComPtr<IConnectionPoint> point_;
};

TEST_F(EventSourceTest, ContainerSharesTheObjectsIdentityAndThePointHasItsOwn) {
    EXPECT_EQ(source_.As<IUnknown>().get(), container_.As<IUnknown>().get());
    EXPECT_NE(source_.As<IUnknown>().get(), point_.As<IUnknown>().get());
    EXPECT_EQ(point_.As<IUnknown>().get(), point_.As<IConnectionPoint>().get());
    EXPECT_FALSE(point_.As<IDispatch>());
    ComPtr<IConnectionPointContainer> back;
    EXPECT_EQ(S_OK, point_->GetConnectionPointContainer(back.Receive()));
    EXPECT_EQ(container_.get(), back.get());
    IID events = IID_NULL;
    EXPECT_EQ(S_OK, point_->GetConnectionInterface(&events));
    EXPECT_EQ(__uuidof(__CCRC32), events);
    IConnectionPoint* other = point_.get();
    EXPECT_EQ(CONNECT_E_NOCONNECTION, container_->FindConnectionPoint(IID_IDispatch, &other));
    EXPECT_FALSE(other);

    for (const HRESULT answer :
         {point_->QueryInterface(IID_IUnknown, nullptr), container_->FindConnectionPoint(__uuidof(__CCRC32), nullptr),
          container_->EnumConnectionPoints(nullptr), point_->GetConnectionPointContainer(nullptr),
          point_->GetConnectionInterface(nullptr), point_->EnumConnections(nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
}

TEST_F(EventSourceTest, EnumeratesItsPointAndASnapshotOfItsConnections) {
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(S_OK, container_->EnumConnectionPoints(points.Receive()));
    IConnectionPoint* point[2] = {};
    ULONG fetched = 9;
    EXPECT_EQ(S_FALSE, points->Next(2, point, &fetched));
    EXPECT_EQ(1u, fetched);
    EXPECT_EQ(point_.get(), point[0]);
    point[0]->Release();
    EXPECT_EQ(S_FALSE, points->Next(1, point, nullptr));
    EXPECT_EQ(E_POINTER, points->Next(2, point, nullptr));
    EXPECT_EQ(E_POINTER, points->Next(1, nullptr, &fetched));

    const auto one = EventSink::Make(), two = EventSink::Make(), three = EventSink::Make();
    const DWORD cookies[] = {Advise(one.get()), Advise(two.get()), Advise(three.get())};
    ComPtr<IEnumConnections> connections, copy;
    ASSERT_EQ(S_OK, point_->EnumConnections(connections.Receive()));
    EXPECT_EQ(S_OK, point_->Unadvise(cookies[1]));
    EXPECT_EQ(S_OK, connections->Skip(1));
    ASSERT_EQ(S_OK, connections->Clone(copy.Receive()));
    CONNECTDATA found[3] = {};
    EXPECT_EQ(S_FALSE, connections->Next(3, found, &fetched));
    EXPECT_EQ(2u, fetched);
    EXPECT_EQ(cookies[1], found[0].dwCookie);
    EXPECT_EQ(two.get(), found[0].pUnk);
    EXPECT_EQ(cookies[2], found[1].dwCookie);
    for (int i = 0; i < 2; ++i) found[i].pUnk->Release();
    EXPECT_EQ(S_FALSE, connections->Skip(1));
    EXPECT_EQ(S_OK, connections->Reset());
    EXPECT_EQ(S_OK, connections->Skip(3));
    EXPECT_EQ(S_OK, copy->Skip(2));  // the copy stood where it was taken
    EXPECT_EQ(E_POINTER, copy->Clone(nullptr));
    copy = connections = nullptr;
    EXPECT_EQ(1u, two->count());
}

TEST_F(EventSourceTest, RefusesWhatIsNoSink) {
    const auto sink = EventSink::Make();
    DWORD cookie = 9;
    EXPECT_EQ(E_POINTER, point_->Advise(nullptr, &cookie));
    EXPECT_EQ(E_POINTER, point_->Advise(sink.get(), nullptr));
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, point_->Advise(point_.get(), &cookie));  // has no IDispatch
    EXPECT_EQ(0u, cookie);
    const DWORD real = Advise(sink.get());
    EXPECT_EQ(CONNECT_E_NOCONNECTION, point_->Unadvise(real + 1));
    EXPECT_EQ(S_OK, point_->Unadvise(real));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, point_->Unadvise(real));
    EXPECT_EQ(1u, sink->count());
}

TEST_F(EventSourceTest, SinksAreCalledInOrderAndMayAnswerAndLeaveAndBringOthers) {
    const auto first = EventSink::Make(), second = EventSink::Make(), third = EventSink::Make(),
               late = EventSink::Make();
    const DWORD cookies[] = {Advise(first.get()), Advise(second.get()), Advise(third.get())};
    ULONG held = 0;
    first->answer = DISP_E_EXCEPTION;
    first->onEvent = [&](VARIANT* argument) {
        for (const int i : {0, 2}) point_->Unadvise(cookies[i]);  // the second must not be skipped for it
        held = first->count();                                    // by the event alone
        *argument->pfltVal = 0.25f;                               // the next sink does not see it
        Advise(late.get());
    };
    Raise();
    EXPECT_EQ(2u, held);
    ASSERT_EQ(1u, second->events.size());
    EXPECT_EQ(1, second->events[0].id);
    EXPECT_EQ(0, second->events[0].value);
    EXPECT_TRUE(third->events.empty() && late->events.empty());
    for (EventSink* gone : {first.get(), third.get()}) EXPECT_EQ(1u, gone->count());

    point_->Unadvise(cookies[1]);
    late->onEvent = [&](VARIANT*) {  // now the only sink
        if (late->events.size() == 1) Advise(second.get());
    };
    Raise();
    EXPECT_EQ(1u, second->events.size());
    Raise();
    EXPECT_EQ(2u, late->events.size());
    EXPECT_EQ(2u, second->events.size());
}

TEST_F(EventSourceTest, ArgumentsOfAnyKindArriveInTheirOrder) {
    EventSource own(source_.get(), __uuidof(__CCRC32));
    const auto sink = EventSink::Make();
    DWORD cookie = 0;
    EXPECT_EQ(S_OK, own.point().Advise(sink.get(), &cookie));
    const Bstr text(L"net");
    sink->onEvent = [](VARIANT* last) {
        EXPECT_EQ(7, last[2].lVal);
        EXPECT_EQ(VT_BSTR | VT_BYREF, last[1].vt);
        EXPECT_EQ(S_OK, VarBstrCat(*last[1].pbstrVal, *last[1].pbstrVal, last[1].pbstrVal));
        EXPECT_EQ(VARIANT_TRUE, last[0].boolVal);
    };
    own.point().Raise(3, {7L, ByReference(text.get()), true});
    EXPECT_EQ(L"net", View(text.get()));
    EXPECT_EQ(1u, sink->events.size());
}

}  // namespace
}  // namespace velk::test
