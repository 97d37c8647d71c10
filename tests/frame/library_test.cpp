// The built library: what its type library promises, its events, and how it comes and goes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "support/client.h"
#include "support/heap.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/malloc_spy.h"
#include "support/process_counts.h"
#include "support/value_object.h"
#include "tools/typelib/type_reader.h"
#include "velksub.h"

namespace velk::test {
namespace {

// One identity behind all its faces, as the type library describes it.
void ExpectIsWhatItSays(const ComPtr<IUnknown>& object, const Type& coclass) {
    std::vector<GUID> faces = {IID_IUnknown, IID_IDispatch, IID_ISupportErrorInfo, IID_IProvideClassInfo,
                               IID_IProvideClassInfo2};
    const auto provider = object.As<IProvideClassInfo2>();
    const auto errors = object.As<ISupportErrorInfo>();
    Type named;
    GUID source = IID_IStream, events{};
    ASSERT_EQ(S_OK, provider->GetClassInfo(named.Receive()));
    EXPECT_EQ(AttributesOf(coclass)->guid, AttributesOf(named)->guid);
    for (UINT i = 0; i < AttributesOf(named)->cImplTypes; ++i) {
        INT flags = 0;
        named->GetImplTypeFlags(i, &flags);
        const GUID iid = AttributesOf(Implemented(named, i))->guid;
        if (flags & IMPLTYPEFLAG_FSOURCE)
            events = iid, faces.push_back(IID_IConnectionPointContainer);
        else
            faces.push_back(iid);
        const bool isOwn = flags == IMPLTYPEFLAG_FDEFAULT;
        EXPECT_EQ(isOwn ? S_OK : S_FALSE, errors->InterfaceSupportsErrorInfo(iid));
    }
    EXPECT_EQ(S_FALSE, errors->InterfaceSupportsErrorInfo(IID_IProvideClassInfo));
    for (const IID& iid : {__uuidof(ISubclass), __uuidof(ISubclass2)}) {  // of those that hook windows
        if (!object.As<IUnknown>(iid)) continue;
        faces.push_back(iid);
        EXPECT_EQ(S_OK, errors->InterfaceSupportsErrorInfo(iid));
    }
    constexpr DWORD kEvents = GUIDKIND_DEFAULT_SOURCE_DISP_IID;
    EXPECT_EQ(events == GUID_NULL ? E_NOTIMPL : S_OK, provider->GetGUID(kEvents, &source));
    EXPECT_EQ(events, source);
    EXPECT_EQ(E_INVALIDARG, provider->GetGUID(kEvents + 1, &source));
    for (REFIID from : faces) {
        const auto face = object.As<IUnknown>(from);
        ASSERT_TRUE(face);
        for (REFIID to : faces) EXPECT_EQ(object.get(), face.As<IUnknown>(to).As<IUnknown>().get());
        EXPECT_EQ(object.As<IDispatch>().get(), face.As<IDispatch>().get()) << "the default interface";
        EXPECT_EQ(E_POINTER, face->QueryInterface(IID_IUnknown, nullptr));
        void* unknown = face.get();
        EXPECT_EQ(E_NOINTERFACE, face->QueryInterface(IID_IStream, &unknown));
        EXPECT_EQ(nullptr, unknown);
    }

    const auto dispatch = object.As<IDispatch>();
    ComPtr<ITypeInfo> info;
    UINT count = 0;
    EXPECT_EQ(S_OK, dispatch->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    EXPECT_EQ(S_OK, dispatch->GetTypeInfo(0, 0, info.Receive()));
    EXPECT_EQ(DISP_E_BADINDEX, dispatch->GetTypeInfo(1, 0, info.Receive()));
    EXPECT_FALSE(info);
    for (const HRESULT answer : {dispatch->GetTypeInfoCount(nullptr), dispatch->GetTypeInfo(0, 0, nullptr),
                                 provider->GetClassInfo(nullptr), provider->GetGUID(kEvents, nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
}

ComPtr<IClassFactory> FactoryOf(REFCLSID clsid) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK, GetClassObject(clsid, IID_IClassFactory, factory.ReceiveVoid()));
    return factory;
}

// While an object of any class, a factory or a lock is held; the parts of an event source stand below.
TEST(Library, StaysWhileAnythingIsHeld) {
    EXPECT_TRUE(CanUnload());
    for (const Type& type : ClassesOf(LoadTypes(LibraryPath().c_str()))) {
        SCOPED_TRACE(NameOf(type));
        const ComPtr<IUnknown> object = CreateUnknown(AttributesOf(type)->guid);
        EXPECT_FALSE(CanUnload());
        ExpectIsWhatItSays(object, type);
        object->AddRef();
        EXPECT_EQ(1u, object->Release());
    }
    EXPECT_TRUE(CanUnload());
    ComPtr<IClassFactory> factory = FactoryOf(__uuidof(CCRC32));
    EXPECT_FALSE(CanUnload());
    factory = nullptr;
    for (const auto& [lock, stays] : {std::pair(TRUE, true), {TRUE, true}, {FALSE, true}, {FALSE, false}}) {
        EXPECT_EQ(S_OK, FactoryOf(__uuidof(CCRC32))->LockServer(lock));
        EXPECT_EQ(stays, !CanUnload());
    }
}

TEST(ClassFactory, RefusesWhatItCannotGiveAndEmptiesTheResult) {
    const CLSID clsid = __uuidof(CCRC32);
    const ComPtr<IClassFactory> factory = FactoryOf(clsid);
    const auto expect = [](HRESULT expected, auto call) {
        void* result = &result;
        EXPECT_EQ(expected, call(&result));
        EXPECT_EQ(nullptr, result);
        EXPECT_EQ(E_POINTER, call(nullptr));
    };
    expect(CLASS_E_CLASSNOTAVAILABLE, [](void** to) { return GetClassObject(IID_IUnknown, IID_IClassFactory, to); });
    expect(E_NOINTERFACE, [&](void** to) { return GetClassObject(clsid, IID_IDispatch, to); });
    expect(E_NOINTERFACE, [&](void** to) { return factory->QueryInterface(IID_IDispatch, to); });
    expect(E_NOINTERFACE, [&](void** to) { return factory->CreateInstance(nullptr, IID_IClassFactory, to); });
    expect(CLASS_E_NOAGGREGATION, [&](void** to) { return factory->CreateInstance(factory.get(), IID_IUnknown, to); });
}

// ---- Events, by the one class that has any: CCRC32 raises two for an empty text, 0 and 1 ----

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
    EXPECT_EQ(1, late->called);
}

// ---- Unloading ----

// What a process that loads and unloads the library again and again would run out of.
std::vector<std::ptrdiff_t> Resources() {
    const DWORD slot = FlsAlloc(nullptr);  // the first that is free
    FlsFree(slot);
    return {static_cast<std::ptrdiff_t>(slot), static_cast<std::ptrdiff_t>(OpenHandles()), MallocSpy::Alive(),
            Heap::held.blocks};
}

// As the runtime takes memory for a thread's own values.
void* __cdecl CountedCalloc(std::size_t count, std::size_t size) {
    ++Heap::held.blocks;
    return std::calloc(count, size);
}

void FailInside(const LibraryCopy& library) {
    EXPECT_EQ(DISP_E_EXCEPTION, Call(library.Create(__uuidof(CDatFile)).get(), L"GetHumanReadable").result);
}

// Every second time it is used, which reads each interface's call plan and its type information. Its heap is watched
// from when it has been loaded until it is gone: blocks of before are among those that are freed.
TEST(Library, LeavesNothingBehindWhenItIsUnloaded) {
    const std::vector<Type> classes = ClassesOf(LoadTypes(LibraryPath().c_str()));
    ASSERT_TRUE(Library());  // stays, and what it imports with it: Wine 10's winspool.drv keeps a handle each time it
                             // is unloaded
    // A thread that has been in the library and is still there when it goes.
    static const LibraryCopy* visited = nullptr;
    static const HANDLE called = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    static const HANDLE ended = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::thread([] {
        for (;; SetEvent(ended)) WaitForSingleObject(called, INFINITE), FailInside(*visited);
    }).detach();
    ComPtr<ITypeLib> types;
    const auto use = [&](const LibraryCopy& library) {
        for (const Type& type : classes) {
            const auto object = library.Create(AttributesOf(type)->guid);
            EXPECT_EQ(DISPID_UNKNOWN, IdOf(object.get(), L"NoSuchMember"));
            ComPtr<ITypeInfo> info;
            UINT index = 0;
            EXPECT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Receive()));
            EXPECT_EQ(S_OK, info->GetContainingTypeLib(types.Receive(), &index));
        }
        FailInside(library);
        visited = &library;
        SignalObjectAndWait(called, ended, INFINITE, FALSE);
    };
    std::vector<std::ptrdiff_t> before;
    for (int round = 0; round < 12; ++round) {
        {
            const LibraryCopy library;
            new Heap(library.module());  // for good: the library goes first
            new ImportPatch(library.module(), "calloc", Address(&CountedCalloc));
            if (round % 2) use(library);
        }
        EXPECT_EQ(0u, types ? types.Detach()->Release() : 0) << "of the type library, which outlives it here";
        EXPECT_LT(Heap::held.bytes, -1000) << "the runtime's reserve for exceptions";
        if (round < 6) before = Resources();  // measuring takes something, too
        EXPECT_EQ(before, Resources()) << "thread slots, handles, strings and arrays, blocks";
    }
}

}  // namespace
}  // namespace velk::test
