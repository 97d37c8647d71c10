// A class's events, by the one class that has any: CCRC32 raises two for an empty text, 0 and 1.
#include <gtest/gtest.h>

#include "support/client.h"
#include "support/late_bound.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

class EventSource : public testing::Test {
  protected:
    EventSource() { container_->FindConnectionPoint(__uuidof(__CCRC32), point_.Receive()); }

    DWORD Advise(const ComPtr<ValueObject>& sink) {
        DWORD cookie = 0;
        EXPECT_EQ(S_OK, point_->Advise(sink.get(), &cookie));
        return cookie;
    }

    ComPtr<_CCRC32> source_ = CreateObject<_CCRC32>(__uuidof(CCRC32));
    ComPtr<IConnectionPointContainer> container_ = source_.As<IConnectionPointContainer>();
    const ComPtr<ValueObject> first_ = ValueObject::Make(Missing()), second_ = ValueObject::Make(Missing()),
                              third_ = ValueObject::Make(Missing());
    ComPtr<IConnectionPoint> point_;
};

TEST_F(EventSource, ContainerSharesTheObjectsIdentityAndThePointHasItsOwn) {
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

    DWORD cookie = 9;
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, point_->Advise(point_.get(), &cookie));  // has no IDispatch
    EXPECT_EQ(0u, cookie);
    cookie = Advise(first_);
    EXPECT_EQ(CONNECT_E_NOCONNECTION, point_->Unadvise(cookie + 1));
    for (const HRESULT answer : {S_OK, CONNECT_E_NOCONNECTION}) EXPECT_EQ(answer, point_->Unadvise(cookie));
    EXPECT_EQ(1u, first_->count());
    for (const HRESULT answer :
         {point_->QueryInterface(IID_IUnknown, nullptr), container_->FindConnectionPoint(__uuidof(__CCRC32), nullptr),
          container_->EnumConnectionPoints(nullptr), point_->GetConnectionPointContainer(nullptr),
          point_->GetConnectionInterface(nullptr), point_->EnumConnections(nullptr), point_->Advise(nullptr, &cookie),
          point_->Advise(first_.get(), nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
}

// Each part keeps the library, and the source with its sinks, as long as somebody holds it. How enumerators walk, the
// facts say.
TEST_F(EventSource, EnumeratesItsPointAndASnapshotOfItsConnections) {
    const DWORD cookies[] = {Advise(first_), Advise(second_)};
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(S_OK, container_->EnumConnectionPoints(points.Receive()));
    source_ = nullptr, container_ = nullptr, point_ = nullptr;
    EXPECT_FALSE(CanUnload()) << "the enumerator of connection points alone";
    EXPECT_EQ(S_OK, points->Next(1, point_.Receive(), nullptr));
    EXPECT_EQ(S_FALSE, points->Skip(1));
    points = nullptr;

    ComPtr<IEnumConnections> connections;
    ASSERT_EQ(S_OK, point_->EnumConnections(connections.Receive()));
    EXPECT_EQ(S_OK, point_->Unadvise(cookies[1]));
    point_ = nullptr;
    EXPECT_FALSE(CanUnload()) << "the enumerator of connections alone";
    EXPECT_EQ(2u, first_->count()) << "the source has let its sinks go";
    CONNECTDATA given[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(S_OK, connections->Next(2, given, &fetched));
    for (const int i : {0, 1}) {
        EXPECT_EQ(cookies[i], given[i].dwCookie);
        EXPECT_EQ((i ? second_ : first_).get(), ComPtr<IUnknown>::Attach(given[i].pUnk).get());
    }
    connections = nullptr;
    EXPECT_EQ(2u, first_->count() + second_->count());
    EXPECT_TRUE(CanUnload());
}

TEST_F(EventSource, SinksAreCalledInOrderAndMayAnswerAndLeaveAndBringOthers) {
    const auto late = ValueObject::Make(Missing());
    const DWORD cookies[] = {Advise(first_), Advise(second_), Advise(third_)};
    std::vector<std::pair<ValueObject*, FLOAT>> heard;
    for (const auto& sink : {first_, second_, third_, late}) {
        sink->onRead = [&, self = sink.get()](DISPPARAMS* given) {
            heard.emplace_back(self, std::exchange(*given->rgvarg->pfltVal, 0.25f));
            if (heard.size() == 4) Advise(first_);  // as many as were there
            if (heard.size() != 2) return;
            for (const int i : {0, 2}) point_->Unadvise(cookies[i]);  // the second must not be skipped for it
            EXPECT_EQ(2u, first_->count()) << "by the event alone";
            Advise(late);
        };
    }
    BSTR empty = nullptr;
    LONG sum = 0;
    EXPECT_EQ(S_OK, source_->GetCRCFromStringAscii(&empty, &sum));
    EXPECT_EQ(2u, first_->count());
    EXPECT_EQ(1u, third_->count());
    const decltype(heard) expected = {
        {first_.get(), 0.0f}, {second_.get(), 0.0f}, {second_.get(), 1.0f}, {late.get(), 1.0f}};
    EXPECT_EQ(expected, heard);
    EXPECT_EQ(1, late->calls.at(0));
}

}  // namespace
}  // namespace velk::test
