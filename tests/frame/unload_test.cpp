#include <gtest/gtest.h>

#include <string>

#include "support/client.h"
#include "support/event_sink.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/malloc_spy.h"
#include "tools/type_reader.h"

namespace velk::test {
namespace {

std::vector<CLSID> AllClasses() {
    std::vector<CLSID> all;
    for (const Type& type : TypesOf(LoadTypes(LibraryPath().c_str()))) {
        if (AttributesOf(type)->typekind == TKIND_COCLASS) all.push_back(AttributesOf(type)->guid);
    }
    return all;
}

ComPtr<IClassFactory> FactoryOf(REFCLSID clsid) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK, GetClassObject(clsid, IID_IClassFactory, factory.ReceiveVoid()));
    return factory;
}

TEST(Unload, IsRefusedWhileAnObjectOfAnyClassLives) {
    EXPECT_TRUE(CanUnload());
    for (const CLSID& clsid : AllClasses()) {
        {
            const ComPtr<IUnknown> object = CreateUnknown(clsid);
            EXPECT_FALSE(CanUnload()) << GuidText(clsid);
        }
        EXPECT_TRUE(CanUnload()) << GuidText(clsid);
    }
}

TEST(Unload, IsRefusedWhileAFactoryIsHeldOrTheServerLocked) {
    ComPtr<IClassFactory> factory = FactoryOf(__uuidof(CCRC32));
    EXPECT_FALSE(CanUnload());
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    factory = nullptr;
    EXPECT_FALSE(CanUnload());
    EXPECT_EQ(S_OK, FactoryOf(__uuidof(CCRC32))->LockServer(FALSE));
    EXPECT_FALSE(CanUnload());
    EXPECT_EQ(S_OK, FactoryOf(__uuidof(CCRC32))->LockServer(FALSE));
    EXPECT_TRUE(CanUnload());
}

TEST(Unload, IsRefusedWhileAnyPartOfAnEventSourceIsHeld) {
    const auto sink = EventSink::Make();
    ComPtr<IConnectionPointContainer> container = CreateUnknown(__uuidof(CCRC32)).As<IConnectionPointContainer>();
    ComPtr<IConnectionPoint> point;
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IEnumConnections> connections;
    DWORD cookie = 0;
    ASSERT_EQ(S_OK, container->FindConnectionPoint(__uuidof(__CCRC32), point.Receive()));
    ASSERT_EQ(S_OK, container->EnumConnectionPoints(points.Receive()));
    ASSERT_EQ(S_OK, point->Advise(sink.get(), &cookie));
    ASSERT_EQ(S_OK, point->EnumConnections(connections.Receive()));
    container = nullptr;
    points = nullptr;
    connections = nullptr;
    EXPECT_FALSE(CanUnload()) << "the connection point alone";
    ASSERT_EQ(S_OK, point->EnumConnections(connections.Receive()));
    point = nullptr;
    EXPECT_EQ(2u, sink->count()) << "a source that goes lets its sinks go; the enumerator keeps its own";
    EXPECT_FALSE(CanUnload()) << "the enumerator of connections alone";
    connections = nullptr;
    EXPECT_EQ(1u, sink->count());
    EXPECT_TRUE(CanUnload());
    container = CreateUnknown(__uuidof(CCRC32)).As<IConnectionPointContainer>();
    ASSERT_EQ(S_OK, container->EnumConnectionPoints(points.Receive()));
    container = nullptr;
    EXPECT_FALSE(CanUnload()) << "the enumerator of connection points alone";
    points = nullptr;
    EXPECT_TRUE(CanUnload());
}

void* const kStale = reinterpret_cast<void*>(1);

TEST(ClassFactory, RefusesWhatItCannotGiveAndEmptiesTheResult) {
    void* result = kStale;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, GetClassObject(IID_IUnknown, IID_IClassFactory, &result));
    EXPECT_EQ(nullptr, result);
    for (const CLSID& clsid : AllClasses()) {
        EXPECT_EQ(E_POINTER, GetClassObject(clsid, IID_IClassFactory, nullptr));
        result = kStale;
        EXPECT_EQ(E_NOINTERFACE, GetClassObject(clsid, IID_IDispatch, &result));
        EXPECT_EQ(nullptr, result);
        const ComPtr<IClassFactory> factory = FactoryOf(clsid);
        EXPECT_EQ(E_POINTER, factory->QueryInterface(IID_IUnknown, nullptr));
        EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IID_IUnknown, nullptr));
        result = kStale;
        EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(factory.get(), IID_IUnknown, &result));
        EXPECT_EQ(nullptr, result);
        result = kStale;
        EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IClassFactory, &result));
        EXPECT_EQ(nullptr, result);
    }
    EXPECT_TRUE(CanUnload());
}

