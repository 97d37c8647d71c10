#include <gtest/gtest.h>
#include <windows.h>

#include <psapi.h>

#include <span>
#include <string>

#include "platform/system_library.h"
#include "support/client.h"
#include "support/event_sink.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/malloc_spy.h"
#include "tools/typelib/type_reader.h"

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

// While an object of any class, a factory, a lock or a part of an event source is held.
TEST(Unload, IsRefusedWhileAnythingIsHeld) {
    EXPECT_TRUE(CanUnload());
    for (const CLSID& clsid : AllClasses()) {
        const ComPtr<IUnknown> object = CreateUnknown(clsid);
        EXPECT_FALSE(CanUnload()) << GuidText(clsid);
    }
    EXPECT_TRUE(CanUnload());
    ComPtr<IClassFactory> factory = FactoryOf(__uuidof(CCRC32));
    EXPECT_FALSE(CanUnload());
    factory = nullptr;
    for (const auto& [lock, stays] : {std::pair(TRUE, true), {TRUE, true}, {FALSE, true}, {FALSE, false}}) {
        EXPECT_EQ(S_OK, FactoryOf(__uuidof(CCRC32))->LockServer(lock));
        EXPECT_EQ(stays, !CanUnload());
    }

    const auto sink = EventSink::Make();
    ComPtr<IConnectionPointContainer> container = CreateUnknown(__uuidof(CCRC32)).As<IConnectionPointContainer>();
    ComPtr<IConnectionPoint> point;
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IEnumConnections> connections;
    DWORD cookie = 0;
    ASSERT_EQ(S_OK, container->EnumConnectionPoints(points.Receive()));
    container = nullptr;
    EXPECT_FALSE(CanUnload()) << "the enumerator of connection points alone";
    ASSERT_EQ(S_OK, points->Next(1, point.Receive(), nullptr));
    points = nullptr;
    EXPECT_FALSE(CanUnload()) << "the connection point alone";
    ASSERT_EQ(S_OK, point->Advise(sink.get(), &cookie));
    ASSERT_EQ(S_OK, point->EnumConnections(connections.Receive()));
    point = nullptr;
    EXPECT_EQ(2u, sink->count()) << "a source that goes lets its sinks go; the enumerator keeps its own";
    EXPECT_FALSE(CanUnload()) << "the enumerator of connections alone";
    connections = nullptr;
    EXPECT_EQ(1u, sink->count());
    EXPECT_TRUE(CanUnload());
}

TEST(ClassFactory, RefusesWhatItCannotGiveAndEmptiesTheResult) {
    void* result = nullptr;
    const auto expect = [&](HRESULT expected, auto call) {
        result = &result;
        EXPECT_EQ(expected, call());
        EXPECT_EQ(nullptr, result);
    };
    expect(CLASS_E_CLASSNOTAVAILABLE, [&] { return GetClassObject(IID_IUnknown, IID_IClassFactory, &result); });
    const CLSID clsid = __uuidof(CCRC32);
    const ComPtr<IClassFactory> factory = FactoryOf(clsid);
    expect(E_NOINTERFACE, [&] { return GetClassObject(clsid, IID_IDispatch, &result); });
    expect(E_NOINTERFACE, [&] { return factory->CreateInstance(nullptr, IID_IClassFactory, &result); });
    expect(CLASS_E_NOAGGREGATION, [&] { return factory->CreateInstance(factory.get(), IID_IUnknown, &result); });
    for (const HRESULT answer :
         {GetClassObject(clsid, IID_IClassFactory, nullptr), factory->QueryInterface(IID_IUnknown, nullptr),
          factory->CreateInstance(nullptr, IID_IUnknown, nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
}

// Counts the heap blocks of all modules that are loaded when it is first asked. Walking the heaps does not: Wine 10
// keeps small blocks in groups, and a walk meets only these.
class HeapSpy {
  public:
    static LONG Alive() {
        static const HeapSpy* const spy = new HeapSpy;
        return spy->alive_;
    }

  private:
    HeapSpy() {
        HMODULE modules[256];
        DWORD size = 0;
        EXPECT_TRUE(EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &size));
        for (const HMODULE module : std::span(modules, size / sizeof *modules)) {
            Patch(module, "HeapAlloc", reinterpret_cast<void*>(&Alloc));
            Patch(module, "HeapFree", reinterpret_cast<void*>(&Free));
        }
    }
    static void Patch(HMODULE module, const char* function, void* replacement) {
        if (ImportPatch::IsImported(module, function)) new ImportPatch(module, function, replacement);  // for good
    }
    static void* WINAPI Alloc(HANDLE heap, DWORD flags, SIZE_T size) {
        void* block = allocate_(heap, flags, size);
        if (block) ++alive_;
        return block;
    }
    static BOOL WINAPI Free(HANDLE heap, DWORD flags, void* block) {
        if (block) --alive_;
        return free_(heap, flags, block);
    }

    // kernel32's own stubs are patched.
    static inline const HMODULE native_ = GetModuleHandleW(L"ntdll.dll");
    static inline const auto allocate_ = FindFunction<decltype(HeapAlloc)>(native_, "RtlAllocateHeap");
    static inline const auto free_ = FindFunction<decltype(HeapFree)>(native_, "RtlFreeHeap");
    static inline std::atomic<LONG> alive_ = 0;
};

// What a process that loads and unloads the library again and again would run out of.
struct Resources {
    LONG automation = MallocSpy::Alive();
    std::size_t handles = OpenHandles();
    LONG blocks = HeapSpy::Alive();
    std::size_t threadSlots = FreeThreadSlots();

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
    void FailInside(const LibraryCopy& library) {
        library_ = &library;
        QueueUserAPC(&Run, thread_, reinterpret_cast<ULONG_PTR>(this));
        WaitForSingleObject(done_, INFINITE);
    }

  private:
    static void WINAPI Run(ULONG_PTR self) {
        velk::test::FailInside(*reinterpret_cast<Bystander*>(self)->library_);
        SetEvent(reinterpret_cast<Bystander*>(self)->done_);
    }
    static DWORD WINAPI WaitForCalls(void*) {
        for (;;) SleepEx(INFINITE, TRUE);
    }

    const LibraryCopy* library_ = nullptr;
    const HANDLE done_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE thread_ = CreateThread(nullptr, 0, &WaitForCalls, nullptr, 0, nullptr);  // to the program's end
};

void LoadUseAndUnload(const std::vector<CLSID>& classes, Bystander& bystander) {
    const LibraryCopy library;
    for (const CLSID& clsid : classes) UseLateBound(library.Create(clsid).get());
    FailInside(library);
    bystander.FailInside(library);
}

TEST(Unload, LeavesNothingBehindInAHundredRounds) {
    const std::vector<CLSID> classes = AllClasses();
    ASSERT_TRUE(Library());  // stays, and what it imports with it: Wine 10's winspool.drv keeps a handle each time it
                             // is unloaded
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
