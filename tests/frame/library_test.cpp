// The built library: what its type library promises, and how it comes and goes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <thread>

#include "support/client.h"
#include "support/heap.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/malloc_spy.h"
#include "support/process_counts.h"
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

// While an object of any class, a factory or a lock is held; event_source_test.cpp has the parts of an event source.
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

// What a process that loads and unloads the library again and again would run out of.
std::vector<std::ptrdiff_t> Resources() {
    std::vector<DWORD> slots;
    for (DWORD slot; (slot = TlsAlloc()) != TLS_OUT_OF_INDEXES;) slots.push_back(slot);
    for (const DWORD slot : slots) TlsFree(slot);
    return {std::ssize(slots), static_cast<std::ptrdiff_t>(OpenHandles()), MallocSpy::Alive(), Heap::held.blocks};
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