// What a process that loads and unloads the library again and again would run out of.
struct Resources {
    LONG automation = MallocSpy::Alive();
    std::size_t handles = OpenHandles();
    std::size_t blocks = HeapBlocks();
    std::size_t threadSlots = FreeThreadSlots();

    static std::size_t HeapBlocks() {
        HANDLE heaps[64];
        const DWORD count = GetProcessHeaps(ARRAYSIZE(heaps), heaps);
        std::size_t blocks = 0;
        for (DWORD i = 0; i < count; ++i) {
            PROCESS_HEAP_ENTRY entry{};
            while (HeapWalk(heaps[i], &entry)) blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
        }
        return blocks;
    }
    static std::size_t FreeThreadSlots() {
        std::vector<DWORD> taken;
        for (DWORD slot; (slot = TlsAlloc()) != TLS_OUT_OF_INDEXES;) taken.push_back(slot);
        for (const DWORD slot : taken) TlsFree(slot);
        return taken.size();
    }
};

// Makes the library read the interface's call plan and its type information.
void UseLateBound(IDispatch* object) {
    EXPECT_EQ(DISPID_UNKNOWN, IdOf(object, L"NoSuchMember"));
    ComPtr<ITypeInfo> type;
    EXPECT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.Receive()));
}

void FailInside(const LibraryCopy& library) {
    EXPECT_EQ(DISP_E_EXCEPTION, Call(library.Create(__uuidof(CDatFile)).get(), L"GetHumanReadable").result);
}

// A thread that has been in the library and is still there when it goes.
class Bystander {
  public:
    Bystander() : thread_(CreateThread(nullptr, 0, &Run, this, 0, nullptr)) {}
    Bystander(const Bystander&) = delete;
    Bystander& operator=(const Bystander&) = delete;
    ~Bystander() {
        Do(nullptr);
        WaitForSingleObject(thread_, INFINITE);
        for (const HANDLE handle : {thread_, go_, done_}) CloseHandle(handle);
    }
    void Do(const LibraryCopy* library) {
        library_ = library;
        SignalObjectAndWait(go_, done_, INFINITE, FALSE);
    }

  private:
    static DWORD WINAPI Run(void* raw) {
        auto& self = *static_cast<Bystander*>(raw);
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        while (WaitForSingleObject(self.go_, INFINITE) == WAIT_OBJECT_0 && self.library_) {
            FailInside(*self.library_);
            SetEvent(self.done_);
        }
        CoUninitialize();
        SetEvent(self.done_);
        return 0;
    }

    HANDLE go_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE done_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const LibraryCopy* library_ = nullptr;
    HANDLE thread_;
};

void LoadUseAndUnload(const std::vector<CLSID>& classes, Bystander& bystander) {
    const LibraryCopy library;  // the library itself stays loaded in this program
    for (const CLSID& clsid : classes) UseLateBound(library.Create(clsid).get());
    FailInside(library);
    bystander.Do(&library);
}

TEST(Unload, LeavesNothingBehindInAHundredRounds) {
    const std::vector<CLSID> classes = AllClasses();
    Bystander bystander;
    for (int warmUp = 0; warmUp < 3; ++warmUp) {
        LoadUseAndUnload(classes, bystander);
        static_cast<void>(Resources());  // measuring takes something, too
    }
    const Resources before;
    for (int round = 0; round < 100; ++round) LoadUseAndUnload(classes, bystander);
    const Resources after;
    EXPECT_EQ(before.automation, after.automation);
    EXPECT_EQ(before.handles, after.handles);
    EXPECT_EQ(before.blocks, after.blocks);
    EXPECT_EQ(before.threadSlots, after.threadSlots);
}

}  // namespace
}  // namespace velk::test
